#include "core/engine/scheduler_engine.h"

#include <chrono>
#include <system_error>

#include <wx/log.h>
#include <wx/thread.h>

#include "core/core_log.h"
#include "core/engine/job_thread.h"
#include "core/session/session_context.h"

SchedulerEngine::SchedulerEngine(Scheduler& scheduler, std::shared_ptr<SessionContext> context, EngineHost& host)
    : m_scheduler(scheduler), m_context(std::move(context)), m_host(host),
      m_mailbox(std::make_shared<EngineMailbox>([&host] { host.WakeMainThread(); }))
{
}

SchedulerEngine::~SchedulerEngine()
{
    Shutdown();
}

void SchedulerEngine::StartChecking()
{
    if (m_bStarted || m_bShutDown)
        return;
    // The log keeps the line the window's trigger timer has always written
    // here, whoever drives the engine, so that logs read the same.
    wxLogMessage("%d *** CadrelleFrame::Onm_timerTrigger", LogMs());
    {
        auto lock = m_scheduler.EditLock();
        ArmWithStartTriggers(m_scheduler);
    }
    wxLogMessage("%d *** Starting CheckTriggerFireThreadEx by thread index >>>>>>", LogMs());
    StartCheckerThreads();
    m_bStarted = true;
}

void SchedulerEngine::StartCheckerThreads()
{
    std::size_t total = 0;
    std::size_t active = 0;
    {
        auto lock = m_scheduler.ReadLock();
        m_scheduler.CountTriggers(total, active);
    }
    const CheckerPlan plan = ChooseCheckerPlan(total);
    m_nThreadCnt = plan.threadCount;
    m_nCheckTriggerCnt = plan.checkTriggerCnt;
    m_checkerStop = std::make_shared<CheckerStop>();
    for (std::size_t index = 0; index < plan.threadCount; ++index) {
        // Counted before it starts, so the count is exact once this returns.
        ++m_nRunningCheckers;
        try {
            m_checkers.emplace_back([this, count = plan.threadCount, index, stop = m_checkerStop] {
                CheckerLoop(count, index, stop);
            });
        } catch (const std::system_error&) {
            --m_nRunningCheckers;
            m_context->Messages().ShowMessage(_("Can't create thread!"), "Cadrelle");
            break;
        }
        wxLogMessage("%d ### CheckTriggerFireThreadEx[ThreadID_%zu, nThreadCnt_%zu, nThreadIdx_%zu, "
                     "nCheckTriggerCnt_%zu] Start >>>>>>",
                     LogMs(), static_cast<std::size_t>(m_checkers.back().native_handle()), plan.threadCount, index,
                     plan.checkTriggerCnt);
    }
}

void SchedulerEngine::StopCheckerThreads()
{
    if (m_checkerStop) {
        std::lock_guard<std::mutex> lock(m_checkerStop->mutex);
        m_checkerStop->stop = true;
        m_checkerStop->wake.notify_all();
    }
    // A thread in its sleep wakes at once; one in a pass ends after it.
    for (std::thread& checker : m_checkers) {
        if (checker.joinable())
            checker.join();
    }
    m_checkers.clear();
    m_checkerStop.reset();
}

void SchedulerEngine::CheckerLoop(std::size_t count, std::size_t index, const std::shared_ptr<CheckerStop>& stop)
{
    // Every stop (pause, shutdown) goes through this set's own flag, so the
    // pass needs no look at the shared lock.
    for (;;) {
        CheckTriggerShare(m_scheduler, count, index, *this);
        std::unique_lock<std::mutex> lock(stop->mutex);
        if (stop->wake.wait_for(lock, std::chrono::milliseconds(kCheckPeriodMs), [&stop] { return stop->stop; }))
            break;
    }
    --m_nRunningCheckers;
}

bool SchedulerEngine::TogglePause()
{
    if (!m_bStarted || m_bShutDown)
        return IsPaused();
    if (m_bPaused) {
        m_bPaused = false;
        StartCheckerThreads();
        return false;
    }
    m_bPaused = true;
    StopCheckerThreads();
    return true;
}

std::size_t SchedulerEngine::ResetWithStartTriggers()
{
    std::size_t reset = 0;
    {
        auto lock = m_scheduler.EditLock();
        reset = ArmWithStartTriggers(m_scheduler);
    }
    wxLogMessage("%d ### %zu WithStart triggers reset.", LogMs(), reset);
    return reset;
}

bool SchedulerEngine::IsPaused() const
{
    return m_bStarted && !m_bShutDown && m_bPaused;
}

void SchedulerEngine::Shutdown(int jobWaitMs)
{
    if (m_bShutDown)
        return;
    m_bShutDown = true;
    StopCheckerThreads();
    m_mailbox->Close();
    if (m_mailbox->WaitForJobThreads(jobWaitMs))
        return;
    wxString jids;
    for (std::int32_t jid : m_mailbox->RunningJobIds())
        jids += wxString::Format(" JID_%d", jid);
    wxLogMessage("%d ### Jobs still running after %d ms, left behind:%s", LogMs(), jobWaitMs, jids);
    m_mailbox->Abandon();
}

bool SchedulerEngine::RunJob(const std::shared_ptr<Job>& job, const RunCause& cause)
{
    EngineRequest request;
    request.kind = EngineRequest::Kind::RunJob;
    request.job = job;
    request.cause = cause;
    if (request.cause.dueMs == 0)
        request.cause.dueMs = m_context->GetClock().NowMs();
    return m_mailbox->Post(std::move(request));
}

void SchedulerEngine::AdvanceNotice(const std::shared_ptr<Job>& job)
{
    EngineRequest request;
    request.kind = EngineRequest::Kind::AdvanceNotice;
    request.job = job;
    m_mailbox->Post(std::move(request));
}

void SchedulerEngine::ProcessRequests()
{
    for (EngineRequest& request : m_mailbox->TakeAll()) {
        std::shared_ptr<Job> job = request.job;
        if (request.kind == EngineRequest::Kind::RunJobById) {
            // A chained or hot-key job is looked up now; one deleted
            // meanwhile is skipped quietly.
            auto lock = m_scheduler.ReadLock();
            job = m_scheduler.GetJobById(request.jid);
        }
        if (!job) {
            // Only a chain names a job that may have gone (the history says so).
            if (request.kind == EngineRequest::Kind::RunJobById && request.cause.origin == RunOrigin::Chain) {
                RunRecord record = RecordFor(request.cause, request.jid, 0, {});
                record.outcome = RunOutcome::NotRun;
                record.reason = NotRunReason::ChainedJobGone;
                m_context->Recorder().Record(std::move(record));
            }
            continue;
        }
        if (request.kind == EngineRequest::Kind::AdvanceNotice)
            m_host.AdvanceNotice(*job);
        else
            StartJob(job, request.delayMs, request.cause);
    }
}

void SchedulerEngine::StartJob(const std::shared_ptr<Job>& job, int delayMs, const RunCause& cause)
{
    std::shared_ptr<Job> snapshot;
    {
        auto lock = m_scheduler.ReadLock();
        snapshot = CopyJob(*job);
    }
    if (!snapshot)
        return;
    const std::size_t threadId = StartJobThread(snapshot, delayMs, cause, m_mailbox, m_context);
    if (threadId == 0) {
        wxLogMessage("%d *** Can't create thread!", LogMs());
        return;
    }
    wxLogMessage("%d ->> [JID_%d, ThreadID_%zu] %s", LogMs(), snapshot->GetId(), threadId, snapshot->GetSummary());
    m_host.JobStarted(*job);
}
