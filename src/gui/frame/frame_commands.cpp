// The frame's commands on jobs and its pause and silent modes.

#include <wx/log.h>
#include <wx/aboutdlg.h>
#include <wx/aui/auibar.h>

#include "core/core_log.h"
#include "core/prefs/preference.h"
#include "core/scheduler.h"
#include "desktop/session/app_session.h"
#include "gui/dialogs/job_detail_dlg.h"
#include "gui/dialogs/language_dlg.h"
#include "gui/dialogs/setting_dlg.h"
#include "gui/dialogs/trigger_dlg.h"
#include "gui/frame/frame_shared.h"
#include "gui/main_frame.h"
#include "gui/shell/desktop_shell.h"

using namespace frame;

// --- commands ---------------------------------------------------------------

void CadrelleFrame::OpenJobDialog(JobDlgMode mode, std::int32_t jid, const char* what)
{
    std::int32_t result = jid;
    if (!ShowJobDetailDlg(this, m_pSession->GetScheduler(), mode, jid, &result,
                          [this](std::int32_t id) { ExecuteJobById(id); }))
        return;
    wxLogMessage("%d ### %s => [JID_%d]", LogMs(), what, result);
    RefreshViews();
    SelectJob(result);
}

void CadrelleFrame::Onm_pTbiNewJobClick(wxCommandEvent&)
{
    wxLogMessage("%d *** CadrelleFrame::Onm_pTbiNewJobClick", LogMs());
    OpenJobDialog(JobDlgMode::NewJob, -1, "Add New Job");
}

void CadrelleFrame::Onm_pTbiEditJobClick(wxCommandEvent&)
{
    wxLogMessage("%d *** CadrelleFrame::Onm_pTbiEditJobClick", LogMs());
    const std::int32_t jid = RequireSelectedJid();
    if (jid >= 0)
        OpenJobDialog(JobDlgMode::EditJob, jid, "Edit Job");
}

void CadrelleFrame::OnPpmCopyJobClick(wxCommandEvent&)
{
    wxLogMessage("%d *** CadrelleFrame::OnPpmCopyJobClick", LogMs());
    const std::int32_t jid = RequireSelectedJid();
    if (jid >= 0)
        OpenJobDialog(JobDlgMode::CopyJob, jid, "Copy Job");
}

void CadrelleFrame::ToggleJobEnable(std::int32_t jid)
{
    const Scheduler::JobPtr job = LookUpJob(jid);
    if (!job)
        return;
    const bool enable = !job->IsEnabled();
    m_pSession->GetScheduler().SetJobEnable(job.get(), enable);
    wxLogMessage("%d ### %s Job => [JID_%d]", LogMs(), enable ? "Enable" : "Disable", jid);
    RefreshViews();
}

void CadrelleFrame::Onm_pTbiEnableJobClick(wxCommandEvent&)
{
    wxLogMessage("%d *** CadrelleFrame::Onm_pTbiEnableJobClick", LogMs());
    const std::int32_t jid = RequireSelectedJid();
    if (jid >= 0)
        ToggleJobEnable(jid);
}

void CadrelleFrame::Onm_pTbiDelJobClick(wxCommandEvent&)
{
    wxLogMessage("%d *** CadrelleFrame::Onm_pTbiDelJobClick", LogMs());
    const std::int32_t jid = RequireSelectedJid();
    const Scheduler::JobPtr job = jid < 0 ? nullptr : LookUpJob(jid);
    // The question names the job on a line of its own.
    if (!job || !Ask(this, _("Do you want to delete?") + "\n" + job->GetDescription()))
        return;
    m_pSession->GetScheduler().DeleteJob(job.get());
    wxLogMessage("%d ### Del Job => [JID_%d]", LogMs(), jid);
    RefreshViews();
}

Scheduler::JobPtr CadrelleFrame::LookUpJob(std::int32_t jid) const
{
    auto lock = m_pSession->GetScheduler().ReadLock();
    return m_pSession->GetScheduler().GetJobById(jid);
}

bool CadrelleFrame::ExecuteJobById(std::int32_t jid, RunOrigin origin)
{
    const Scheduler::JobPtr job = LookUpJob(jid);
    // Runs whether the job is enabled or not: the user asked for it.
    RunCause cause;
    cause.origin = origin;
    if (!job || !m_pSession->GetEngine().RunJob(job, cause))
        return false;
    m_pSession->GetEngine().ProcessRequests();
    return true;
}

void CadrelleFrame::Onm_pTbiTestExecClick(wxCommandEvent&)
{
    wxLogMessage("%d *** CadrelleFrame::Onm_pTbiTestExecClick", LogMs());
    const std::int32_t jid = RequireSelectedJid();
    if (jid >= 0)
        ExecuteJobById(jid);
}

void CadrelleFrame::Onm_pTbiResetTriggerClick(wxCommandEvent&)
{
    wxLogMessage("%d *** CadrelleFrame::Onm_pTbiResetTriggerClick", LogMs());
    const std::size_t reset = m_pSession->GetEngine().ResetWithStartTriggers();
    RefreshViews();
    Tell(this, wxString::Format(_("%zd WithStart triggers reset."), reset));
}

void CadrelleFrame::OnPpmEnableAllClick(wxCommandEvent&)
{
    wxLogMessage("%d *** CadrelleFrame::OnPpmEnableAllClick", LogMs());
    if (!Ask(this, _("Do you want to enable all jobs?")))
        return;
    m_pSession->GetScheduler().EnableAllJobs(true);
    RefreshViews();
}

void CadrelleFrame::OnPpmDisableAllClick(wxCommandEvent&)
{
    wxLogMessage("%d *** CadrelleFrame::OnPpmDisableAllClick", LogMs());
    if (!Ask(this, _("Do you want to disable all jobs?")))
        return;
    m_pSession->GetScheduler().EnableAllJobs(false);
    RefreshViews();
}

void CadrelleFrame::OpenTriggerDialogForJob(std::int32_t jid)
{
    std::int64_t tid = -1;
    {
        auto lock = m_pSession->GetScheduler().ReadLock();
        const Scheduler::JobPtr job = m_pSession->GetScheduler().GetJobById(jid);
        if (job && !job->GetTriggerIds().empty())
            tid = job->GetTriggerIds().front();
    }
    OpenTriggerDialog(tid);
}

void CadrelleFrame::Onm_pLcTriggerItemActivated(wxDataViewEvent& event)
{
    wxLogMessage("%d *** CadrelleFrame::Onm_pLcTriggerItemActivated", LogMs());
    OpenTriggerDialog(m_triggerModel->TidAt(m_triggerModel->GetRow(event.GetItem())));
}

void CadrelleFrame::OpenTriggerDialog(std::int64_t tid)
{
    if (tid < 0)
        return;
    if (!ShowTriggerDlgForTrigger(this, m_pSession->GetScheduler(), tid)) {
        Tell(this, _("Nothing to be changed!"));
        return;
    }
    RefreshViews();
}

void CadrelleFrame::Onm_pTbiSettingClick(wxCommandEvent&)
{
    wxLogMessage("%d *** CadrelleFrame::OnSetting", LogMs());
    SettingDlgContext context;
    context.hotKeyStates = m_pShell->HotKeyStates();
    context.trayNote = m_pShell->TrayNote();
    ShowSettingDlg(this, Prefs(), context);
}

void CadrelleFrame::OnChooseLanguage(wxCommandEvent&)
{
    wxLogMessage("%d *** CadrelleFrame::OnChooseLanguage", LogMs());
    ShowLanguageChooser(this, Prefs());
}

void CadrelleFrame::OnAbout(wxCommandEvent&)
{
    wxLogMessage("%d *** CadrelleFrame::OnAbout", LogMs());
    wxAboutDialogInfo info;
    info.SetName(kCaption);
    info.SetVersion(CADRELLE_VERSION);
    info.SetDescription(_("A desktop task scheduler: jobs run by time, interval, idle time or cron triggers."));
    info.SetIcon(GetIcons().GetIcon(64));
    wxAboutBox(info, this);
}

// --- modes ------------------------------------------------------------------

void CadrelleFrame::SwitchPauseMode()
{
    // Before the checkers start nothing runs to be paused.
    if (!m_pSession->GetEngine().IsStarted() || !m_pToolBar->GetToolEnabled(ID_TBI_PAUSE)) {
        m_pToolBar->ToggleTool(ID_TBI_PAUSE, m_pSession->GetEngine().IsPaused());
        m_pToolBar->Refresh();
        return;
    }
    const bool paused = !m_pSession->GetEngine().IsPaused();
    SetPauseMode(paused);
    if (paused)
        Tell(this, _("In Pause Mode, all trigger will be pause fire."));
    else
        Tell(this, _("Pause Mode is OFF: the triggers fire again."));
}

void CadrelleFrame::SetPauseMode(bool paused)
{
    SchedulerEngine& engine = m_pSession->GetEngine();
    if (!engine.IsStarted())
        m_bPendingPause = paused;  // applied at the first tick
    else if (engine.IsPaused() != paused)
        engine.TogglePause();
    m_pToolBar->ToggleTool(ID_TBI_PAUSE, paused);
    m_pToolBar->Refresh();
    UpdateStatusBar();
    wxLogMessage("%d *** CadrelleFrame::OnOffPauseMode -> %s", LogMs(), paused ? "Pause" : "Running");
}

void CadrelleFrame::SwitchSilentMode()
{
    const bool silent = !m_pSession->GetEngine().IsSilentMode();
    SetSilentMode(silent);
    if (silent) {
        wxString text = _("Silent Mode: ON") + "\n\n" +
                        _("In Slient Mode, the following job type will not be executed:\n");
        for (const char* kind : {"Mouse Click", "Send Key", "Exec Script File", "Exec DOS Command", "Open Folder",
                                 "Open File", "Open URL", "Reminder"})
            text += wxGetTranslation(kind) + "\n";
        Tell(this, text);
    } else {
        Tell(this, _("Silent Mode: OFF"));
    }
}

void CadrelleFrame::SetSilentMode(bool silent)
{
    wxLogMessage("%d *** CadrelleFrame::Onm_pTbiBlockClick", LogMs());
    m_pSession->GetEngine().SetSilentMode(silent);
    m_pToolBar->ToggleTool(ID_TBI_BLOCK, silent);
    m_pToolBar->Refresh();
    UpdateStatusBar();
}

void CadrelleFrame::Onm_pTbiBlockClick(wxCommandEvent&)
{
    SwitchSilentMode();
}

void CadrelleFrame::Onm_pTbiPauseClick(wxCommandEvent&)
{
    wxLogMessage("%d *** CadrelleFrame::Onm_pTbiPauseClick", LogMs());
    SwitchPauseMode();
}
