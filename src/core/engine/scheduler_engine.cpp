#include "core/engine/scheduler_engine.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <system_error>

#include <wx/log.h>
#include <wx/thread.h>

#include "core/core_log.h"
#include "core/engine/checker_index.h"
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
    // pass needs no look at the shared lock. A pass checks what is due; the
    // thread sleeps until its next due moment. The set's first thread is
    // also the watcher: it passes at least every period and wakes the others
    // when the lists were edited or the wall clock jumped, so that a thread
    // asleep until a moment hours away still sees both within a period.
    CheckerIndex share(count, index);
    const Clock& clock = m_context->GetClock();
    const bool watcher = index == 0;
    std::uint64_t generation = m_scheduler.EditGeneration();
    std::int64_t lastWall = clock.ReadMs();
    auto lastSteady = std::chrono::steady_clock::now();
    for (;;) {
        // Read before the pass: a wake-up meant for this pass's successor
        // must not be lost while the pass runs.
        std::uint64_t seen = 0;
        {
            std::lock_guard<std::mutex> lock(stop->mutex);
            seen = stop->lookAgain;
        }
        const std::int64_t due = share.Pass(m_scheduler, *this);
        const std::int64_t now = clock.ReadMs();
        std::int64_t sleepMs = due <= now ? kCheckPeriodMs : due - now;
        std::unique_lock<std::mutex> lock(stop->mutex);
        if (watcher) {
            const auto steady = std::chrono::steady_clock::now();
            const std::int64_t steadyMs =
                std::chrono::duration_cast<std::chrono::milliseconds>(steady - lastSteady).count();
            const bool jumped = std::abs((now - lastWall) - steadyMs) > kClockJumpMs;
            const std::uint64_t edits = m_scheduler.EditGeneration();
            if (jumped || edits != generation) {
                ++stop->lookAgain;
                stop->wake.notify_all();
            }
            generation = edits;
            lastWall = now;
            lastSteady = steady;
            sleepMs = std::min<std::int64_t>(sleepMs, kCheckPeriodMs);
        } else {
            sleepMs = std::min(sleepMs, kIdleSleepMs);
        }
        if (stop->wake.wait_for(lock, std::chrono::milliseconds(sleepMs),
                                [&stop, seen, watcher] { return stop->stop || (!watcher && stop->lookAgain != seen); }) &&
            stop->stop)
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
    if (!m_waiting.empty())
        wxLogMessage("%d ### %zu runs waiting for a job thread were not started: the program ends", LogMs(),
                     m_waiting.size());
    m_waiting.clear();
    const bool allEnded = m_mailbox->WaitForJobThreads(jobWaitMs);
    ReapJobThreads();
    if (allEnded)
        return;
    wxString jids;
    for (std::int32_t jid : m_mailbox->RunningJobIds())
        jids += wxString::Format(" JID_%d", jid);
    wxLogMessage("%d ### Jobs still running after %d ms, left behind:%s", LogMs(), jobWaitMs, jids);
    m_mailbox->Abandon();
    // Still running: let go of them, the one place a job thread is detached.
    for (auto& entry : m_jobThreads)
        entry.second.detach();
    m_jobThreads.clear();
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
    ReapJobThreads();
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
            Launch(job, request.delayMs, request.cause);
    }
}

void SchedulerEngine::Launch(const std::shared_ptr<Job>& job, int delayMs, const RunCause& cause)
{
    if (m_bShutDown)
        return;
    if (m_jobThreads.size() < kMaxJobThreads && m_waiting.empty()) {
        StartJob(job, delayMs, cause);
        return;
    }
    // A burst larger than the threads we allow: the excess waits its turn.
    if (m_waiting.size() >= kMaxWaitingRuns) {
        wxLogMessage("%d ### [JID_%d] not run: %zu runs already wait for a job thread", LogMs(), job->GetId(),
                     m_waiting.size());
        return;
    }
    if (!m_bToldWaiting) {
        m_bToldWaiting = true;
        wxLogMessage("%d ### %zu job threads run: further runs wait for one to end", LogMs(), m_jobThreads.size());
    }
    m_waiting.push_back({job, delayMs, cause});
}

void SchedulerEngine::ReapJobThreads()
{
    for (std::uint64_t token : m_mailbox->TakeEnded()) {
        auto it = m_jobThreads.find(token);
        if (it == m_jobThreads.end())
            continue;
        if (it->second.joinable())
            it->second.join();
        m_jobThreads.erase(it);
    }
    while (!m_bShutDown && !m_waiting.empty() && m_jobThreads.size() < kMaxJobThreads) {
        WaitingRun run = std::move(m_waiting.front());
        m_waiting.pop_front();
        StartJob(run.job, run.delayMs, run.cause);
    }
    if (m_waiting.empty())
        m_bToldWaiting = false;
}

void SchedulerEngine::StartJob(const std::shared_ptr<Job>& job, int delayMs, const RunCause& cause)
{
    JobRun run;
    {
        auto lock = m_scheduler.ReadLock();
        run.job = CopyJob(*job);
    }
    run.delayMs = delayMs;
    run.cause = cause;
    const std::uint64_t token = m_mailbox->JobThreadStarted(job->GetId());
    try {
        m_jobThreads.emplace(token, StartJobThread(std::move(run), token, m_mailbox, m_context));
    } catch (const std::system_error&) {
        m_mailbox->JobThreadEnded(token);
        m_mailbox->TakeEnded();
        wxLogMessage("%d *** Can't create thread!", LogMs());
        return;
    }
    m_host.JobStarted(*job);
}
