#pragma once
// The running scheduler: checker threads that test every trigger every
// 50 ms, and a thread per job run. Owned by the main frame or the headless
// runner, which must call ProcessRequests() on the main thread when asked
// (EngineHost::WakeMainThread) and HousekeepingTick() every second or so.

#include <atomic>
#include <cstddef>
#include <memory>
#include <thread>
#include <vector>

#include "core/engine/checker_plan.h"
#include "core/engine/engine_mailbox.h"
#include "core/scheduler.h"

class EngineHost {
public:
    virtual ~EngineHost() = default;
    // Any thread: requests wait; call ProcessRequests() on the main thread
    // soon. Must only queue (a lock is held).
    virtual void WakeMainThread() = 0;
    // Main thread: a job thread started (the views refresh).
    virtual void JobStarted(const Job&) {}
    // Main thread: a job announced before it runs (warn-before-run).
    virtual void AdvanceNotice(const Job&) {}
};

class SchedulerEngine final : public TriggerCheckSink, public JobRunRequests {
public:
    // How long a checker sleeps between passes.
    static constexpr int kCheckPeriodMs = 50;
    // The delayed save waits this long after a firing changed the data.
    static constexpr long kDelayedSaveMs = 55000;
    // Advance notice period, seconds.
    static constexpr int kNoticeSeconds = 300;

    SchedulerEngine(Scheduler& scheduler, EngineHost& host);
    ~SchedulerEngine() override;
    SchedulerEngine(const SchedulerEngine&) = delete;
    SchedulerEngine& operator=(const SchedulerEngine&) = delete;

    // The first tick of the trigger timer: prepares the With Start triggers
    // and starts the checker threads. Later calls do nothing.
    void StartChecking();
    bool IsStarted() const { return m_bStarted; }
    // Pause mode on/off (nothing before StartChecking). True when paused now.
    bool TogglePause();
    bool IsPaused() const;
    // The reset command: arms the unfired With Start triggers again from now
    // and logs "%zd WithStart triggers reset."; returns the count.
    std::size_t ResetWithStartTriggers();
    // Stops the checker threads and waits for them; closes the mailbox so no
    // further job starts. Called before the Scheduler goes away.
    void Shutdown();

    // Waits up to `timeoutMs` for running job threads to end; true when none
    // runs any more. The program itself never waits for its jobs.
    bool WaitForJobThreads(int timeoutMs) { return m_mailbox->WaitForJobThreads(timeoutMs); }

    void SetSilentMode(bool silent) { m_mailbox->SetSilent(silent); }
    bool IsSilentMode() const { return m_mailbox->IsSilent(); }
    std::size_t ThreadCount() const { return m_nThreadCnt.load(); }
    std::size_t CheckTriggerCount() const { return m_nCheckTriggerCnt.load(); }

    // Main thread: starts the requested job threads, hands notices over.
    void ProcessRequests();
    // Main thread, every second or so: the delayed save.
    void HousekeepingTick();

    // TriggerCheckSink (checker threads)
    bool RunJob(const std::shared_ptr<Job>& job) override;
    void AdvanceNotice(const std::shared_ptr<Job>& job) override;
    // JobRunRequests (any thread): run `job` after `value` ms.
    void PostJobRun(Job& job, int value) override;

private:
    void StartCheckerThreads();
    void JoinCheckerThreads();
    void CheckerLoop(std::size_t count, std::size_t index);
    void StartJob(const std::shared_ptr<Job>& job, int delayMs);

    Scheduler& m_scheduler;
    EngineHost& m_host;
    std::shared_ptr<EngineMailbox> m_mailbox;
    std::vector<std::thread> m_checkers;
    std::atomic<std::size_t> m_nThreadCnt{0};
    std::atomic<std::size_t> m_nCheckTriggerCnt{0};
    bool m_bStarted = false;
};
