#include "core/engine/job_thread.h"

#include <system_error>
#include <thread>

#include <wx/log.h>
#include <wx/thread.h>

#include "core/core_log.h"
#include "core/engine/engine_mailbox.h"
#include "core/jobs/job.h"
#include "core/session/session_context.h"

namespace {

void RunJob(const std::shared_ptr<Job>& job, int delayMs, const std::shared_ptr<EngineMailbox>& mailbox,
            SessionContext& context)
{
    // A closing program starts no more jobs.
    if (!mailbox->IsClosed()) {
        const JobKind* kind = FindJobKind(job->GetType());
        const bool suppressed = mailbox->IsSilent() && kind && kind->heldInSilentMode;
        // Shutdown cuts the delay short, and the job then does not run.
        if (!suppressed && (delayMs <= 0 || mailbox->SleepUnlessClosed(delayMs)))
            context.Actions().Run(*job, context);
    }
    // Chaining runs for every thread that reaches its end, a suppressed job
    // included. The list is the copy's own, so edits cannot disturb it.
    for (std::int32_t jid : job->GetAssociatedJids()) {
        if (jid == job->GetId())
            continue;  // never straight back to itself
        EngineRequest request;
        request.kind = EngineRequest::Kind::RunJobById;
        request.jid = jid;
        request.delayMs = job->GetJobInterval();
        mailbox->Post(std::move(request));
    }
    mailbox->ReportUnlessAbandoned([&job] {
        wxLogMessage("%d <<- [JID_%d, ThreadID_%zu] Exit", LogMs(), job->GetId(),
                     static_cast<std::size_t>(wxThread::GetCurrentId()));
    });
}

}  // namespace

std::size_t StartJobThread(std::shared_ptr<Job> job, int delayMs, std::shared_ptr<EngineMailbox> mailbox,
                           std::shared_ptr<SessionContext> context)
{
    const std::uint64_t token = mailbox->JobThreadStarted(job->GetId());
    try {
        std::thread thread([job, delayMs, mailbox, token, context]() {
            RunJob(job, delayMs, mailbox, *context);
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
