#include "desktop/jobs/reminder_job.h"

#include <wx/log.h>

#include "core/core_log.h"
#include "core/jobs/job.h"
#include "core/jobs/job_actions.h"
#include "core/translate.h"
#include "core/user_messages.h"
#include "desktop/platform/desktop_notifier.h"
#include "core/session/session_context.h"

namespace {

void ShowReminder(const Job& job, SessionContext& context)
{
    const wxString text = job.GetParamAt(0);
    const int jid = job.GetId();
    if (job.GetParamAt(1) == "1") {
        context.Messages().ShowReminder(jid, text, true);
        return;
    }
    const NotifyOutcome outcome = SendDesktopNotification(TranslateFromAnyThread("Reminder"), text);
    if (outcome.ok) {
        wxLogMessage("%d --- [JID_%d] Reminder shown as a desktop notification", LogMs(), jid);
        return;
    }
    wxLogMessage("%d --- [JID_%d] Reminder shown in a window: %s", LogMs(), jid, outcome.reason);
    // Still a normal reminder: the log and the window must not call it important.
    context.Messages().ShowReminder(jid, text, false);
}

}  // namespace

void RegisterReminderJobAction(JobActions& actions)
{
    actions.Set(NJobTypeReminder, ShowReminder);
}
