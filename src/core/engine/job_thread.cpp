#include "core/engine/job_thread.h"

#include <algorithm>

#include <wx/log.h>
#include <wx/thread.h>

#include "core/core_log.h"
#include "core/engine/engine_mailbox.h"
#include "core/history/run_report.h"
#include "core/jobs/job.h"
#include "core/session/session_context.h"

namespace {

// The record of a run before its outcome: not run until it ran.
RunRecord NotRunRecord(const Job& job, const RunCause& cause, int delayMs, SessionContext& context)
{
    RunRecord record = RecordFor(cause, job.GetId(), job.GetType(), job.GetDescription());
    if (record.dueMs == 0)
        record.dueMs = context.GetClock().NowMs();
    record.dueMs += delayMs > 0 ? delayMs : 0;
    record.outcome = RunOutcome::NotRun;
    return record;
}

void RunJob(const JobRun& run, EngineMailbox& mailbox, SessionContext& context)
{
    const Job& job = *run.job;
    RunRecord record = NotRunRecord(job, run.cause, run.delayMs, context);
    // A run fired ahead of its moment waits for it, so that the job never
    // starts before its second.
    const std::int64_t dueMs = run.cause.dueMs;
    const std::int64_t untilDue = dueMs > 0 ? std::max<std::int64_t>(0, dueMs - context.GetClock().ReadMs()) : 0;
    const std::int64_t waitMs = untilDue + std::max(0, run.delayMs);
    // Shutdown cuts the wait short, and the job then does not run; a closing
    // program starts no more jobs.
    if (mailbox.IsClosed() || (waitMs > 0 && !mailbox.SleepUnlessClosed(static_cast<int>(waitMs)))) {
        record.reason = NotRunReason::ProgramEnded;
    } else {
        wxLogMessage("%d ->> [JID_%d, ThreadID_%zu] %s", LogMs(), job.GetId(),
                     static_cast<std::size_t>(wxThread::GetCurrentId()), job.GetSummary());
        const JobKind* kind = FindJobKind(job.GetType());
        if (mailbox.IsSilent() && kind && kind->heldInSilentMode) {
            record.reason = NotRunReason::SilentMode;
        } else {
            RunReport report;
            record.startMs = context.GetClock().NowMs();
            {
                const RunReportScope scope(report);
                context.Actions().Run(job, context);
            }
            record.endMs = context.GetClock().NowMs();
            record.outcome = report.outcome;
            record.details = std::move(report.details);
            record.output = std::move(report.output);
        }
    }
    mailbox.ReportUnlessAbandoned([&] { context.Recorder().Record(std::move(record)); });
    // Chaining runs for every thread that reaches its end, a held-back job
    // included. The list is the copy's own, so edits cannot disturb it.
    for (std::int32_t jid : job.GetAssociatedJids()) {
        if (jid == job.GetId())
            continue;  // never straight back to itself
        RunCause chained;
        chained.origin = RunOrigin::Chain;
        chained.sourceJid = job.GetId();
        chained.dueMs = context.GetClock().NowMs();
        EngineRequest request;
        request.kind = EngineRequest::Kind::RunJobById;
        request.jid = jid;
        request.delayMs = job.GetJobInterval();
        request.cause = chained;
        if (!mailbox.Post(std::move(request))) {
            RunRecord dropped = RecordFor(chained, jid, 0, {});
            dropped.dueMs += job.GetJobInterval() > 0 ? job.GetJobInterval() : 0;
            dropped.outcome = RunOutcome::NotRun;
            dropped.reason = NotRunReason::ProgramEnded;
            mailbox.ReportUnlessAbandoned([&] { context.Recorder().Record(std::move(dropped)); });
        }
    }
    mailbox.ReportUnlessAbandoned([&job] {
        wxLogMessage("%d <<- [JID_%d, ThreadID_%zu] Exit", LogMs(), job.GetId(),
                     static_cast<std::size_t>(wxThread::GetCurrentId()));
    });
}

}  // namespace

std::thread StartJobThread(JobRun run, std::uint64_t token, std::shared_ptr<EngineMailbox> mailbox,
                           std::shared_ptr<SessionContext> context)
{
    return std::thread([run = std::move(run), token, mailbox, context]() {
        RunJob(run, *mailbox, *context);
        mailbox->JobThreadEnded(token);
    });
}
