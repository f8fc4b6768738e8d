// Hot keys on a Wayland session: through the desktop portal where the bus offers it, else X11 grabs as before.

#include <gtest/gtest.h>

#include "gui/main_frame.h"
#include "gui_test_support.h"

// A new window, paused by the pause key that `command` presses.
static void PausedBy(const char* command)
{
    auto* frame = new CadrelleFrame(guitest::FreshAppDir());
    ASSERT_TRUE(guitest::WaitFor([&] { return frame->GetEngine().IsStarted(); }));
    wxTEST_DIALOG({ std::system(command); EXPECT_TRUE(guitest::WaitFor([&] { return frame->GetEngine().IsPaused(); })); },
                  guitest::ExpectMessage("In Pause Mode, all trigger will be pause fire."));
    frame->Destroy();
}

TEST(PortalHotKeys, BoundAndActivatedThroughThePortalElseGrabbedOnX11)
{
    ::setenv("XDG_SESSION_TYPE", "wayland", 1);
    const wxString record = wxGetHomeDir() + "/portal.txt";
    std::system(("/usr/bin/python3 " FAKE_PORTAL " " + record.utf8_string() + " &").c_str());
    ASSERT_TRUE(guitest::WaitFor([&] { return wxFileExists(record); }, 10000));
    PausedBy("gdbus call --session -d org.freedesktop.portal.Desktop -o /org/freedesktop/portal/desktop "
             "-m test.Portal.Activate pause >/dev/null");
    EXPECT_TRUE(guitest::WaitFor([&] { return guitest::ReadText(record) == "restore CTRL+SHIFT+0\npause CTRL+SHIFT+9\n"
                                    "custom1 CTRL+SHIFT+8\ncustom2 CTRL+SHIFT+7\ncustom3 CTRL+SHIFT+6\nclosed\n"; })) << guitest::ReadText(record);
    PausedBy("xdotool key ctrl+shift+9");  // the portal has gone
}
