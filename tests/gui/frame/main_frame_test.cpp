// The main window over a real scheduler and session under Xvfb: commands,
// confirmations, sorting kept across a restart, the filter field, closing.

#include <gtest/gtest.h>
#include <wx/app.h>
#include <wx/log.h>
#include <wx/srchctrl.h>
#include <wx/uiaction.h>
#include <wx/weakref.h>

#include "core/log/weekday_log.h"
#include "core/prefs/preference.h"
#include "core/scheduler.h"
#include "frame_test_data.h"
#include "gui/main_frame.h"
#include "gui_test_support.h"

namespace {

using guitest::ExpectMessage;

class MainFrameTest : public testing::Test {
protected:
    void SetUp() override
    {
        wxTheApp->SetExitOnFrameDelete(false);
        // The log file is part of what is checked.
        wxLog::SetLogLevel(wxLOG_Message);
        Preference::Instance().SetValue("hideMainFrmClickCloseBtn", "0");
        Preference::Instance().SetValue("colSortDir", "4096");
        m_appDir = guitest::FreshAppDir();
        frametest::WriteExampleData(m_appDir);
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
    // The JIDs of the job list, top to bottom.
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

// Every command on "the selected job" refuses alike without a selection;
// Delete, Disable All and Enable All ask first, and a refusal keeps the job.
// The status categories and the counters line follow.
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
    wxTEST_DIALOG(m_frame->Onm_pTbiDelJobClick(event), ExpectMessage("Do you want to delete?", wxNO));
    EXPECT_TRUE(m_frame->GetScheduler().GetJobById(12));
    wxTEST_DIALOG(m_frame->Onm_pTbiDelJobClick(event), ExpectMessage("Do you want to delete?", wxYES));
    EXPECT_FALSE(m_frame->GetScheduler().GetJobById(12));
    EXPECT_EQ(Shown(), (std::vector<int>{0, 1, 2, 21}));
    EXPECT_TRUE(guitest::LogText(m_appDir).Contains("### Del Job => [JID_12]"));

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
}

// A second click flips the direction; both survive the end of the session
// (they are in the saved preferences, not only in memory).
TEST_F(MainFrameTest, SortOrderSurvivesARestart)
{
    m_frame->SortByColumn(JColDesc);
    EXPECT_EQ(Shown(), (std::vector<int>{0, 2, 21, 1, 12}));
    m_frame->SortByColumn(JColDesc);
    EXPECT_EQ(Shown(), (std::vector<int>{12, 1, 21, 2, 0}));
    m_frame->CloseForGood();
    ASSERT_TRUE(guitest::WaitFor([&] { return !m_frame; }));
    Preference::Instance().SetValue("colSortIndex", "0");
    Preference::Instance().SetValue("colSortDir", "4096");
    Preference::Instance().Load();
    Open();
    EXPECT_EQ(Shown(), (std::vector<int>{12, 1, 21, 2, 0}));
}

// With the hide setting the close button only hides (ending for good, by
// the window manager or SIGTERM: ProgramEndTest).
TEST_F(MainFrameTest, CloseButtonOnlyHidesWithTheHideSetting)
{
    Preference::Instance().SetValue("hideMainFrmClickCloseBtn", "1");
    m_frame->Close();
    guitest::Settle();
    ASSERT_TRUE(m_frame);
    // No tray host here: minimised to the taskbar rather than lost.
    EXPECT_TRUE(guitest::WaitFor([&] { return m_frame->IsIconized() || !m_frame->IsShown(); }));
    EXPECT_FALSE(guitest::LogText(m_appDir).Contains(WeekdayLog::kEndBanner));
    Preference::Instance().SetValue("hideMainFrmClickCloseBtn", "0");
}

}  // namespace
