#include "core/engine/job_thread.h"

#include <system_error>
#include <thread>

#include <wx/log.h>
#include <wx/thread.h>

#include "core/core_log.h"
#include "core/engine/checker_plan.h"
#include "core/engine/engine_mailbox.h"
#include "core/jobs/job.h"

namespace {

void RunJob(const std::shared_ptr<Job>& job, int delayMs, const std::shared_ptr<EngineMailbox>& mailbox)
{
    // A closing program starts no more jobs.
    if (!mailbox->IsClosed()) {
        const bool suppressed = mailbox->IsSilent() && IsSuppressedInSilentMode(job->GetType());
        // Shutdown cuts the delay short, and the job then does not run.
        if (!suppressed && (delayMs <= 0 || mailbox->SleepUnlessClosed(delayMs)))
            job->Execute();
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

std::shared_ptr<Job> SnapshotJob(const Job& job)
{
    std::shared_ptr<Job> copy = CreateJob(job.GetType());
    if (!copy)
        return nullptr;
    JobParam param;
    job.GetParam(param);
    copy->SetParam(param);
    copy->SetWarnBeforeRun(job.IsWarnBeforeRun());
    return copy;
}

std::size_t StartJobThread(std::shared_ptr<Job> job, int delayMs, std::shared_ptr<EngineMailbox> mailbox)
{
    const std::uint64_t token = mailbox->JobThreadStarted(job->GetId());
    try {
        std::thread thread([job, delayMs, mailbox, token]() {
            RunJob(job, delayMs, mailbox);
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
