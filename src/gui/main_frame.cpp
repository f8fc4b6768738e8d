#include "gui/main_frame.h"

#include <wx/listctrl.h>
#include <wx/log.h>
#include <wx/sizer.h>
#include <wx/splitter.h>

#include "core/core_log.h"
#include "core/data/atomic_file.h"
#include "core/prefs/preference.h"
#include "core/scheduler.h"
#include "desktop/jobs/web_refresh.h"
#include "core/settings_lookup.h"

namespace {

enum {
    ID_LISTCTRL_JOBS = wxID_HIGHEST + 1,
    ID_LISTCTRL_TRIGGERS,
    ID_TIMER_TRIGGER,
    ID_TIMER_HOUSEKEEPING,
    ID_TIMER_LOGGING
};

// The trigger timer's period; only its first tick does anything.
constexpr int kTriggerTimerMs = 2000;
constexpr int kHousekeepingMs = 1000;
// Above this many triggers the list is not refreshed every second.
constexpr std::size_t kLiveRefreshLimit = 500;

wxString FormatMoment(const wxDateTime& dt)
{
    return dt.IsValid() ? dt.Format("%Y-%m-%d %H:%M:%S") : wxString("-");
}

}  // namespace

CadrelleFrame::CadrelleFrame(const wxString& appDir)
    : wxFrame(nullptr, wxID_ANY, "Cadrelle", wxDefaultPosition, wxSize(900, 560)),
      m_pLog(std::make_unique<WeekdayLog>(appDir)), m_pScheduler(std::make_unique<Scheduler>(appDir)),
      m_timerTrigger(this, ID_TIMER_TRIGGER), m_timerHousekeeping(this, ID_TIMER_HOUSEKEEPING),
      m_timerLogging(this, ID_TIMER_LOGGING)
{
    wxString dirError;
    EnsurePrivateDir(appDir, &dirError);
    m_pLog->Open();
    SetSettings(&Preference::Instance());
    const DataLoadReport report = m_pScheduler->LoadSchedulerData();
    m_pEngine = std::make_unique<SchedulerEngine>(*m_pScheduler, *this);

    auto* splitter = new wxSplitterWindow(this, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxSP_LIVE_UPDATE);
    m_pLcJob = new wxListCtrl(splitter, ID_LISTCTRL_JOBS, wxDefaultPosition, wxDefaultSize,
                              wxLC_REPORT | wxLC_SINGLE_SEL);
    m_pLcTrigger = new wxListCtrl(splitter, ID_LISTCTRL_TRIGGERS, wxDefaultPosition, wxDefaultSize,
                                  wxLC_REPORT | wxLC_SINGLE_SEL);
    splitter->SplitHorizontally(m_pLcJob, m_pLcTrigger, 300);
    splitter->SetMinimumPaneSize(80);

    const char* const jobColumns[] = {"JID", "Job Type", "Enable", "Description", "Parameters"};
    const int jobWidths[] = {50, 130, 60, 220, 400};
    for (int i = 0; i < 5; ++i)
        m_pLcJob->AppendColumn(wxGetTranslation(jobColumns[i]), wxLIST_FORMAT_LEFT, jobWidths[i]);
    const char* const triggerColumns[] = {"TID", "Trigger Type", "Status", "Condition", "Previous", "Next"};
    const int triggerWidths[] = {50, 110, 80, 200, 150, 150};
    for (int i = 0; i < 6; ++i)
        m_pLcTrigger->AppendColumn(wxGetTranslation(triggerColumns[i]), wxLIST_FORMAT_LEFT, triggerWidths[i]);

    FillJobList();
    FillTriggerList();

    CreateStatusBar();
    if (!report.keptCopies.empty())
        m_strLoadNote = wxString::Format(" - an unreadable data file was kept as %s", report.keptCopies.front());
    UpdateStatusBar();

    Bind(wxEVT_TIMER, &CadrelleFrame::Onm_timerTrigger, this, ID_TIMER_TRIGGER);
    Bind(wxEVT_TIMER, &CadrelleFrame::OnHousekeeping, this, ID_TIMER_HOUSEKEEPING);
    Bind(wxEVT_TIMER, &CadrelleFrame::Onm_timerLogging, this, ID_TIMER_LOGGING);
    m_timerLogging.Start(WeekdayLog::kTimerPeriodMs);
    m_timerTrigger.Start(kTriggerTimerMs);
    m_timerHousekeeping.Start(kHousekeepingMs);
}

CadrelleFrame::~CadrelleFrame()
{
    m_timerTrigger.Stop();
    m_timerHousekeeping.Stop();
    m_timerLogging.Stop();
    wxLogMessage("%d *** ->> CadrelleFrame::~CadrelleFrame", LogMs());
    // Checker threads stop and are waited for before anything is saved.
    m_pEngine->Shutdown();
    CancelWebRequests();
    m_pScheduler->SetDataChanged(true);
    m_pScheduler->SaveSchedulerData(true);
    wxLogMessage("%d *** SaveSchedulerData(true) Completed", LogMs());
    Preference::Instance().SaveSettingParam();
    wxLogMessage("%d *** SaveSettingParam() Completed", LogMs());
    m_pEngine.reset();
    wxLogMessage("%d <<- CadrelleFrame::~CadrelleFrame", LogMs());
    m_pLog->Close();  // the end banner
}

void CadrelleFrame::Onm_timerLogging(wxTimerEvent&)
{
    m_pLog->OnLoggingTimer(m_pEngine->ThreadCount(), m_pEngine->CheckTriggerCount());
}

void CadrelleFrame::WakeMainThread()
{
    // Any thread; queued to the main thread, never run on the caller's.
    CallAfter([this] {
        if (m_pEngine)
            m_pEngine->ProcessRequests();
    });
}

void CadrelleFrame::JobStarted(const Job&)
{
    if (m_pScheduler->Triggers().size() <= kLiveRefreshLimit)
        FillTriggerList();
}

void CadrelleFrame::Onm_timerTrigger(wxTimerEvent&)
{
    m_timerTrigger.Stop();
    m_pEngine->StartChecking();
    UpdateStatusBar();
}

void CadrelleFrame::OnHousekeeping(wxTimerEvent&)
{
    m_pEngine->HousekeepingTick();
}

void CadrelleFrame::UpdateStatusBar()
{
    wxString status = wxString::Format("%zu jobs, %zu triggers", m_pScheduler->Jobs().size(),
                                       m_pScheduler->Triggers().size());
    if (m_pEngine && m_pEngine->IsStarted())
        status += wxString::Format(" - checking with %zu threads", m_pEngine->ThreadCount());
    SetStatusText(status + m_strLoadNote);
}

void CadrelleFrame::FillJobList()
{
    auto lock = m_pScheduler->ReadLock();
    m_pLcJob->DeleteAllItems();
    long row = 0;
    for (const Scheduler::JobPtr& job : m_pScheduler->Jobs()) {
        const long item = m_pLcJob->InsertItem(row++, wxString::Format("%d", job->GetId()));
        m_pLcJob->SetItem(item, 1, job->GetTypeName());
        m_pLcJob->SetItem(item, 2, job->IsEnabled() ? _("Yes") : _("No"));
        m_pLcJob->SetItem(item, 3, job->GetDescription());
        m_pLcJob->SetItem(item, 4, job->GetParamText());
    }
}

void CadrelleFrame::FillTriggerList()
{
    auto lock = m_pScheduler->ReadLock();
    m_pLcTrigger->Freeze();
    m_pLcTrigger->DeleteAllItems();
    long row = 0;
    for (const Scheduler::TriggerPtr& trigger : m_pScheduler->Triggers()) {
        const long item = m_pLcTrigger->InsertItem(row++, wxString::Format("%lld", static_cast<long long>(trigger->GetTid())));
        m_pLcTrigger->SetItem(item, 1, TriggerTypeName(trigger->GetType()));
        m_pLcTrigger->SetItem(item, 2, TriggerStatusName(trigger->GetStatus()));
        m_pLcTrigger->SetItem(item, 3, trigger->GetCondition());
        m_pLcTrigger->SetItem(item, 4, FormatMoment(trigger->GetPrevFire()));
        m_pLcTrigger->SetItem(item, 5, FormatMoment(trigger->GetNextFire()));
    }
    m_pLcTrigger->Thaw();
}
