#pragma once
// One scheduler per user, whether it runs with a window or headless: both
// take the same named lock ("Cadrelle-" + the login name).

#include <memory>

class wxSingleInstanceChecker;

class SingleInstanceGuard {
public:
    SingleInstanceGuard();
    ~SingleInstanceGuard();
    SingleInstanceGuard(const SingleInstanceGuard&) = delete;
    SingleInstanceGuard& operator=(const SingleInstanceGuard&) = delete;

    // True when another scheduler of this user holds the lock. If the lock
    // cannot even be created, start-up goes on (false).
    bool IsAnotherRunning() const;

    static const char* RefusalMessage() { return "Another program instance is already running, aborting."; }

private:
    std::unique_ptr<wxSingleInstanceChecker> m_checker;
    bool m_bCreated = false;
};
