#pragma once
// One scheduler per user, whether it runs with a window or headless: both
// take the same lock, an flock() on a file in the per-user runtime folder.
// The kernel drops it when the process ends, however it ends, so a crash
// never leaves a stale lock behind and two simultaneous starts cannot both
// win. A lock in a folder that is not wholly ours proves nothing, so such a
// folder is passed over (runtime_dir.h); without a lock it can trust, the
// program does not start.

#include <string>

class SingleInstanceGuard {
public:
    // Takes the lock; what it passed over and why goes to standard error.
    SingleInstanceGuard();
    // Releases the lock.
    ~SingleInstanceGuard();
    SingleInstanceGuard(const SingleInstanceGuard&) = delete;
    SingleInstanceGuard& operator=(const SingleInstanceGuard&) = delete;

    // True when another scheduler of this user holds the lock.
    bool IsAnotherRunning() const { return m_bAnotherRunning; }
    // True when this process holds the lock (the control socket may then be
    // taken over).
    bool IsHeld() const { return m_fd >= 0; }
    // Why no lock could be taken, when neither of the above holds; the
    // program must not start then.
    const std::string& Problem() const { return m_problem; }

    static const char* RefusalMessage() { return "Another program instance is already running, aborting."; }

private:
    int m_fd = -1;
    bool m_bAnotherRunning = false;
    std::string m_problem;
};
