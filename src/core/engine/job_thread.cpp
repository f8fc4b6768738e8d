#include "core/engine/job_thread.h"

#include <algorithm>

#include <wx/log.h>
#include <wx/thread.h>

#include "core/core_log.h"
#include "core/engine/engine_mailbox.h"
#include "core/jobs/job.h"
#include "core/session/session_context.h"

namespace {

void RunJob(const JobRun& run, EngineMailbox& mailbox, SessionContext& context)
{
    const Job& job = *run.job;
    // A run fired ahead of its moment waits for it, so that the job never
    // starts before its second.
    const std::int64_t untilDue = run.dueMs > 0 ? std::max<std::int64_t>(0, run.dueMs - context.GetClock().ReadMs()) : 0;
    const std::int64_t waitMs = untilDue + std::max(0, run.delayMs);
    // Shutdown cuts the wait short, and the job then does not run; a closing
    // program starts no more jobs.
    const bool go = !mailbox.IsClosed() && (waitMs <= 0 || mailbox.SleepUnlessClosed(static_cast<int>(waitMs)));
    if (go) {
        wxLogMessage("%d ->> [JID_%d, ThreadID_%zu] %s", LogMs(), job.GetId(),
                     static_cast<std::size_t>(wxThread::GetCurrentId()), job.GetSummary());
        const JobKind* kind = FindJobKind(job.GetType());
        const bool held = mailbox.IsSilent() && kind && kind->heldInSilentMode;
        if (!held)
            context.Actions().Run(job, context);
    }
    // Chaining runs for every thread that reaches its end, a held-back job
    // included. The list is the copy's own, so edits cannot disturb it.
    for (std::int32_t jid : job.GetAssociatedJids()) {
        if (jid == job.GetId())
            continue;  // never straight back to itself
        EngineRequest request;
        request.kind = EngineRequest::Kind::RunJobById;
        request.jid = jid;
        request.delayMs = job.GetJobInterval();
        mailbox.Post(std::move(request));
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
