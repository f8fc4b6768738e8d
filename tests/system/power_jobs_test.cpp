// Suspend, Hibernates, Shutdown and Reboot against logind's D-Bus API: the
// Can* question first, then the power call with interactive = false, or a
// refusal that says why and calls nothing.

#include <gtest/gtest.h>

#include "core/jobs/job.h"
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

// The reason of a failure box "<prefix><non-zero number>\n<reason>", or
// "<not a failure box ...>".
std::string Reason(const std::string& text, const std::string& prefix)
{
    const std::size_t newline = text.find('\n');
    if (text.rfind(prefix, 0) != 0 || newline == std::string::npos ||
        std::atoi(text.substr(prefix.size(), newline - prefix.size()).c_str()) == 0)
        return "<not a failure box " + prefix + ">: " + text;
    return text.substr(newline + 1);
}

class PowerJobTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(logind.IsRunning()) << "python3-dbusmock's logind template did not start"; }

    LogindMock logind;
    RecordedMessages messages;
    CapturedLog log;
};

TEST_F(PowerJobTest, EachJobAsksFirstThenCallsLogindWithoutInteraction)
{
    std::vector<std::string> expected;
    for (const PowerCase& power : kPowerCases) {
        RunJob(power.kind, {}, 11, "power");
        expected.push_back(std::string(power.can) + "()");
        expected.push_back(std::string(power.method) + "(false)");
    }
    EXPECT_EQ(logind.Calls(kLogindPath), expected);
    EXPECT_TRUE(messages.All().empty());
    EXPECT_EQ(log.Matching("[JID_11]").size(), 4u);
    EXPECT_EQ(log.Matching("Hibernates done").size(), 1u);
}

TEST_F(PowerJobTest, AnythingButYesIsARefusalThatSaysWhyAndCallsNothing)
{
    const struct {
        const char* answer;
        const char* meaning;
    } answers[] = {{"na", "cannot"}, {"no", "not allowed"}, {"challenge", "authenticate"}};
    std::size_t boxes = 0;
    for (const auto& answer : answers) {
        for (const PowerCase& power : kPowerCases) {
            SCOPED_TRACE(std::string(power.can) + " " + answer.answer);
            ASSERT_TRUE(logind.AnswerCan(power.can, answer.answer));
            RunJob(power.kind, {}, 12, "refused");
            ASSERT_TRUE(messages.WaitForCount(++boxes, std::chrono::seconds(5)));
            const RecordedMessage box = messages.All().back();
            EXPECT_EQ(box.kind, RecordedMessage::Kind::Box);
            EXPECT_EQ(box.caption, "Cadrelle");
            const std::string reason = Reason(box.text, power.failurePrefix);
            EXPECT_NE(reason.find(std::string(power.can) + " \"" + answer.answer + "\""), std::string::npos) << reason;
            EXPECT_NE(reason.find(answer.meaning), std::string::npos) << reason;
        }
    }
    for (const std::string& call : logind.Calls(kLogindPath))
        EXPECT_EQ(call.rfind("Can", 0), 0u) << "a refused action was requested: " << call;
    EXPECT_EQ(log.Matching("failed (error").size(), boxes);
}

TEST_F(PowerJobTest, AnErrorFromLogindItselfIsShownWithItsText)
{
    // An inhibitor held by another user is refused this way by logind.
    ASSERT_TRUE(logind.AddMethod(kLogindPath, "org.freedesktop.login1.Manager", "PowerOff", "b", "",
                                 "raise dbus.exceptions.DBusException('Operation inhibited by \"backup\"', "
                                 "name='org.freedesktop.login1.BlockedByInhibitorLock')"));
    RunJob(NJobTypeShutdown, {}, 13, "inhibited");
    ASSERT_TRUE(messages.WaitForCount(1, std::chrono::seconds(5)));
    const std::string reason = Reason(messages.All()[0].text, "Shutdown failed! Error code: ");
    EXPECT_NE(reason.find("Operation inhibited by \"backup\""), std::string::npos) << reason;
    EXPECT_EQ(reason.find("GDBus.Error"), std::string::npos) << reason;
}

// Without logind the user learns that logind is missing, whichever way it
// is missing: no bus at the address, or a bus without logind on it.
TEST(PowerWithoutLogind, EveryKindSaysLogindIsNotReachable)
{
    const TempDir dir;
    const std::string deadAddress = "unix:path=" + dir.File("no-bus-here").utf8_string();
    const std::string bus = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    for (const std::string& address : {deadAddress, bus}) {
        SCOPED_TRACE(address);
        RecordedMessages messages;
        ScopedEnv system("DBUS_SYSTEM_BUS_ADDRESS", address.c_str());
        ASSERT_FALSE(NameHasOwner("org.freedesktop.login1"));
        for (const PowerCase& power : kPowerCases)
            RunJob(power.kind, {}, 14, "no logind");
        RunJob(NJobTypeLogoff, {}, 14, "no logind");
        const std::vector<RecordedMessage> boxes = messages.All();
        ASSERT_EQ(boxes.size(), 5u);
        for (std::size_t i = 0; i < boxes.size(); ++i) {
            const std::string reason =
                Reason(boxes[i].text, i < 4 ? kPowerCases[i].failurePrefix : "Logoff failed! Error code: ");
            EXPECT_EQ(reason.rfind("logind is not reachable on the system bus: ", 0), 0u) << reason;
        }
    }
}

}  // namespace
