#pragma once
// What each job kind does is supplied by the desktop layer, so the core stays
// free of X11, sockets and processes. The layer registers one action per kind
// into the session's table at start-up, before any job thread runs; a kind
// without an action logs that it is not available.

#include <array>
#include <cstdint>
#include <functional>
#include <mutex>

#include "core/jobs/job.h"

class SessionContext;

// Runs a job's kind on the calling (job) thread; the context gives the
// messages, settings and clock of the session the job belongs to.
using JobAction = std::function<void(const Job&, SessionContext&)>;

class JobActions {
public:
    // Registers the action of a kind (replacing any earlier one).
    void Set(std::uint32_t type, JobAction action);
    // Runs the kind's action, or logs that the kind is not available.
    void Run(const Job& job, SessionContext& context) const;

private:
    // Registration normally ends before any job thread starts, but a test
    // may register while a job thread of an earlier run still looks up.
    mutable std::mutex m_mutex;
    std::array<JobAction, NJobTypeCount> m_actions;
};
