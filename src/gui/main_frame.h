#pragma once
// The main window: the category tree, the job and trigger lists, the toolbar,
// the menus and the status bar over one AppSession, which runs the scheduler
// while the window exists. Closing, quitting and hiding follow the
// preferences hideMainFrmClickCloseBtn, hideTrayIcon and usePassword.

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include <wx/aui/aui.h>
#include <wx/dataview.h>
#include <wx/frame.h>
#include <wx/longlong.h>
#include <wx/timer.h>

#include "core/engine/scheduler_engine.h"
#include "gui/frame/job_view_logic.h"
#include "gui/frame/list_models.h"

#include "gui/gui_user_messages.h"

class AgendaPane;
class AppSession;
class Preference;
enum class JobDlgMode;
class DesktopShell;
class Scheduler;
class wxAuiToolBar;
class wxDataViewTreeCtrl;
class wxSearchCtrl;

class CadrelleFrame : public wxFrame, public EngineHost {
public:
    // `appDir` holds the data files and the log.
    explicit CadrelleFrame(const wxString& appDir);
    ~CadrelleFrame() override;

    // Pause and silent mode from the toolbar and hot keys (with message
    // boxes) and from the command line (without).
    void SwitchPauseMode();
    void SwitchSilentMode();
    void SetPauseMode(bool paused);
    void SetSilentMode(bool silent);
    // The Execute command for job `jid` (or what `origin` names: a hot key,
    // the command line); false and nothing run when no job
    // has that JID.
    bool ExecuteJobById(std::int32_t jid, RunOrigin origin = RunOrigin::ExecuteCommand);
    // Shows, restores and raises the window, through the password when one
    // is set. A window already shown and unlocked is only raised; while a
    // password prompt is open, that prompt comes forward instead of a second.
    // Refusing the prompt keeps the program running hidden, except at start
    // (`atStart`), where the prompt's "Exit" ends it.
    void RestoreMainFrame(bool atStart = false);
    // The tray menu's Exit.
    void TrayExit();
    // The open password prompt, if any.
    wxWindow* OpenPrompt() const;
    // The trigger dialog for the first trigger of job `jid`.
    void OpenTriggerDialogForJob(std::int32_t jid);
    void ToggleJobEnable(std::int32_t jid);
    Scheduler& GetScheduler();
    // The user's preferences, which the session owns.
    Preference& Prefs();
    SchedulerEngine& GetEngine();
    AppSession& Session() { return *m_pSession; }

    // The window closes for good even with hideMainFrmClickCloseBtn (a
    // signal, the end of the session).
    void CloseForGood();
    // The job list's rows as shown, for the tests.
    const JobListModel& JobModel() const { return *m_jobModel; }
    const TriggerListModel& TriggerModel() const { return *m_triggerModel; }

    // EngineHost
    void WakeMainThread() override;
    void JobStarted(const Job& job) override;
    void AdvanceNotice(const Job& job) override;

    // Command handlers, public so that keyboard, menus and tests reach the
    // same code.
    void Onm_pTbiNewJobClick(wxCommandEvent& event);
    void Onm_pTbiEditJobClick(wxCommandEvent& event);
    void Onm_pTbiEnableJobClick(wxCommandEvent& event);
    void Onm_pTbiDelJobClick(wxCommandEvent& event);
    void Onm_pTbiTestExecClick(wxCommandEvent& event);
    void Onm_pTbiResetTriggerClick(wxCommandEvent& event);
    void Onm_pTbiBlockClick(wxCommandEvent& event);
    void Onm_pTbiPauseClick(wxCommandEvent& event);
    void Onm_pTbiSettingClick(wxCommandEvent& event);
    void OnAbout(wxCommandEvent& event);
    void OnPpmCopyJobClick(wxCommandEvent& event);
    void OnPpmEnableAllClick(wxCommandEvent& event);
    void OnPpmDisableAllClick(wxCommandEvent& event);
    void OnChooseLanguage(wxCommandEvent& event);
    void OnQuit(wxCommandEvent& event);
    // A click on job list header `column`.
    void SortByColumn(int column);
    // The header arrow on the column the job list is ordered by.
    void ShowSortIndicator();
    // Selects category number `index` (0 = "All Jobs", in tree order).
    void SelectCategory(int index);
    // Selects job `jid` in the job list; false when it is not shown.
    bool SelectJob(std::int32_t jid);
    void SetFilterText(const wxString& text);
    // Rebuilds the rows from the scheduler and repaints.
    void RefreshViews();
    // The Agenda pane (View > Agenda).
    void ShowAgenda(bool show);
    bool IsAgendaShown();
    AgendaPane& Agenda() { return *m_pAgenda; }
    // File > Import crontab..., Export jobs..., Import jobs....
    void OnImportCrontab(wxCommandEvent& event);
    void OnExportJobs(wxCommandEvent& event);
    void OnImportJobs(wxCommandEvent& event);

private:
    void BuildMenus();
    void BuildToolBar();
    void BuildCategoryTree(wxWindow* parent);
    void BuildJobList(wxWindow* parent);
    void BuildTriggerList(wxWindow* parent);
    void BuildAgendaPane();
    // Orders the job list anew and keeps the selection: over `rows` (all
    // jobs, just read) when given, else over the rows it holds.
    void ApplyOrder(std::optional<std::vector<JobRow>> rows = std::nullopt);
    void UpdateStatusBar();
    void SaveLayout();
    // The selected job's row, or null.
    const JobRow* SelectedRow() const;
    std::int32_t SelectedJid() const;
    // The selected job's JID, or -1 after "Please select a job.".
    std::int32_t RequireSelectedJid();
    // The job with this JID, held while the caller uses it; null when none.
    std::shared_ptr<Job> LookUpJob(std::int32_t jid) const;
    // The job dialog in `mode` on job `jid` (-1 for a new job); what it
    // saved is shown and selected. `what` names the change in the log.
    void OpenJobDialog(JobDlgMode mode, std::int32_t jid, const char* what);
    // The trigger dialog on trigger `tid`; none when it is negative.
    void OpenTriggerDialog(std::int64_t tid);

    void OnClose(wxCloseEvent& event);
    void OnIconize(wxIconizeEvent& event);
    void OnSessionTick(wxTimerEvent& event);
    void Onm_pTcCategorySelectionChanged(wxDataViewEvent& event);
    void Onm_pLcJobItemActivated(wxDataViewEvent& event);
    void Onm_pLcJobItemRClick(wxDataViewEvent& event);
    void Onm_pLcJobColumnClick(wxDataViewEvent& event);
    void Onm_pLcJobSelectionChanged(wxDataViewEvent& event);
    void Onm_pLcTriggerItemActivated(wxDataViewEvent& event);
    void OnCharHook(wxKeyEvent& event);

    std::unique_ptr<AppSession> m_pSession;
    std::unique_ptr<DesktopShell> m_pShell;
    wxAuiManager m_mgr;
    wxAuiToolBar* m_pToolBar = nullptr;
    wxDataViewTreeCtrl* m_pTcCategory = nullptr;
    wxDataViewCtrl* m_pLcJob = nullptr;
    wxDataViewCtrl* m_pLcTrigger = nullptr;
    wxSearchCtrl* m_pFilter = nullptr;
    AgendaPane* m_pAgenda = nullptr;
    std::unique_ptr<wxMenu> m_pPopupMenu;
    wxObjectDataPtr<JobListModel> m_jobModel;
    wxObjectDataPtr<TriggerListModel> m_triggerModel;
    std::vector<std::pair<wxDataViewItem, Category>> m_categories;
    Category m_category;
    int m_nCurrTcIdx = 0;
    int m_nSortCol = 0;
    long m_nSortDir = kSortDefault;
    wxString m_strFilter;
    wxString m_strStartTime;
    wxString m_strLastStatus;
    GuiUserMessages m_userMessages;
    wxTimer m_timerSession;
    // A job started since the last refresh (set on the main thread).
    bool m_bViewsDirty = false;
    bool m_bPendingPause = false;
    bool m_bForceClose = false;
    bool m_bToldWhyNotHidden = false;
    // One password prompt at a time: a second request raises the first.
    bool m_bPromptOpen = false;
};
