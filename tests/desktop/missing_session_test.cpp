// What the window, screenshot and input jobs say on a session that cannot
// run them: no display, a display that does not answer, a Wayland session.

#include <wx/dir.h>

#include "x11_test_support.h"

namespace {

class MissingSessionTest : public DisplayJobTest {
protected:
    // Runs each of the five kinds with usable parameters; each must show one
    // box that names `missing` and log it.
    void ExpectEveryKindToSay(const std::string& missing)
    {
        const std::pair<std::uint32_t, ParamList> jobs[] = {
            {NJobTypeAutoScreenshot, {temp.Path(), "cdrl", "100", "0", "", "1"}},
            {NJobTypeCloseApp, {"\"Anything\""}},
            {NJobTypeSendKey, {"CTRL", "A"}},
            {NJobTypeKeyTyping, {"100,100", "username", "200,200", "password", "100"}},
            {NJobTypeMouseClick, {"100,100", "10", "Click", "Left Button", "100"}},
        };
        for (const auto& [kind, params] : jobs) {
            SCOPED_TRACE(kind);
            const std::size_t before = messages.All().size();
            RunJob(kind, params);
            const std::vector<RecordedMessage> shown = messages.All();
            ASSERT_EQ(shown.size(), before + 1);
            EXPECT_EQ(shown.back().kind, RecordedMessage::Kind::Box);
            EXPECT_EQ(shown.back().caption, "Cadrelle");
            EXPECT_NE(shown.back().text.find(missing), std::string::npos) << shown.back().text;
            EXPECT_NE(shown.back().text.find(JobTypeName(kind).utf8_string() + " cannot run here"),
                      std::string::npos)
                << shown.back().text;
        }
        EXPECT_TRUE(log.Has("[JID_7] Mouse Click cannot run: "));
        wxArrayString files;
        EXPECT_EQ(wxDir::GetAllFiles(temp.Path(), &files), 0u);
    }

    TempDir temp;
};

TEST_F(MissingSessionTest, NoDisplayVariable)
{
    ::unsetenv("DISPLAY");
    ExpectEveryKindToSay("the DISPLAY environment variable is not set");
}

TEST_F(MissingSessionTest, ADisplayThatDoesNotAnswer)
{
    ::setenv("DISPLAY", ":9999", 1);  // nothing listens there
    ExpectEveryKindToSay("The X display :9999 does not answer");
}

TEST_F(MissingSessionTest, AWaylandSessionEvenWithXWaylandReachable)
{
    // DISPLAY still points at a working X server, as XWayland's does.
    ::setenv("XDG_SESSION_TYPE", "wayland", 1);
    ExpectEveryKindToSay("Wayland session");
}

}  // namespace
