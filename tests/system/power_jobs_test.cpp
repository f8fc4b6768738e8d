// The power jobs against logind's D-Bus API: the Can* question first, then
// the call with interactive = false, or a refusal that says why. Shutoff
// Display where it cannot work (Xvfb has no DPMS).

#include <gtest/gtest.h>

#include "core/jobs/job.h"
#include "system_test_support.h"

namespace {

const struct {
    std::uint32_t kind;
    const char* can;
    const char* method;
    const char* failure;
} kPower[] = {
    {NJobTypeSuspend, "CanSuspend", "Suspend", "Suspend failed! Error code: "},
    {NJobTypeHibernates, "CanHibernate", "Hibernate", "Hibernates failed! Error code: "},
    {NJobTypeShutdown, "CanPowerOff", "PowerOff", "Shutdown failed! Error code: "},
    {NJobTypeReboot, "CanReboot", "Reboot", "Reboot failed! Error code: "},
};

// "<failure><non-zero number>\n<reason>" with `says` in the reason.
void ExpectFailure(const std::string& text, const std::string& failure, const std::string& says)
{
    EXPECT_EQ(text.rfind(failure, 0), 0u) << text;
    EXPECT_NE(text.substr(failure.size(), 1), "0") << text;
    EXPECT_NE(text.find(says, text.find('\n')), std::string::npos) << text;
}

TEST(PowerJob, AsksFirstThenCallsWithoutInteractionAndAnythingButYesIsARefusal)
{
    LogindMock logind;
    ASSERT_TRUE(logind.IsRunning()) << "python3-dbusmock's logind template did not start";
    RecordedMessages messages;
    CapturedLog log;
    std::vector<std::string> expected;
    for (const auto& power : kPower) {
        RunJob(power.kind, {}, 11, "power");
        expected.push_back(std::string(power.can) + "()");
        expected.push_back(std::string(power.method) + "(false)");
    }
    EXPECT_EQ(logind.Calls(kLogindPath), expected);
    EXPECT_TRUE(messages.All().empty());
    EXPECT_EQ(log.Matching("[JID_11]").size(), 4u);
    EXPECT_EQ(log.Matching("Hibernates done").size(), 1u);

    logind.ClearCalls(kLogindPath);
    const std::pair<const char*, const char*> answers[] = {
        {"na", "cannot"}, {"no", "not allowed"}, {"challenge", "authenticate"}};
    std::size_t boxes = 0;
    for (const auto& [answer, meaning] : answers) {
        for (const auto& power : kPower) {
            SCOPED_TRACE(std::string(power.can) + " " + answer);
            ASSERT_TRUE(logind.AnswerCan(power.can, answer));
            RunJob(power.kind, {}, 12, "refused");
            ASSERT_TRUE(messages.WaitForCount(++boxes, std::chrono::seconds(5)));
            const RecordedMessage box = messages.All().back();
            EXPECT_EQ(box.caption, "Cadrelle");
            ExpectFailure(box.text, power.failure, std::string(power.can) + " \"" + answer + "\"");
            EXPECT_NE(box.text.find(meaning), std::string::npos) << box.text;
        }
    }
    for (const std::string& call : logind.Calls(kLogindPath))
        EXPECT_EQ(call.rfind("Can", 0), 0u) << "a refused action was requested: " << call;
    EXPECT_EQ(log.Matching("failed (error").size(), boxes);
}

// A bus without logind on it: every kind says so.
TEST(PowerJob, WithoutLogindEveryKindSaysLogindIsNotReachable)
{
    RecordedMessages messages;
    ASSERT_FALSE(NameHasOwner("org.freedesktop.login1"));
    for (const auto& power : kPower)
        RunJob(power.kind, {}, 14, "no logind");
    RunJob(NJobTypeLogoff, {}, 14, "no logind");
    const std::vector<RecordedMessage> boxes = messages.All();
    ASSERT_EQ(boxes.size(), 5u);
    for (std::size_t i = 0; i < boxes.size(); ++i)
        ExpectFailure(boxes[i].text, i < 4 ? kPower[i].failure : "Logoff failed! Error code: ",
                      "\nlogind is not reachable on the system bus: ");
}

TEST(ShutoffDisplay, EachMissingPieceIsNamed)
{
    const std::string display = std::getenv("DISPLAY") ? std::getenv("DISPLAY") : "";
    const struct { const char* display; const char* wayland; std::string reason; } cases[] = {
        {display.c_str(), nullptr,
         "the X server of display \"" + display + "\" has no DPMS extension (display power management)"},
        {nullptr, nullptr, "there is no X display (DISPLAY is not set)"},
        {"", "wayland-0",
         "this is a Wayland session without an X display (DISPLAY is not set); the display cannot be switched off "
         "from here"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        const ScopedEnv displayVariable("DISPLAY", c.display);
        const ScopedEnv wayland("WAYLAND_DISPLAY", c.wayland);
        RecordedMessages messages;
        const wxString summary = RunJob(NJobTypeShutoffDisplay, {}, 42, "night");
        EXPECT_EQ(messages.Boxes(), std::vector<std::string>{summary.utf8_string() + "\n\nShutoff Display failed.\n" + c.reason});
    }
}

}  // namespace
