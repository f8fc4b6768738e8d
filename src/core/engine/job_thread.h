#pragma once
// One job run on a thread of its own: the wait for its moment and any chain
// delay, silent mode, the kind's action, the record of what happened, then
// the chained (associated) jobs.

#include <cstdint>
#include <memory>
#include <thread>

#include "core/history/run_record.h"

class EngineMailbox;
class Job;
class SessionContext;

struct JobRun {
    std::shared_ptr<Job> job;  // a private copy: the original may be edited meanwhile
    int delayMs = 0;           // after the moment (a chain's interval)
    // What asked for the run; `cause.dueMs` is the trigger's moment on the
    // session's clock, which the run waits for (0 or past: now).
    RunCause cause;
};

// Starts a joinable thread for `run`, counted in `mailbox` under `token`
// (JobThreadStarted) until it ends; everything it reaches after its job is
// gated by the mailbox. The run, or why it did not run, goes to the
// context's recorder. The thread keeps `context` alive. Throws
// std::system_error when no thread could be made.
std::thread StartJobThread(JobRun run, std::uint64_t token, std::shared_ptr<EngineMailbox> mailbox,
                           std::shared_ptr<SessionContext> context);
