#pragma once
// What worker threads share with the main thread: the queue of requests
// (run a job, give an advance notice) and the silent-mode flag. Job threads
// keep it alive by shared_ptr, so a thread that outlives the engine posts
// into a closed mailbox instead of into freed memory.

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

class Job;

struct EngineRequest {
    enum class Kind { RunJob, RunJobById, AdvanceNotice };
    Kind kind = Kind::RunJob;
    std::shared_ptr<Job> job;  // RunJob, AdvanceNotice
    std::int32_t jid = 0;      // RunJobById (chained jobs are looked up on the main thread)
    int delayMs = 0;
};

class EngineMailbox {
public:
    // `wake` asks the main thread to drain the mailbox soon; it is called
    // with the mailbox's lock held, so it must only queue.
    explicit EngineMailbox(std::function<void()> wake) : m_wake(std::move(wake)) {}

    // False (and nothing queued) once the mailbox is closed.
    bool Post(EngineRequest request);
    std::deque<EngineRequest> TakeAll();
    void Close();
    bool IsClosed() const;

    // Job threads count themselves in and out, so that a caller can wait
    // for the running ones to end (tests, an orderly exit).
    void JobThreadStarted();
    void JobThreadEnded();
    // True when no job thread runs any more; false after `timeoutMs`.
    bool WaitForJobThreads(int timeoutMs);

    // 1 normal, 0 silent: read by every job thread when it starts.
    bool IsSilent() const;
    void SetSilent(bool silent);

private:
    mutable std::mutex m_mutex;
    std::deque<EngineRequest> m_requests;
    std::function<void()> m_wake;
    std::condition_variable m_jobThreadsDone;
    int m_nJobThreads = 0;
    bool m_bClosed = false;
    bool m_bSilent = false;
};
