// Suspend, Hibernates, Shutdown and Reboot against logind's documented D-Bus
// API, with python3-dbusmock's logind on the private bus: the Can* question
// first, then the power call with interactive = false, or a refusal that
// says why and calls nothing.

#include <gtest/gtest.h>

#include "core/jobs/job.h"
#include "recorded_messages.h"
#include "system_test_support.h"

namespace {

struct PowerCase {
    std::uint32_t kind;
    const char* can;
    const char* method;
    const char* failurePrefix;
};

const PowerCase kPowerCases[] = {
    {NJobTypeSuspend, "CanSuspend", "Suspend", "Suspend failed! Error code: "},
    {NJobTypeHibernates, "CanHibernate", "Hibernate", "Hibernates failed! Error code: "},
    {NJobTypeShutdown, "CanPowerOff", "PowerOff", "Shutdown failed! Error code: "},
    {NJobTypeReboot, "CanReboot", "Reboot", "Reboot failed! Error code: "},
};

// A failure box: "<prefix><number>\n<reason>".
struct FailureBox {
    std::string prefix;
    int code = 0;
    std::string reason;
};

FailureBox SplitBox(const std::string& text, const std::string& prefix)
{
    FailureBox box;
    if (text.rfind(prefix, 0) != 0)
        return box;
    box.prefix = prefix;
    const std::size_t newline = text.find('\n', prefix.size());
    box.code = std::atoi(text.substr(prefix.size(), newline - prefix.size()).c_str());
    if (newline != std::string::npos)
        box.reason = text.substr(newline + 1);
    return box;
}

class PowerJobTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(logind.IsRunning()) << "python3-dbusmock's logind template did not start";
        ASSERT_TRUE(monitor.IsRunning()) << "dbus-monitor did not start";
    }

    LogindMock logind;
    BusMonitor monitor{{"org.freedesktop.login1"}};
    RecordedMessages messages;
    CapturedLines log;
};

TEST_F(PowerJobTest, EachJobAsksFirstThenCallsLogindWithoutInteraction)
{
    std::size_t seen = 0;
    for (const PowerCase& power : kPowerCases) {
        SCOPED_TRACE(power.method);
        RunSystemJob(power.kind, 11, "power");
        const std::vector<SeenCall> calls = monitor.Calls();
        ASSERT_EQ(calls.size(), seen + 2);
        const SeenCall& question = calls[seen];
        EXPECT_EQ(question.interface, "org.freedesktop.login1.Manager");
        EXPECT_EQ(question.member, power.can);
        EXPECT_EQ(question.signature, "");
        const SeenCall& request = calls[seen + 1];
        EXPECT_EQ(request.path, "/org/freedesktop/login1");
        EXPECT_EQ(request.interface, "org.freedesktop.login1.Manager");
        EXPECT_EQ(request.member, power.method);
        EXPECT_EQ(request.signature, "b");
        EXPECT_EQ(request.values, std::vector<std::string>{"false"});
        seen = calls.size();
    }
    EXPECT_TRUE(messages.All().empty());
    EXPECT_EQ(log.Matching("[JID_11]").size(), 4u);
    EXPECT_EQ(log.Matching("Hibernates done").size(), 1u);
}

TEST_F(PowerJobTest, AnythingButYesIsARefusalThatSaysWhyAndCallsNothing)
{
    const struct {
        const char* answer;
        const char* meaning;
    } answers[] = {
        {"na", "cannot"},
        {"no", "not allowed"},
        {"challenge", "authenticate"},
    };
    std::size_t boxes = 0;
    for (const auto& answer : answers) {
        for (const PowerCase& power : kPowerCases) {
            SCOPED_TRACE(std::string(power.can) + " " + answer.answer);
            ASSERT_TRUE(logind.AnswerCan(power.can, answer.answer));
            RunSystemJob(power.kind, 12, "refused");
            ASSERT_TRUE(messages.WaitForCount(++boxes, std::chrono::seconds(5)));
            const RecordedMessage box = messages.All().back();
            EXPECT_EQ(box.kind, RecordedMessage::Kind::Box);
            EXPECT_EQ(box.caption, "Cadrelle");
            const FailureBox parts = SplitBox(box.text, power.failurePrefix);
            EXPECT_EQ(parts.prefix, power.failurePrefix) << box.text;
            EXPECT_NE(parts.code, 0) << box.text;
            EXPECT_NE(parts.reason.find(std::string(power.can) + " \"" + answer.answer + "\""), std::string::npos)
                << parts.reason;
            EXPECT_NE(parts.reason.find(answer.meaning), std::string::npos) << parts.reason;
        }
    }
    for (const std::string& member : monitor.Members()) {
        for (const PowerCase& power : kPowerCases)
            EXPECT_NE(member, power.method) << "a refused action was requested";
    }
    EXPECT_EQ(log.Matching("failed (error").size(), boxes);
}

TEST_F(PowerJobTest, AnErrorFromLogindItselfIsShownWithItsText)
{
    // An inhibitor held by another user is refused this way by logind.
    ASSERT_TRUE(logind.AddMethod("/org/freedesktop/login1", "org.freedesktop.login1.Manager", "PowerOff", "b", "",
                                 "raise dbus.exceptions.DBusException('Operation inhibited by \"backup\"', "
                                 "name='org.freedesktop.login1.BlockedByInhibitorLock')"));
    RunSystemJob(NJobTypeShutdown, 13, "inhibited");
    ASSERT_TRUE(messages.WaitForCount(1, std::chrono::seconds(5)));
    const FailureBox parts = SplitBox(messages.All()[0].text, "Shutdown failed! Error code: ");
    EXPECT_NE(parts.code, 0);
    EXPECT_NE(parts.reason.find("Operation inhibited by \"backup\""), std::string::npos) << parts.reason;
    EXPECT_EQ(parts.reason.find("GDBus.Error"), std::string::npos) << parts.reason;
}

// Without logind the user learns that logind is missing, whichever way it
// is missing: no bus at the address, or a bus without logind on it.
TEST(PowerWithoutLogind, EveryKindSaysLogindIsNotReachable)
{
    const TempDir dir;
    const std::string deadAddress = "unix:path=" + dir.File("no-bus-here").utf8_string();
    for (const bool busUp : {false, true}) {
        SCOPED_TRACE(busUp ? "bus without logind" : "no bus");
        RecordedMessages messages;
        ScopedEnv system("DBUS_SYSTEM_BUS_ADDRESS", busUp ? TestBusAddress().c_str() : deadAddress.c_str());
        ASSERT_FALSE(NameHasOwner("org.freedesktop.login1"));
        for (const PowerCase& power : kPowerCases)
            RunSystemJob(power.kind, 14, "no logind");
        RunSystemJob(NJobTypeLogoff, 14, "no logind");
        const std::vector<RecordedMessage> boxes = messages.All();
        ASSERT_EQ(boxes.size(), 5u);
        for (std::size_t i = 0; i < boxes.size(); ++i) {
            const char* prefix = i < 4 ? kPowerCases[i].failurePrefix : "Logoff failed! Error code: ";
            const FailureBox parts = SplitBox(boxes[i].text, prefix);
            EXPECT_EQ(parts.prefix, prefix) << boxes[i].text;
            EXPECT_NE(parts.code, 0);
            EXPECT_EQ(parts.reason.rfind("logind is not reachable on the system bus: ", 0), 0u) << parts.reason;
        }
    }
}

}  // namespace
