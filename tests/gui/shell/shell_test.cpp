// The desktop shell in the real event loop: hot keys pressed through the X server, a key held by
// another X client, the advance notices, and the command line reaching the window.

#include <chrono>
#include <cstdio>
#include <future>

#include <gtest/gtest.h>
#include <wx/utils.h>

#include "core/prefs/preference.h"
#include "core/scheduler.h"
#include "desktop/single_instance.h"
#include "gui/main_frame.h"
#include "gui/shell/notice_window.h"
#include "gui_test_support.h"

namespace {

guitest::ExpectMessage ExpectBox(const wxString& part, bool* seen = nullptr)
{
    return guitest::ExpectMessage(part, wxOK, true, seen);
}

// Two reminders (JID 0 and 1) with triggers at 0:00 and 12:00; no job 2.
CadrelleFrame* NewFrame()
{
    const wxString app = guitest::FreshAppDir();
    guitest::WriteData(app, guitest::JobXml(0, 0, "R", true, 1, "Tea $ 0") + guitest::JobXml(1, 0, "R", true, 2, "Tea $ 0") +
                                guitest::TriggerXml(1, 2, "0 0 0/12 * * ?") + guitest::TriggerXml(2, 2, "0 0 0/12 * * ?"));
    auto* frame = new CadrelleFrame(app);
    frame->Show();
    return frame;
}

void Key(const char* keys)
{
    EXPECT_EQ(std::system((std::string("xdotool key ") + keys).c_str()), 0) << keys;
}

}  // namespace

TEST(Shell, HotKeysNoticesAndTheCommandLineOnOneWindow)
{
    // Another X client holds Ctrl+Shift+8 before the window starts (a mark: the grab is in).
    const std::string mark = (wxGetHomeDir() + "/held").utf8_string();
    FILE* holder = ::popen(("/usr/bin/python3 -c 'from Xlib import display, X; import sys\n"
                            "d = display.Display(); k = d.keysym_to_keycode(ord(\"8\"))\n"
                            "d.screen().root.grab_key(k, X.ShiftMask | X.ControlMask, 1, X.GrabModeAsync, "
                            "X.GrabModeAsync); d.sync(); open(\"" + mark + "\", \"w\"); sys.stdin.read()'").c_str(),
                           "w");
    ASSERT_TRUE(holder && guitest::WaitFor([&] { return wxFileExists(mark); }, 10000));
    CadrelleFrame* frame = nullptr;
    bool failureShown = false;
    wxTEST_DIALOG({ frame = NewFrame(); guitest::WaitFor([&] { return failureShown; }, 8000); },
                  ExpectBox("Register Customize HOTKEY 1 failed.\nHOTKEY restore default setting: Ctrl + Shift + 8\n"
                            "You can reset HOTKEY setting in Setting dialog.", &failureShown));
    ::pclose(holder);
    ASSERT_TRUE(guitest::WaitFor([&] { return frame->GetEngine().IsStarted(); }));

    for (const char* lock : {"", "Num_Lock", "Caps_Lock"}) {
        SCOPED_TRACE(lock);
        if (*lock)
            Key(lock);
        const bool wasPaused = frame->GetEngine().IsPaused();
        wxTEST_DIALOG({ Key("ctrl+shift+9"); guitest::WaitFor([&] { return frame->GetEngine().IsPaused() != wasPaused; }); },
                      ExpectBox(wasPaused ? "" : "In Pause Mode, all trigger will be pause fire."));
        EXPECT_NE(frame->GetEngine().IsPaused(), wasPaused);
        if (*lock)
            Key(lock);
    }
    // Custom key 3 names JID 2, which does not exist: nothing runs.
    bool refused = false;
    wxTEST_DIALOG({ Key("ctrl+shift+6"); guitest::WaitFor([&] { return refused; }); },
                  ExpectBox("Execute Customize HOTKEY failed.", &refused));
    // The restore key brings a hidden window back.
    frame->Hide();
    Key("ctrl+shift+0");
    EXPECT_TRUE(guitest::WaitFor([&] { return frame->IsShown(); }));

    // Advance notices, stacked, without taking the focus; their buttons act.
    frame->Raise();
    ASSERT_TRUE(guitest::WaitFor([&] { return frame->IsActive(); }));
    for (std::int32_t jid : {0, 1})
        frame->AdvanceNotice(*frame->GetScheduler().GetJobById(jid));
    guitest::Settle();
    std::vector<NoticeWindow*> notices;
    for (wxWindow* top : wxTopLevelWindows)
        if (auto* notice = dynamic_cast<NoticeWindow*>(top))
            notices.push_back(notice);
    ASSERT_EQ(notices.size(), 2u);
    EXPECT_TRUE(frame->IsActive());
    EXPECT_FALSE(notices[0]->GetScreenRect().Intersects(notices[1]->GetScreenRect()));
    EXPECT_EQ(notices[0]->GetText(), "The following job will be run in 5 minutes later, please take an action.\n\n"
                                     "\nJob Detail:\nJob ID: " + std::to_string(notices[0]->GetJid()) +
                                         "\tJob Type: Reminder");
    if (std::getenv("CADRELLE_SCREENSHOT_DIR"))
        std::system("import -window root \"$CADRELLE_SCREENSHOT_DIR/notices.png\"");

    auto press = [](NoticeWindow* notice, const char* name) { guitest::Fire(guitest::FindByName(name, notice)); };
    const std::int32_t first = notices[0]->GetJid();
    press(notices[0], "noticeDisable");
    EXPECT_FALSE(frame->GetScheduler().GetJobById(first)->IsEnabled());
    wxTEST_DIALOG(press(notices[1], "noticeEdit"), wxExpectAny(wxID_CANCEL), ExpectBox("Nothing to be changed!"));
    frame->AdvanceNotice(*frame->GetScheduler().GetJobById(first));
    guitest::Settle();
    auto* gotIt = dynamic_cast<NoticeWindow*>(guitest::FindByName("NoticeWindow"));
    ASSERT_NE(gotIt, nullptr);
    press(gotIt, "noticeGotIt");  // closes it and changes nothing
    guitest::Settle();
    EXPECT_EQ(guitest::FindByName("NoticeWindow"), nullptr);
    EXPECT_FALSE(frame->GetScheduler().GetJobById(first)->IsEnabled());
    frame->Prefs().SetValue("hideNotifyWnd", "1");  // then never
    frame->AdvanceNotice(*frame->GetScheduler().GetJobById(first));
    EXPECT_EQ(guitest::FindByName("NoticeWindow"), nullptr);
    frame->Prefs().SetValue("hideNotifyWnd", "0");

    // The command line (its answers: the headless control test) reaches the window's paused engine.
    ASSERT_TRUE(frame->GetEngine().IsPaused());
    auto client = std::async(std::launch::async, [] { return std::system(CADRELLE_BINARY " --resume >/dev/null 2>&1"); });
    ASSERT_TRUE(guitest::WaitFor([&] { return client.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }, 20000));
    EXPECT_EQ(client.get(), 0);
    EXPECT_FALSE(frame->GetEngine().IsPaused());
    // A second window start brings the first to the front, then refuses (its box stays up).
    const SingleInstanceGuard instance;  // this test program plays the running instance
    ASSERT_TRUE(instance.IsHeld());
    frame->Hide();
    const long second = wxExecute(CADRELLE_BINARY, wxEXEC_ASYNC);
    EXPECT_TRUE(guitest::WaitFor([&] { return frame->IsShown(); }, 10000));
    wxKill(second, wxSIGKILL);
    frame->Destroy();
    guitest::Settle();
}
