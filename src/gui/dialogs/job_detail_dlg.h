#pragma once
// The job dialog: creates, edits and copies one job with its parameters, its
// triggers and its chained jobs.

#include <array>
#include <cstdint>
#include <functional>
#include <set>
#include <vector>

#include <wx/dialog.h>

#include "core/jobs/job.h"
#include "core/triggers/trigger.h"

class JobParamPage;
class Scheduler;
class wxButton;
class wxCheckBox;
class wxChoice;
class wxDataViewListCtrl;
class wxSimplebook;
class wxTextCtrl;
class wxWindow;

enum class JobDlgMode { NewJob, EditJob, CopyJob };

// Opens the dialog modally. For EditJob and CopyJob `jid` names the job; for
// NewJob it is ignored. On OK the result is applied through the scheduler
// (under its edit lock), the data is marked changed, *resultJid receives the
// JID of the new or edited job, and true is returned. Cancel changes nothing
// and returns false. `runNow` executes a job as the Execute command does
// (the dialog's "Run now" button).
bool ShowJobDetailDlg(wxWindow* parent, Scheduler& scheduler, JobDlgMode mode, std::int32_t jid,
                      std::int32_t* resultJid, const std::function<void(std::int32_t)>& runNow);

class JobDetailDlg : public wxDialog {
public:
    // `job` and `triggers` are the dialog's own copies; nothing reaches the
    // scheduler before Apply. In CopyJob mode the triggers get unused TIDs
    // and no fire times.
    JobDetailDlg(wxWindow* parent, Scheduler& scheduler, JobDlgMode mode, const JobParam& job,
                 const std::vector<TriggerParam>& triggers, const std::function<void(std::int32_t)>& runNow);

    // Checks the form; on success applies it through the scheduler and
    // returns true, else shows why and returns false (the dialog stays).
    bool Apply();
    std::int32_t GetJid() const { return m_job.id; }
    // A TID used by no trigger of the scheduler nor of this dialog.
    std::int64_t UnusedTid() const;
    // Adds a trigger record as the Add button does after its dialog.
    void AddTriggerParam(const TriggerParam& param);

private:
    void BuildTriggerBox(wxWindow* parent, class wxSizer* sizer);
    void RefreshTriggers();
    void OnAddTrigger();
    void OnEditTrigger();
    void OnDeleteTrigger();
    bool Collect(JobParam& param, wxString& message) const;

    Scheduler& m_scheduler;
    JobDlgMode m_mode;
    JobParam m_job;
    std::vector<TriggerParam> m_triggers;
    std::set<std::int64_t> m_editedTids;  // existing triggers changed here
    std::set<std::int64_t> m_deletedTids; // existing triggers removed here
    std::function<void(std::int32_t)> m_runNow;

    wxTextCtrl* m_pDescription = nullptr;
    wxCheckBox* m_pEnable = nullptr;
    wxChoice* m_pKind = nullptr;
    wxSimplebook* m_pPages = nullptr;
    std::vector<JobParamPage*> m_pages;
    wxTextCtrl* m_pAssociated = nullptr;
    wxTextCtrl* m_pInterval = nullptr;
    wxDataViewListCtrl* m_pTriggerList = nullptr;
};
