#pragma once
// One scheduler per user, whether it runs with a window or headless: both
// take the same lock, an flock() on a file in the per-user runtime folder.
// The kernel drops it when the process ends, however it ends, so a crash
// never leaves a stale lock behind and two simultaneous starts cannot both
// win.

class SingleInstanceGuard {
public:
    SingleInstanceGuard();
    // Releases the lock.
    ~SingleInstanceGuard();
    SingleInstanceGuard(const SingleInstanceGuard&) = delete;
    SingleInstanceGuard& operator=(const SingleInstanceGuard&) = delete;

    // True when another scheduler of this user holds the lock. If the lock
    // cannot even be created, start-up goes on (false).
    bool IsAnotherRunning() const { return m_bAnotherRunning; }
    // True when this process holds the lock (the control socket may then be
    // taken over).
    bool IsHeld() const { return m_fd >= 0 && !m_bAnotherRunning; }

    static const char* RefusalMessage() { return "Another program instance is already running, aborting."; }

private:
    int m_fd = -1;
    bool m_bAnotherRunning = false;
};
