#include "desktop/jobs/system_jobs.h"

#include <wx/log.h>

#include "core/core_log.h"
#include "core/jobs/job.h"
#include "core/jobs/job_actions.h"
#include "core/translate.h"
#include "core/user_messages.h"
#include "desktop/platform/display_power.h"
#include "desktop/platform/session_control.h"
#include "desktop/platform/trash.h"

namespace {

wxString FromUtf8(const std::string& text)
{
    return wxString::FromUTF8(text.c_str());
}

// Logs the outcome and, on failure, shows `failureText` with the error
// number and, below it, why.
void Report(Job& job, const char* what, const SystemOutcome& outcome, const char* failureText)
{
    const int jid = static_cast<int>(job.GetId());
    if (outcome.ok) {
        if (outcome.reason.empty())
            wxLogMessage("%d --- [JID_%d] %s done", LogMs(), jid, what);
        else
            wxLogMessage("%d --- [JID_%d] %s done: %s", LogMs(), jid, what, FromUtf8(outcome.reason));
        return;
    }
    wxLogMessage("%d --- [JID_%d] %s failed (error %d): %s", LogMs(), jid, what, outcome.code,
                 FromUtf8(outcome.reason));
    const wxString text = TranslateFromAnyThread(failureText) + wxString::Format("%d", outcome.code) + "\n" +
                          FromUtf8(outcome.reason);
    GetUserMessages().ShowMessage(text, "Cadrelle");
}

void LockWorkstation(Job& job)
{
    Report(job, "Lock Workstation", LockOwnSession(), wxTRANSLATE("LockWorkStation failed! Error code: "));
}

// Where the display cannot be switched off the user is told what is
// missing; where it works nothing is shown.
void ShutoffDisplay(Job& job)
{
    const SystemOutcome outcome = SwitchDisplayOff();
    const int jid = static_cast<int>(job.GetId());
    if (outcome.ok) {
        wxLogMessage("%d --- [JID_%d] Shutoff Display done", LogMs(), jid);
        return;
    }
    wxLogMessage("%d --- [JID_%d] Shutoff Display failed (error %d): %s", LogMs(), jid, outcome.code,
                 FromUtf8(outcome.reason));
    GetUserMessages().ShowMessage(job.GetSummary() + "\n\n" + TranslateFromAnyThread("Shutoff Display failed.") +
                                      "\n" + FromUtf8(outcome.reason),
                                  "Cadrelle");
}

void EmptyRecyclebin(Job& job)
{
    const SystemOutcome outcome = EmptyTrash();
    const int jid = static_cast<int>(job.GetId());
    if (outcome.ok) {
        wxLogMessage("%d --- [JID_%d] Empty Recyclebin done", LogMs(), jid);
        GetUserMessages().ShowNotice(job.GetId(),
                                     job.GetSummary() + TranslateFromAnyThread("\nEmpty RecycleBin successed."));
        return;
    }
    wxLogMessage("%d --- [JID_%d] Empty Recyclebin failed (error %d): %s", LogMs(), jid, outcome.code,
                 FromUtf8(outcome.reason));
    GetUserMessages().ShowMessage(job.GetSummary() + TranslateFromAnyThread("\n\nEmpty RecycleBin failed.") + "\n" +
                                      FromUtf8(outcome.reason),
                                  "Cadrelle");
}

void Suspend(Job& job)
{
    Report(job, "Suspend", RequestPowerAction(PowerAction::Suspend), wxTRANSLATE("Suspend failed! Error code: "));
}

void Hibernates(Job& job)
{
    Report(job, "Hibernates", RequestPowerAction(PowerAction::Hibernate), wxTRANSLATE("Hibernates failed! Error code: "));
}

void Shutdown(Job& job)
{
    Report(job, "Shutdown", RequestPowerAction(PowerAction::PowerOff), wxTRANSLATE("Shutdown failed! Error code: "));
}

void Reboot(Job& job)
{
    Report(job, "Reboot", RequestPowerAction(PowerAction::Reboot), wxTRANSLATE("Reboot failed! Error code: "));
}

void Logoff(Job& job)
{
    Report(job, "Logoff", LogOffOwnSession(), wxTRANSLATE("Logoff failed! Error code: "));
}

}  // namespace

void RegisterSystemJobActions()
{
    SetJobAction(NJobTypeLockWorkstation, LockWorkstation);
    SetJobAction(NJobTypeShutoffDisplay, ShutoffDisplay);
    SetJobAction(NJobTypeEmptyRecyclebin, EmptyRecyclebin);
    SetJobAction(NJobTypeSuspend, Suspend);
    SetJobAction(NJobTypeHibernates, Hibernates);
    SetJobAction(NJobTypeShutdown, Shutdown);
    SetJobAction(NJobTypeReboot, Reboot);
    SetJobAction(NJobTypeLogoff, Logoff);
}
