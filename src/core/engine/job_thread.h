#pragma once
// One job run on a thread of its own: silent mode, the delay, Execute, then
// the chained (associated) jobs.

#include <cstddef>
#include <memory>

#include "core/history/run_record.h"

class EngineMailbox;
class Job;
class SessionContext;

// Starts a detached thread that runs `job` (a private copy: the main thread
// may edit or delete the original meanwhile) after `delayMs`, with the
// action the kind has in `context`, which the thread keeps alive. The thread is
// counted in `mailbox` until it ends, and everything it reaches after its
// job is gated by it (see EngineMailbox). The run, or why it did not run, goes
// to the context's recorder with `cause`. Returns the new thread's id, or 0
// when the thread could not be created.
std::size_t StartJobThread(std::shared_ptr<Job> job, int delayMs, const RunCause& cause,
                           std::shared_ptr<EngineMailbox> mailbox,
                           std::shared_ptr<SessionContext> context);
