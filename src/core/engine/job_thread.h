#pragma once
// One job run on a thread of its own: the wait for its moment and any chain
// delay, silent mode, the kind's action, then the chained (associated) jobs.

#include <cstdint>
#include <memory>
#include <thread>

class EngineMailbox;
class Job;
class SessionContext;

struct JobRun {
    std::shared_ptr<Job> job;  // a private copy: the original may be edited meanwhile
    int delayMs = 0;           // after the moment (a chain's interval)
    std::int64_t dueMs = 0;    // the trigger's moment on the session's clock; 0: now
};

// Starts a joinable thread for `run`, counted in `mailbox` under `token`
// (JobThreadStarted) until it ends; everything it reaches after its job is
// gated by the mailbox. The thread keeps `context` alive. Throws
// std::system_error when no thread could be made.
std::thread StartJobThread(JobRun run, std::uint64_t token, std::shared_ptr<EngineMailbox> mailbox,
                           std::shared_ptr<SessionContext> context);
