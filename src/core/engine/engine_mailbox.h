#pragma once
// What worker threads share with the main thread: the queue of requests
// (run a job, give an advance notice), the silent-mode flag, and the list of
// running job threads. Job threads keep it alive by shared_ptr, so a thread
// that outlives the engine posts into a closed mailbox instead of into freed
// memory.

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "core/history/run_record.h"

class Job;

struct EngineRequest {
    enum class Kind { RunJob, RunJobById, AdvanceNotice };
    Kind kind = Kind::RunJob;
    std::shared_ptr<Job> job;  // RunJob, AdvanceNotice
    std::int32_t jid = 0;      // RunJobById (chained jobs are looked up on the main thread)
    int delayMs = 0;
    // What asked for the run (the history); for a trigger, `cause.dueMs` is
    // its moment, which the run waits for (checks fire up to 200 ms ahead).
    RunCause cause;
};

class EngineMailbox {
public:
    // `wake` asks the main thread to drain the mailbox soon; it is called
    // with the mailbox's lock held, so it must only queue.
    explicit EngineMailbox(std::function<void()> wake) : m_wake(std::move(wake)) {}

    // False (and nothing queued) once the mailbox is closed.
    bool Post(EngineRequest request);
    std::deque<EngineRequest> TakeAll();
    // Closing is the job threads' stop request: no new request is taken and
    // a thread waiting out its delay wakes at once.
    void Close();
    bool IsClosed() const;

    // Job threads count themselves in and out, so that shutdown can wait
    // for them and name the ones that would not end. An ended thread's
    // token waits in TakeEnded() for the main thread to join it; the end
    // wakes the main thread.
    std::uint64_t JobThreadStarted(std::int32_t jid);
    void JobThreadEnded(std::uint64_t token);
    std::vector<std::uint64_t> TakeEnded();
    // True when no job thread runs any more; false after `timeoutMs`.
    bool WaitForJobThreads(int timeoutMs);
    // The JIDs of the job threads still running, in start order.
    std::vector<std::int32_t> RunningJobIds() const;
    // Sleeps `ms` unless the mailbox is or gets closed; true when the whole
    // time passed open.
    bool SleepUnlessClosed(int ms);

    // After shutdown gave up waiting, a job thread still running must not
    // reach the log, the clock or the application any more: `report` runs
    // only while the engine still listens, and never after Abandon().
    void ReportUnlessAbandoned(const std::function<void()>& report);
    void Abandon();

    // 1 normal, 0 silent: read by every job thread when it starts.
    bool IsSilent() const;
    void SetSilent(bool silent);

private:
    mutable std::mutex m_mutex;
    std::mutex m_reportMutex;
    std::deque<EngineRequest> m_requests;
    std::function<void()> m_wake;
    std::condition_variable m_jobThreadsDone;
    std::condition_variable m_closed;
    std::map<std::uint64_t, std::int32_t> m_running;  // token -> JID
    std::vector<std::uint64_t> m_ended;
    std::uint64_t m_nextToken = 1;
    bool m_bClosed = false;
    bool m_bAbandoned = false;
    bool m_bSilent = false;
};
