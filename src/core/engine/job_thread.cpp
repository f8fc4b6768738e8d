#include "core/engine/job_thread.h"

#include <system_error>
#include <thread>

#include <wx/log.h>
#include <wx/thread.h>

#include "core/core_log.h"
#include "core/engine/engine_mailbox.h"
#include "core/history/run_report.h"
#include "core/jobs/job.h"
#include "core/session/session_context.h"

namespace {

// What the run did, or why it did not run, for the history.
RunRecord NotRunRecord(const Job& job, const RunCause& cause, int delayMs, SessionContext& context)
{
    RunRecord record = RecordFor(cause, job.GetId(), job.GetType(), job.GetDescription());
    if (record.dueMs == 0)
        record.dueMs = context.GetClock().NowMs();
    record.dueMs += delayMs > 0 ? delayMs : 0;
    record.outcome = RunOutcome::NotRun;
    return record;
}

void RunJob(const std::shared_ptr<Job>& job, int delayMs, const RunCause& cause,
            const std::shared_ptr<EngineMailbox>& mailbox, SessionContext& context)
{
    RunRecord record = NotRunRecord(*job, cause, delayMs, context);
    // A closing program starts no more jobs.
    if (mailbox->IsClosed()) {
        record.reason = NotRunReason::ProgramEnded;
    } else {
        const JobKind* kind = FindJobKind(job->GetType());
        if (mailbox->IsSilent() && kind && kind->heldInSilentMode) {
            record.reason = NotRunReason::SilentMode;
        } else if (delayMs > 0 && !mailbox->SleepUnlessClosed(delayMs)) {
            // Shutdown cuts the delay short, and the job then does not run.
            record.reason = NotRunReason::ProgramEnded;
        } else {
            RunReport report;
            record.startMs = context.GetClock().NowMs();
            {
                const RunReportScope scope(report);
                context.Actions().Run(*job, context);
            }
            record.endMs = context.GetClock().NowMs();
            record.outcome = report.outcome;
            record.details = std::move(report.details);
            record.output = std::move(report.output);
        }
    }
    mailbox->ReportUnlessAbandoned([&] { context.Recorder().Record(std::move(record)); });
    // Chaining runs for every thread that reaches its end, a suppressed job
    // included. The list is the copy's own, so edits cannot disturb it.
    for (std::int32_t jid : job->GetAssociatedJids()) {
        if (jid == job->GetId())
            continue;  // never straight back to itself
        RunCause chained;
        chained.origin = RunOrigin::Chain;
        chained.sourceJid = job->GetId();
        chained.dueMs = context.GetClock().NowMs();
        EngineRequest request;
        request.kind = EngineRequest::Kind::RunJobById;
        request.jid = jid;
        request.delayMs = job->GetJobInterval();
        request.cause = chained;
        if (!mailbox->Post(std::move(request))) {
            RunRecord dropped = RecordFor(chained, jid, 0, {});
            dropped.dueMs += job->GetJobInterval() > 0 ? job->GetJobInterval() : 0;
            dropped.outcome = RunOutcome::NotRun;
            dropped.reason = NotRunReason::ProgramEnded;
            mailbox->ReportUnlessAbandoned([&] { context.Recorder().Record(std::move(dropped)); });
        }
    }
    mailbox->ReportUnlessAbandoned([&job] {
        wxLogMessage("%d <<- [JID_%d, ThreadID_%zu] Exit", LogMs(), job->GetId(),
                     static_cast<std::size_t>(wxThread::GetCurrentId()));
    });
}

}  // namespace

std::size_t StartJobThread(std::shared_ptr<Job> job, int delayMs, const RunCause& cause,
                           std::shared_ptr<EngineMailbox> mailbox, std::shared_ptr<SessionContext> context)
{
    const std::uint64_t token = mailbox->JobThreadStarted(job->GetId());
    try {
        std::thread thread([job, delayMs, cause, mailbox, token, context]() {
            RunJob(job, delayMs, cause, mailbox, *context);
            mailbox->JobThreadEnded(token);
        });
        // The native handle is the id the thread itself logs with (no
        // waiting for the new thread to be scheduled).
        const auto id = static_cast<std::size_t>(thread.native_handle());
        thread.detach();
        return id;
    } catch (const std::system_error&) {
        mailbox->JobThreadEnded(token);
        return 0;
    }
}
