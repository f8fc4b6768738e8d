#include "core/history/run_record.h"

#include "core/triggers/trigger_kinds.h"

wxString OutcomeWord(RunOutcome outcome)
{
    switch (outcome) {
    case RunOutcome::Succeeded:
        return _("Succeeded");
    case RunOutcome::Failed:
        return _("Failed");
    case RunOutcome::NotRun:
        return _("Not run");
    case RunOutcome::TimedOut:
        return _("Timed out");
    }
    return wxString::Format("%d", static_cast<int>(outcome));
}

wxString NotRunReasonText(NotRunReason reason)
{
    switch (reason) {
    case NotRunReason::None:
        return {};
    case NotRunReason::Paused:
        return _("Pause mode was on");
    case NotRunReason::SilentMode:
        return _("Silent mode holds back this kind of job");
    case NotRunReason::MissedSkipped:
        return _("Missed while Cadrelle was not running or the computer slept; skipped");
    case NotRunReason::MissedMadeUp:
        return _("Missed while Cadrelle was not running or the computer slept; made up once");
    case NotRunReason::StillRunning:
        return _("Still running from the previous time");
    case NotRunReason::ChainedJobGone:
        return _("The chained job no longer exists");
    case NotRunReason::ProgramEnded:
        return _("Cadrelle ended before the run was due");
    }
    return wxString::Format("%d", static_cast<int>(reason));
}

wxString OriginText(const RunRecord& record)
{
    switch (record.origin) {
    case RunOrigin::Trigger:
        return wxString::Format(_("Trigger TID_%d (%s)"), record.tid,
                                record.triggerKind >= 0 ? TriggerTypeName(static_cast<std::uint32_t>(record.triggerKind))
                                                        : wxString("?"));
    case RunOrigin::Chain:
        return wxString::Format(_("Chained by JID_%d"), record.sourceJid);
    case RunOrigin::ExecuteCommand:
        return _("Execute command");
    case RunOrigin::HotKey:
        return _("Hot key");
    case RunOrigin::CommandLine:
        return _("Command line");
    }
    return wxString::Format("%d", static_cast<int>(record.origin));
}

wxString RunSummary(const RunRecord& record)
{
    const wxString details = wxString::FromUTF8(record.details);
    if (record.outcome != RunOutcome::NotRun)
        return details;
    const wxString reason = NotRunReasonText(record.reason);
    return details.empty() ? reason : reason + ": " + details;
}

RunRecord RecordFor(const RunCause& cause, std::int32_t jid, std::uint32_t kind, const wxString& description)
{
    RunRecord record;
    record.jid = jid;
    record.jobKind = kind;
    record.description = description.utf8_string();
    record.origin = cause.origin;
    record.tid = cause.tid;
    record.triggerKind = cause.triggerKind;
    record.sourceJid = cause.sourceJid;
    record.dueMs = cause.dueMs;
    return record;
}
