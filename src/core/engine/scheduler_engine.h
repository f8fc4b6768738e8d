#pragma once
// The running scheduler: checker threads that test every trigger every
// 50 ms, and a thread per job run. Owned by the session, whose owner (the
// window or the headless loop) must call ProcessRequests() on the main
// thread when asked (EngineHost::WakeMainThread).

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "core/engine/checker_plan.h"
#include "core/engine/engine_mailbox.h"
#include "core/engine/trigger_checker.h"
#include "core/scheduler.h"

class SessionContext;

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

class SchedulerEngine final : public TriggerCheckSink {
public:
    // How long a checker sleeps between passes.
    static constexpr int kCheckPeriodMs = 50;
    // The wall clock and the steady clock may disagree by this much between
    // two watcher passes before it counts as a jump (a step, a suspend).
    static constexpr std::int64_t kClockJumpMs = 1000;
    // The longest a checker with nothing due sleeps unwatched.
    static constexpr std::int64_t kIdleSleepMs = 60000;
    // How long shutdown waits for running jobs before it leaves them behind.
    static constexpr int kJobThreadWaitMs = 5000;
    // At most this many job threads run at once; further runs wait, in the
    // order they were asked for, and at most kMaxWaitingRuns of them (more
    // are not run, and the log says so).
    static constexpr std::size_t kMaxJobThreads = 256;
    static constexpr std::size_t kMaxWaitingRuns = 100000;

    // Job threads keep `context` alive (one may outlive the engine).
    SchedulerEngine(Scheduler& scheduler, std::shared_ptr<SessionContext> context, EngineHost& host);
    ~SchedulerEngine() override;
    SchedulerEngine(const SchedulerEngine&) = delete;
    SchedulerEngine& operator=(const SchedulerEngine&) = delete;

    // The first tick of the trigger timer: prepares the With Start triggers
    // and starts the checker threads. Later calls do nothing.
    void StartChecking();
    bool IsStarted() const { return m_bStarted; }
    // Pause mode on/off (nothing before StartChecking). True when paused now.
    // Pausing ends the checker threads and waits for them (at most one
    // pass); leaving pause starts a fresh set, which checks at once.
    bool TogglePause();
    bool IsPaused() const;
    // The reset command: arms the unfired With Start triggers again from now
    // and logs "%zd WithStart triggers reset."; returns the count.
    std::size_t ResetWithStartTriggers();
    // Stops the checker threads and waits for them; closes the mailbox so no
    // further job starts and delayed jobs give up their wait; then waits up
    // to `jobWaitMs` for the running job threads. Those still running are
    // logged by JID and left behind, cut off from the log and the program.
    // Called before the Scheduler goes away; later calls do nothing.
    void Shutdown(int jobWaitMs = kJobThreadWaitMs);

    // Waits up to `timeoutMs` for running job threads to end; true when none
    // runs any more.
    bool WaitForJobThreads(int timeoutMs) { return m_mailbox->WaitForJobThreads(timeoutMs); }
    // Main thread: job threads started and not yet joined; runs waiting for one.
    std::size_t JobThreadCount() const { return m_jobThreads.size(); }
    std::size_t WaitingRunCount() const { return m_waiting.size(); }

    void SetSilentMode(bool silent) { m_mailbox->SetSilent(silent); }
    bool IsSilentMode() const { return m_mailbox->IsSilent(); }
    std::size_t ThreadCount() const { return m_nThreadCnt.load(); }
    std::size_t CheckTriggerCount() const { return m_nCheckTriggerCnt.load(); }
    // Checker threads alive right now (0 while paused).
    std::size_t RunningCheckerCount() const { return m_nRunningCheckers.load(); }

    // Main thread: starts the requested job threads, hands notices over.
    void ProcessRequests();

    // TriggerCheckSink (checker threads)
    // Also the Execute command, hot keys and the command line, which say
    // so in `cause`.
    bool RunJob(const std::shared_ptr<Job>& job, const RunCause& cause = {}) override;
    void AdvanceNotice(const std::shared_ptr<Job>& job) override;

private:
    // One set of checker threads has its own stop flag, so a thread of a set
    // that was told to stop can never see a later resume and carry on.
    struct CheckerStop {
        std::mutex mutex;
        std::condition_variable wake;
        bool stop = false;
        // Moved by the watcher (the set's first thread) when the others must
        // look again before their next due moment: an edit, a clock jump.
        std::uint64_t lookAgain = 0;
    };

    void StartCheckerThreads();
    void StopCheckerThreads();
    void CheckerLoop(std::size_t count, std::size_t index, const std::shared_ptr<CheckerStop>& stop);
    void Launch(const std::shared_ptr<Job>& job, int delayMs, const RunCause& cause);
    void StartJob(const std::shared_ptr<Job>& job, int delayMs, const RunCause& cause);
    // Joins the job threads that ended; starts waiting runs in their place.
    void ReapJobThreads();

    struct WaitingRun {
        std::shared_ptr<Job> job;
        int delayMs;
        RunCause cause;
    };

    Scheduler& m_scheduler;
    std::shared_ptr<SessionContext> m_context;
    EngineHost& m_host;
    std::shared_ptr<EngineMailbox> m_mailbox;
    std::map<std::uint64_t, std::thread> m_jobThreads;  // token -> thread, main thread only
    std::deque<WaitingRun> m_waiting;
    bool m_bToldWaiting = false;
    std::vector<std::thread> m_checkers;
    std::shared_ptr<CheckerStop> m_checkerStop;
    std::atomic<std::size_t> m_nRunningCheckers{0};
    std::atomic<std::size_t> m_nThreadCnt{0};
    std::atomic<std::size_t> m_nCheckTriggerCnt{0};
    bool m_bStarted = false;
    bool m_bShutDown = false;
    bool m_bPaused = false;
};
