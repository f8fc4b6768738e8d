// The main window over a real scheduler under Xvfb: commands, sorting kept across a restart,
// the filter field, closing; then the real program ended the two ways a desktop ends it (the
// window manager's close request, SIGTERM): it saves, writes the end banner, exits 0.

#include <csignal>
#include <cstdlib>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <wx/app.h>
#include <wx/dataview.h>
#include <wx/display.h>
#include <wx/log.h>
#include <wx/srchctrl.h>
#include <wx/textctrl.h>
#include <wx/uiaction.h>
#include <wx/weakref.h>

#include "core/log/weekday_log.h"
#include "core/prefs/password_hash.h"
#include "gui/dialogs/auth_dlg.h"
#include "gui/dialogs/setting_dlg.h"
#include "core/prefs/preference.h"
#include "core/scheduler.h"
#include <wx/checkbox.h>
#include <wx/choice.h>
#include <wx/stattext.h>

#include "core/import/crontab_import.h"
#include "gui/dialogs/crontab_import_dlg.h"
#include "gui/dialogs/job_detail_dlg.h"
#include "gui/frame/agenda_pane.h"
#include "gui/frame/frame_shared.h"
#include "gui/main_frame.h"
#include "gui_test_support.h"

namespace {

using guitest::ExpectMessage;

// A dialog of class T, answered by `answer` (which may look at it first).
template <class T>
class ExpectDialog : public wxExpectModalBase<T> {
public:
    explicit ExpectDialog(std::function<int(T*)> answer) : m_answer(std::move(answer)) {}

protected:
    int OnInvoked(T* dlg) const override { return m_answer(dlg); }

private:
    std::function<int(T*)> m_answer;
};

// Five jobs of three kinds, one disabled; Interval and Cron triggers that do
// not fire during a test (03:00, 1 January).
void WriteExampleData(const wxString& appDir)
{
    using guitest::JobXml;
    using guitest::TriggerXml;
    guitest::WriteData(appDir, JobXml(0, 0, "Morning coffee", true, 0, "Time for coffee $ 0") +
                                   JobXml(1, 10, "Ping backup box", true, 1, "hello $ 0 $ 0 $ 127.0.0.1 $ 9") +
                                   JobXml(2, 10, "Old notice", false, 2, "bye $ 0 $ 0 $ 127.0.0.1 $ 9") +
                                   JobXml(12, 0, "Stretch", true, 3, "Stand up $ 0") +
                                   JobXml(21, 1, "Open news", true, 4, "https://example.org/news") +
                                   TriggerXml(0, 2, "0 0 3 * * ?") + TriggerXml(1, 11, "0 0 3 * * ?") +
                                   TriggerXml(2, 2, "0 0 3 * * ?") + TriggerXml(3, 11, "0 0 0 1 1 ?") +
                                   TriggerXml(4, 2, "0 0 0 1 1 ?"));
}

class MainFrameTest : public testing::Test {
protected:
    void SetUp() override
    {
        wxTheApp->SetExitOnFrameDelete(false);
        // The log file is part of what is checked.
        wxLog::SetLogLevel(wxLOG_Message);
        // What an earlier test's window saved must not carry over.
        const auto prefs = Preference::OpenUserPreferences();
        prefs->SetValue("hideMainFrmClickCloseBtn", "0");
        prefs->SetValue("usePassword", "0");
        prefs->SetValue("colSortIndex", "0");
        prefs->SetValue("colSortDir", "4096");
        prefs->SaveSettingParam();
        m_appDir = guitest::FreshAppDir();
        WriteExampleData(m_appDir);
        Open();
    }
    void TearDown() override
    {
        if (m_frame)
            m_frame->CloseForGood();
        ASSERT_TRUE(guitest::WaitFor([&] { return !m_frame; }));
        wxLog::SetLogLevel(wxLOG_Warning);
    }
    void Open()
    {
        m_frame = new CadrelleFrame(m_appDir);
        m_frame->Show();
        ASSERT_TRUE(guitest::WaitFor([&] { return m_frame->IsShownOnScreen(); }));
    }
    std::vector<int> Shown() const
    {
        std::vector<int> jids;
        for (unsigned row = 0; m_frame->JobModel().RowAt(row); ++row)
            jids.push_back(m_frame->JobModel().RowAt(row)->jid);
        return jids;
    }
    wxString m_appDir;
    wxWeakRef<CadrelleFrame> m_frame;
};

// The trigger list says each condition in words (its tip keeps it as written) and shows a
// dash for the times the data file keeps as 1999 and 2999 (never fired, no start, no end).
TEST_F(MainFrameTest, TriggerListSaysConditionsInWords)
{
    const TriggerListModel& model = m_frame->TriggerModel();
    const struct { unsigned row; const char* jid; const char* condition; const char* sentence; } rows[] = {
        {0, "0", "0 0 3 * * ?", "Every day at 03:00"}, {3, "12", "0 0 0 1 1 ?", "Every year on January 1 at 00:00"}};
    for (const auto& r : rows) {
        wxVariant value;
        model.GetValueByRow(value, r.row, 8);
        EXPECT_EQ(value.GetString(), r.sentence);
        EXPECT_EQ(model.ConditionAt(r.row), r.condition);
        // The JID column tells the owning job.
        model.GetValueByRow(value, r.row, 1);
        EXPECT_EQ(value.GetString(), r.jid);
        for (unsigned col : {4u, 6u, 7u}) {
            model.GetValueByRow(value, r.row, col);
            EXPECT_EQ(value.GetString(), wxString(L"\u2014")) << "column " << col;
        }
        // Disabling the job shows its trigger disabled at once; enabling shows it waiting.
        for (const char* status : {"Disable", "Waiting"}) {
            m_frame->ToggleJobEnable(std::atoi(r.jid));
            model.GetValueByRow(value, r.row, 3);
            EXPECT_EQ(value.GetString(), status);
        }
        model.GetValueByRow(value, r.row, 5);
        EXPECT_TRUE(value.GetString().EndsWith(r.row == 0 ? "03:00:00" : "00:00:00")) << value.GetString();
    }
}

// Commands on "the selected job" refuse alike without one; Delete, Disable All and Enable
// All ask first (a refusal keeps the job); the status categories and counters follow.
TEST_F(MainFrameTest, CommandsAskFirst)
{
    using Handler = void (CadrelleFrame::*)(wxCommandEvent&);
    const Handler handlers[] = {&CadrelleFrame::Onm_pTbiEditJobClick, &CadrelleFrame::Onm_pTbiEnableJobClick,
                                &CadrelleFrame::Onm_pTbiDelJobClick, &CadrelleFrame::Onm_pTbiTestExecClick,
                                &CadrelleFrame::OnPpmCopyJobClick};
    wxCommandEvent event;
    for (Handler handler : handlers)
        wxTEST_DIALOG((m_frame.get()->*handler)(event), ExpectMessage("Please select a job."));
    EXPECT_EQ(m_frame->GetScheduler().Jobs().size(), 5u);

    ASSERT_TRUE(m_frame->SelectJob(12));
    wxTEST_DIALOG(m_frame->Onm_pTbiDelJobClick(event), ExpectMessage("Do you want to delete?\nStretch", wxNO));
    EXPECT_TRUE(m_frame->GetScheduler().GetJobById(12));
    wxTEST_DIALOG(m_frame->Onm_pTbiDelJobClick(event), ExpectMessage("Do you want to delete?\nStretch", wxYES));
    EXPECT_FALSE(m_frame->GetScheduler().GetJobById(12));
    EXPECT_EQ(Shown(), (std::vector<int>{0, 1, 2, 21}));

    wxTEST_DIALOG(m_frame->OnPpmDisableAllClick(event), ExpectMessage("Do you want to disable all jobs?", wxYES));
    m_frame->SelectCategory(2);  // By Job Status / Enable
    EXPECT_TRUE(Shown().empty());
    EXPECT_TRUE(m_frame->GetStatusBar()->GetStatusText(2).StartsWith("JobCount: 4|0, TriggerCount: 4|"));
    wxTEST_DIALOG(m_frame->OnPpmEnableAllClick(event), ExpectMessage("Do you want to enable all jobs?", wxYES));
    EXPECT_EQ(Shown().size(), 4u);
    EXPECT_TRUE(m_frame->GetStatusBar()->GetStatusText(2).StartsWith("JobCount: 4|4, "));
}

// Ctrl+F, then typing: the list narrows to what matches.
TEST_F(MainFrameTest, FilterFieldNarrowsAsYouType)
{
    wxUIActionSimulator sim;
    m_frame->Raise();
    guitest::Settle();
    sim.Char('f', wxMOD_CONTROL);
    auto* field = dynamic_cast<wxSearchCtrl*>(guitest::FindByName("ID_SEARCH_JOBS", m_frame));
    ASSERT_TRUE(field);
    ASSERT_TRUE(guitest::WaitFor([&] {
        const wxWindow* focus = wxWindow::FindFocus();
        return focus && (focus == field || focus->GetParent() == field);
    }));
    sim.Text("ol");  // "Old notice"
    ASSERT_TRUE(guitest::WaitFor([&] { return Shown() == std::vector<int>{2}; }));
    // Escape empties the field and lists every job again.
    sim.Char(WXK_ESCAPE);
    ASSERT_TRUE(guitest::WaitFor([&] { return Shown().size() == 5u; }));
    EXPECT_EQ(field->GetValue(), "");
}

// Alt+S opens the settings dialog, as its menu item says, not the Setting menu.
TEST_F(MainFrameTest, AltSOpensTheSettingsDialog)
{
    wxUIActionSimulator sim;
    m_frame->Raise();
    ASSERT_TRUE(guitest::WaitFor([&] { return m_frame->IsActive(); }));
    bool seen = false;
    wxTEST_DIALOG({
        sim.Char('s', wxMOD_ALT);
        EXPECT_TRUE(guitest::WaitFor([&] { return seen; }));
    }, guitest::Drive<SettingDlg>([&](SettingDlg*) { seen = true; return wxID_CANCEL; }));
}

// A second click flips the direction; both survive the end of the session
// (they are in the saved preferences, not only in memory).
TEST_F(MainFrameTest, SortOrderSurvivesARestart)
{
    m_frame->SortByColumn(JColDesc);
    m_frame->SortByColumn(JColDesc);
    EXPECT_EQ(Shown(), (std::vector<int>{12, 1, 21, 2, 0}));
    m_frame->CloseForGood();
    ASSERT_TRUE(guitest::WaitFor([&] { return !m_frame; }));
    Open();
    EXPECT_EQ(Shown(), (std::vector<int>{12, 1, 21, 2, 0}));
    // The header arrow, after the restart's model reset too: on that column only, pointing down.
    auto* list = dynamic_cast<wxDataViewCtrl*>(guitest::FindByName("ID_LISTCTRL_JOBS"));
    ASSERT_NE(list, nullptr);
    for (unsigned i = 0; i < list->GetColumnCount(); ++i)
        EXPECT_EQ(list->GetColumn(i)->IsSortKey() && !list->GetColumn(i)->IsSortOrderAscending(), i == JColDesc) << i;
}

// A stored size far beyond the screen is fitted to it, and the log says so.
TEST_F(MainFrameTest, StoredGeometryIsFittedToTheScreen)
{
    m_frame->CloseForGood();
    ASSERT_TRUE(guitest::WaitFor([&] { return !m_frame; }));
    {
        const auto prefs = Preference::OpenUserPreferences();
        prefs->SetValue("mainFrmH", "99999999");
        prefs->SaveSettingParam();
    }
    Open();
    const wxRect area = wxDisplay(0u).GetClientArea();
    EXPECT_LE(m_frame->GetSize().GetHeight(), area.GetHeight());
    EXPECT_TRUE(guitest::LogText(m_appDir).Contains("mainFrmH 99999999 does not fit the screen"));
    m_frame->Prefs().SetValue("mainFrmH", "512");
}

// With the hide setting the close button only hides (ending for good, by
// the window manager or SIGTERM: ProgramEndTest).
TEST_F(MainFrameTest, CloseButtonOnlyHidesWithTheHideSetting)
{
    m_frame->Prefs().SetValue("hideMainFrmClickCloseBtn", "1");
    m_frame->Close();
    guitest::Settle();
    ASSERT_TRUE(m_frame);
    // No tray host here: minimised to the taskbar rather than lost.
    EXPECT_TRUE(guitest::WaitFor([&] { return m_frame->IsIconized() || !m_frame->IsShown(); }));
    EXPECT_FALSE(guitest::LogText(m_appDir).Contains(WeekdayLog::kEndBanner));
    m_frame->Prefs().SetValue("hideMainFrmClickCloseBtn", "0");
}

// The password prompt: a window shown and unlocked is only raised; a hidden one asks once,
// however many requests arrive meanwhile (a second prompt would be an unexpected dialog);
// refusing keeps the program running hidden, except at start, where "Exit" ends it.
TEST_F(MainFrameTest, OnePasswordPromptAndRefusalKeepsRunning)
{
    m_frame->Prefs().SetValue("usePassword", "1");
    m_frame->Prefs().SetValue("password", HashPassword("secret"));
    const struct { int line; bool hidden; bool atStart; int answer; bool shown; bool alive; } rows[] = {
        {__LINE__, false, false, 0, true, true},
        {__LINE__, true, false, wxID_CANCEL, false, true},
        {__LINE__, true, false, wxID_OK, true, true},
        {__LINE__, true, true, wxID_CANCEL, false, false},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.line);
        if (r.hidden)
            m_frame->Hide();
        int prompts = 0;
        wxTEST_DIALOG(m_frame->RestoreMainFrame(r.atStart),
                      guitest::Drive<AuthDlg>([&](AuthDlg* dlg) {
                          ++prompts;
                          m_frame->RestoreMainFrame();  // a second `--show`
                          m_frame->TrayExit();
                          EXPECT_EQ(m_frame->OpenPrompt(), dlg);
                          if (r.answer == wxID_OK) {
                              guitest::Find<wxTextCtrl>(dlg, "password")->ChangeValue("secret");
                              guitest::Fire(dlg->FindWindow(wxID_OK));
                              return dlg->GetReturnCode();
                          }
                          return r.answer;
                      }).Optional());
        EXPECT_EQ(prompts, r.answer ? 1 : 0);
        if (!r.alive) {
            EXPECT_TRUE(guitest::WaitFor([&] { return !m_frame; }));
            break;
        }
        ASSERT_TRUE(m_frame);
        EXPECT_EQ(m_frame->IsShown(), r.shown);
        EXPECT_EQ(m_frame->OpenPrompt(), nullptr);
    }
}

// Asks the window manager, as a pager does (_NET_CLOSE_WINDOW), to close the
// managed window of `pid`; false while it has none.
bool RequestClose(pid_t pid)
{
    const std::string script = R"(
import sys
from Xlib import display, X, protocol
d = display.Display(); root = d.screen().root; atom = d.intern_atom
clients = root.get_full_property(atom("_NET_CLIENT_LIST"), X.AnyPropertyType)
for w in (clients.value if clients else []):
    w = d.create_resource_object("window", w); p = w.get_full_property(atom("_NET_WM_PID"), X.AnyPropertyType)
    if p and p.value[0] == int(sys.argv[1]):
        root.send_event(protocol.event.ClientMessage(window=w, client_type=atom("_NET_CLOSE_WINDOW"),
                        data=(32, [0, 2, 0, 0, 0])), event_mask=X.SubstructureRedirectMask | X.SubstructureNotifyMask)
        d.flush(); sys.exit(0)
sys.exit(1))";
    return std::system(("/usr/bin/python3 -c '" + script + "' " + std::to_string(pid)).c_str()) == 0;
}

class ProgramEndTest : public testing::TestWithParam<bool> {};

TEST_P(ProgramEndTest, SavesAndWritesTheEndBanner)
{
    const bool bySignal = GetParam();
    const wxString appDir = guitest::FreshAppDir();
    WriteExampleData(appDir);
    const pid_t pid = ::fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
        const wxScopedCharBuffer dir = appDir.utf8_str();
        // Preferences of its own: the in-process tests change the shared ones.
        ::setenv("XDG_CONFIG_HOME", (std::string(dir.data()) + "/config").c_str(), 1);
        ::execl(CADRELLE_BINARY, CADRELLE_BINARY, "--app-dir", dir.data(), static_cast<char*>(nullptr));
        ::_exit(127);
    }
    // Past the first tick of the trigger timer: the checkers run.
    EXPECT_TRUE(guitest::WaitFor(
        [&] { return guitest::LogText(appDir).Contains("Starting CheckTriggerFireThreadEx"); }, 20000));
    if (bySignal)
        ::kill(pid, SIGTERM);
    else
        EXPECT_TRUE(guitest::WaitFor([&] { return RequestClose(pid); }, 20000));
    int status = -1;
    const bool ended = guitest::WaitFor([&] { return ::waitpid(pid, &status, WNOHANG) == pid; }, 20000);
    if (!ended) {
        ::kill(pid, SIGKILL);
        ::waitpid(pid, &status, 0);
    }
    ASSERT_TRUE(ended);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    const wxString log = guitest::LogText(appDir);
    EXPECT_TRUE(log.Contains(bySignal ? "OnStopSignal - 15" : "CadrelleFrame::OnClose"));
    EXPECT_LT(log.Find("SaveSchedulerData(true) Completed"), log.Find(WeekdayLog::kEndBanner));
    EXPECT_EQ(guitest::ReadText(appDir + "/data/data1.xml").Replace("<JOB>", ""), 5u);
}

INSTANTIATE_TEST_SUITE_P(Ways, ProgramEndTest, testing::Values(false, true),
                         [](const testing::TestParamInfo<bool>& info) {
                             return info.param ? "Sigterm" : "WindowManagerClose";
                         });

}  // namespace

// View > Agenda: the runs of the next day (the disabled job's are not there), the next week
// at a choice, the day written once per group; a double click opens the job.
TEST_F(MainFrameTest, AgendaPaneListsTheComingRunsAndOpensTheJob)
{
    wxCommandEvent show(wxEVT_MENU, frame::ID_MNU_AGENDA);
    show.SetInt(1);
    m_frame->ProcessWindowEvent(show);
    ASSERT_TRUE(m_frame->IsAgendaShown());
    EXPECT_TRUE(m_frame->GetMenuBar()->IsChecked(frame::ID_MNU_AGENDA));
    AgendaPane& pane = m_frame->Agenda();
    const auto cells = [&](unsigned row) {
        std::vector<wxString> texts;
        for (unsigned col = 0; col < 5; ++col) {
            wxVariant value;
            pane.List()->GetModel()->GetValue(value, pane.List()->GetModel()->IsVirtualListModel()
                                                         ? static_cast<wxDataViewVirtualListModel*>(
                                                               pane.List()->GetModel())->GetItem(row)
                                                         : wxDataViewItem(),
                                              col);
            texts.push_back(value.GetString());
        }
        return texts;
    };
    ASSERT_EQ(pane.Current().runs.size(), 2u);
    std::vector<wxString> first = cells(0), second = cells(1);
    EXPECT_FALSE(first[0].empty());  // the day heads its group
    EXPECT_EQ(first[1], "03:00:00");
    EXPECT_EQ(first[2], "0  Reminder: Morning coffee");
    EXPECT_EQ(first[3], "0  Every day at 03:00");
    EXPECT_EQ(second[0], "");
    EXPECT_EQ(second[2], "1  Send UDP MSG: Ping backup box");

    auto* window = guitest::Find<wxChoice>(&pane, "ID_CHOICE_AGENDA_WINDOW");
    ASSERT_TRUE(window);
    window->SetSelection(1);
    guitest::Fire(window, wxEVT_CHOICE, 1);
    EXPECT_EQ(pane.Current().runs.size(), 14u);
    EXPECT_EQ(guitest::Find<wxStaticText>(&pane, "ID_STATIC_AGENDA_SUMMARY")->GetLabel(), "14 runs");
    guitest::SaveScreenshot(m_frame, "agenda-pane");

    wxDataViewEvent open(wxEVT_DATAVIEW_ITEM_ACTIVATED, pane.List(),
                         static_cast<wxDataViewVirtualListModel*>(pane.List()->GetModel())->GetItem(1));
    wxTEST_DIALOG(pane.List()->ProcessWindowEvent(open),
                  ExpectDialog<JobDetailDlg>([](JobDetailDlg*) { return wxID_CANCEL; }));

    m_frame->ShowAgenda(false);
    EXPECT_FALSE(m_frame->GetMenuBar()->IsChecked(frame::ID_MNU_AGENDA));
}

// The crontab preview lists every line's fate and imports only on OK.
TEST_F(MainFrameTest, CrontabPreviewShowsEveryLineBeforeAnythingChanges)
{
    const std::vector<CrontabLine> lines = TranslateCrontab("# chores\n@daily tidy\n@often x\n30 8 * * 1-5 standup\n");
    const auto preview = [](int answer) {
        return ExpectDialog<wxDialog>([answer](wxDialog* dlg) {
            auto* list = guitest::Find<wxDataViewListCtrl>(dlg, "ID_LISTCTRL_CRONTAB_LINES");
            EXPECT_TRUE(list);
            if (list) {
                EXPECT_EQ(list->GetItemCount(), 4);
                EXPECT_EQ(list->GetTextValue(2, 2), "not imported: \"@often\" is not a schedule cron knows");
                EXPECT_EQ(list->GetTextValue(3, 2), "job \"standup\", Every weekday at 08:30");
            }
            EXPECT_EQ(dlg->FindWindow(wxID_OK)->GetLabel(), "Import 2 jobs");
            EXPECT_TRUE(guitest::Find<wxCheckBox>(dlg, "ID_CHECK_COMMENT_OUT"));
            dlg->Show();
            guitest::Settle();
            guitest::SaveScreenshot(dlg, "crontab-preview");
            dlg->Hide();
            return answer;
        });
    };
    CrontabImportChoice choice;
    wxTEST_DIALOG(choice = ShowCrontabImportDlg(m_frame, "Your crontab", lines, true), preview(wxID_CANCEL));
    EXPECT_FALSE(choice.confirmed);
    wxTEST_DIALOG(choice = ShowCrontabImportDlg(m_frame, "Your crontab", lines, true), preview(wxID_OK));
    EXPECT_TRUE(choice.confirmed);
    EXPECT_FALSE(choice.commentOut);  // never unless ticked
}
