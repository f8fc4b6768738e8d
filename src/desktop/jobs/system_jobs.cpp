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
#include "core/session/session_context.h"

namespace {

wxString FromUtf8(const std::string& text)
{
    return wxString::FromUTF8(text.c_str());
}

// Logs the outcome and, on failure, shows `failureText` with the error
// number and, below it, why.
void Report(const Job& job, SessionContext& context, const char* what, const SystemOutcome& outcome, const char* failureText)
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
    context.Messages().ShowMessage(text, "Cadrelle");
}

void LockWorkstation(const Job& job, SessionContext& context)
{
    Report(job, context, "Lock Workstation", LockOwnSession(), wxTRANSLATE("LockWorkStation failed! Error code: "));
}

// Where the display cannot be switched off the user is told what is
// missing; where it works nothing is shown.
void ShutoffDisplay(const Job& job, SessionContext& context)
{
    const SystemOutcome outcome = SwitchDisplayOff();
    const int jid = static_cast<int>(job.GetId());
    if (outcome.ok) {
        wxLogMessage("%d --- [JID_%d] Shutoff Display done", LogMs(), jid);
        return;
    }
    wxLogMessage("%d --- [JID_%d] Shutoff Display failed (error %d): %s", LogMs(), jid, outcome.code,
                 FromUtf8(outcome.reason));
    context.Messages().ShowMessage(job.GetSummary() + "\n\n" + TranslateFromAnyThread("Shutoff Display failed.") +
                                      "\n" + FromUtf8(outcome.reason),
                                  "Cadrelle");
}

void EmptyRecyclebin(const Job& job, SessionContext& context)
{
    const SystemOutcome outcome = EmptyTrash();
    const int jid = static_cast<int>(job.GetId());
    if (outcome.ok) {
        wxLogMessage("%d --- [JID_%d] Empty Recyclebin done", LogMs(), jid);
        context.Messages().ShowNotice(job.GetId(),
                                     job.GetSummary() + TranslateFromAnyThread("\nEmpty RecycleBin successed."));
        return;
    }
    wxLogMessage("%d --- [JID_%d] Empty Recyclebin failed (error %d): %s", LogMs(), jid, outcome.code,
                 FromUtf8(outcome.reason));
    context.Messages().ShowMessage(job.GetSummary() + TranslateFromAnyThread("\n\nEmpty RecycleBin failed.") + "\n" +
                                      FromUtf8(outcome.reason),
                                  "Cadrelle");
}

void Suspend(const Job& job, SessionContext& context)
{
    Report(job, context, "Suspend", RequestPowerAction(PowerAction::Suspend), wxTRANSLATE("Suspend failed! Error code: "));
}

void Hibernates(const Job& job, SessionContext& context)
{
    Report(job, context, "Hibernates", RequestPowerAction(PowerAction::Hibernate), wxTRANSLATE("Hibernates failed! Error code: "));
}

void Shutdown(const Job& job, SessionContext& context)
{
    Report(job, context, "Shutdown", RequestPowerAction(PowerAction::PowerOff), wxTRANSLATE("Shutdown failed! Error code: "));
}

void Reboot(const Job& job, SessionContext& context)
{
    Report(job, context, "Reboot", RequestPowerAction(PowerAction::Reboot), wxTRANSLATE("Reboot failed! Error code: "));
}

void Logoff(const Job& job, SessionContext& context)
{
    Report(job, context, "Logoff", LogOffOwnSession(), wxTRANSLATE("Logoff failed! Error code: "));
}

}  // namespace

void RegisterSystemJobActions(JobActions& actions)
{
    actions.Set(NJobTypeLockWorkstation, LockWorkstation);
    actions.Set(NJobTypeShutoffDisplay, ShutoffDisplay);
    actions.Set(NJobTypeEmptyRecyclebin, EmptyRecyclebin);
    actions.Set(NJobTypeSuspend, Suspend);
    actions.Set(NJobTypeHibernates, Hibernates);
    actions.Set(NJobTypeShutdown, Shutdown);
    actions.Set(NJobTypeReboot, Reboot);
    actions.Set(NJobTypeLogoff, Logoff);
}
