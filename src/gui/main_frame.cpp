#include "gui/main_frame.h"

#include <wx/listctrl.h>
#include <wx/sizer.h>
#include <wx/splitter.h>

#include "core/scheduler.h"

namespace {

enum { ID_LISTCTRL_JOBS = wxID_HIGHEST + 1, ID_LISTCTRL_TRIGGERS };

wxString FormatMoment(const wxDateTime& dt)
{
    return dt.IsValid() ? dt.Format("%Y-%m-%d %H:%M:%S") : wxString("-");
}

}  // namespace

CadrelleFrame::CadrelleFrame(const wxString& appDir)
    : wxFrame(nullptr, wxID_ANY, "Cadrelle", wxDefaultPosition, wxSize(900, 560)),
      m_pScheduler(std::make_unique<Scheduler>(appDir))
{
    const DataLoadReport report = m_pScheduler->LoadSchedulerData();

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
    wxString status = wxString::Format("%zu jobs, %zu triggers", m_pScheduler->Jobs().size(),
                                       m_pScheduler->Triggers().size());
    if (!report.keptCopies.empty())
        status += wxString::Format(" - an unreadable data file was kept as %s", report.keptCopies.front());
    SetStatusText(status);
}

CadrelleFrame::~CadrelleFrame()
{
    m_pScheduler->SetDataChanged(true);
    m_pScheduler->SaveSchedulerData(true);
}

void CadrelleFrame::FillJobList()
{
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
}
