// Shutoff Display where it cannot work: a real X server without DPMS (Xvfb),
// no X display at all, and a Wayland session. Each names what is missing.

#include <gtest/gtest.h>

#include "core/jobs/job.h"
#include "recorded_messages.h"
#include "system_test_support.h"
#include "xvfb_server.h"

namespace {

std::string OnlyBox(const RecordedMessages& messages)
{
    const std::vector<RecordedMessage> shown = messages.All();
    if (shown.size() != 1 || shown[0].kind != RecordedMessage::Kind::Box || shown[0].caption != "Cadrelle")
        return "<not exactly one message box captioned Cadrelle>";
    return shown[0].text;
}

std::string Expected(const std::string& reason)
{
    return SummaryOf(NJobTypeShutoffDisplay, "night").utf8_string() + "\n\nShutoff Display failed.\n" + reason;
}

TEST(ShutoffDisplay, AnXServerWithoutPowerManagementIsNamed)
{
    const XvfbServer xvfb;
    ASSERT_TRUE(xvfb.IsRunning()) << "Xvfb did not start";
    const ScopedEnv display("DISPLAY", xvfb.Display().c_str());
    RecordedMessages messages;
    CapturedLines log;
    RunSystemJob(NJobTypeShutoffDisplay, 41, "night");
    EXPECT_EQ(OnlyBox(messages), Expected("the X server of display \"" + xvfb.Display() +
                                          "\" has no DPMS extension (display power management)"));
    EXPECT_EQ(log.Matching("[JID_41] Shutoff Display failed").size(), 1u);
}

TEST(ShutoffDisplay, SessionsWithoutAnXDisplayAreNamed)
{
    const struct {
        const char* display;
        const char* wayland;
        std::string reason;
    } cases[] = {
        {nullptr, nullptr, "there is no X display (DISPLAY is not set)"},
        {"", "wayland-0",
         "this is a Wayland session without an X display (DISPLAY is not set); the display cannot be switched off "
         "from here"},
        // A display number nobody serves.
        {":64999", nullptr, "cannot open the X display \":64999\""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        const ScopedEnv display("DISPLAY", c.display);
        const ScopedEnv wayland("WAYLAND_DISPLAY", c.wayland);
        RecordedMessages messages;
        RunSystemJob(NJobTypeShutoffDisplay, 42, "night");
        EXPECT_EQ(OnlyBox(messages), Expected(c.reason));
    }
}

}  // namespace
