// The window, screenshot and input jobs on a session that cannot run them (a
// Wayland session's DISPLAY still reaches a working X server, as XWayland's does).

#include <wx/dir.h>

#include "x11_test_support.h"

TEST_F(DisplayJobTest, EveryKindNamesTheMissingSessionAndDoesNothing)
{
    const TempDir temp;
    const std::string x11 = std::getenv("DISPLAY");
    const std::pair<std::uint32_t, ParamList> jobs[] = {
        {NJobTypeAutoScreenshot, {temp.Path(), "cdrl", "100", "0", "", "1"}},
        {NJobTypeCloseApp, {"\"Anything\""}},
        {NJobTypeSendKey, {"CTRL", "A"}},
        {NJobTypeKeyTyping, {"100,100", "username", "200,200", "password", "100"}},
        {NJobTypeMouseClick, {"100,100", "10", "Click", "Left Button", "100"}},
    };
    const struct {
        const char* display;  // nullptr: unset
        const char* session;
        const char* missing;
    } sessions[] = {
        {nullptr, "x11", "the DISPLAY environment variable is not set"},
        {":9999", "x11", "The X display :9999 does not answer"},  // nothing listens there
        {x11.c_str(), "wayland", "Wayland session"},
    };
    for (const auto& session : sessions) {
        const ScopedEnv display("DISPLAY", session.display);
        const ScopedEnv type("XDG_SESSION_TYPE", session.session);
        for (const auto& [kind, params] : jobs) {
            SCOPED_TRACE(std::string(session.missing) + " / " + JobTypeName(kind).utf8_string());
            const std::size_t before = messages.All().size();
            RunJob(kind, params);
            const std::vector<RecordedMessage> shown = messages.All();
            ASSERT_EQ(shown.size(), before + 1);
            EXPECT_EQ(shown.back().caption, "Cadrelle");
            EXPECT_NE(shown.back().text.find(session.missing), std::string::npos) << shown.back().text;
            EXPECT_NE(shown.back().text.find(JobTypeName(kind).utf8_string() + " cannot run here"),
                      std::string::npos) << shown.back().text;
        }
    }
    EXPECT_EQ(log.Matching("[JID_7] Mouse Click cannot run: ").size(), 3u);
    wxArrayString files;
    EXPECT_EQ(wxDir::GetAllFiles(temp.Path(), &files), 0u);
}
