#pragma once
// The job dialog: creates, edits and copies one job with its parameters, its
// triggers and its chained jobs.

#include <cstdint>
#include <functional>

class Scheduler;
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
