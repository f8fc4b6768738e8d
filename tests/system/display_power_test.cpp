// Shutoff Display where it cannot work: a real X server without DPMS (the
// launcher's Xvfb), no X display at all, and a Wayland session. Each names
// what is missing.

#include <gtest/gtest.h>

#include "core/jobs/job.h"
#include "system_test_support.h"

TEST(ShutoffDisplay, EachMissingPieceIsNamed)
{
    const std::string display = std::getenv("DISPLAY") ? std::getenv("DISPLAY") : "";
    const struct {
        const char* display;
        const char* wayland;
        std::string reason;
    } cases[] = {
        {display.c_str(), nullptr,
         "the X server of display \"" + display + "\" has no DPMS extension (display power management)"},
        {nullptr, nullptr, "there is no X display (DISPLAY is not set)"},
        {"", "wayland-0",
         "this is a Wayland session without an X display (DISPLAY is not set); the display cannot be switched off "
         "from here"},
        // A display number nobody serves.
        {":64999", nullptr, "cannot open the X display \":64999\""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        const ScopedEnv displayVariable("DISPLAY", c.display);
        const ScopedEnv wayland("WAYLAND_DISPLAY", c.wayland);
        RecordedMessages messages;
        CapturedLog log;
        const wxString summary = RunJob(NJobTypeShutoffDisplay, {}, 42, "night");
        const std::vector<RecordedMessage> shown = messages.All();
        ASSERT_EQ(shown.size(), 1u);
        EXPECT_EQ(shown[0].kind, RecordedMessage::Kind::Box);
        EXPECT_EQ(shown[0].caption, "Cadrelle");
        EXPECT_EQ(shown[0].text, summary.utf8_string() + "\n\nShutoff Display failed.\n" + c.reason);
        EXPECT_EQ(log.Matching("[JID_42] Shutoff Display failed").size(), 1u);
    }
}
