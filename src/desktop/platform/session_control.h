#pragma once
// Locking the session, log-off and the machine's power states. Linux asks
// logind on the system bus; Windows would call the Win32 functions. Every
// call blocks the calling (job) thread for at most a few seconds and never
// shows anything: the caller decides what the user sees.

#include <string>
#include <utility>

// What a session or power request came to. `code` is the system's error
// number (an errno value on Linux, GetLastError on Windows), 0 on success;
// `reason` says in plain words why it failed, for the user; on success it
// may say how it was done, for the log.
struct SystemOutcome {
    bool ok = false;
    int code = 0;
    std::string reason;

    static SystemOutcome Done() { return SystemOutcome{true, 0, {}}; }
    static SystemOutcome Failure(int code, std::string reason) { return SystemOutcome{false, code, std::move(reason)}; }
};

enum class PowerAction { Suspend, Hibernate, PowerOff, Reboot };

// Locks the session this process runs in.
SystemOutcome LockOwnSession();
// Suspends, hibernates, powers off or reboots at once: no session manager is
// asked, running programs get no chance to object. The system must first
// say that this user may do it without authentication; otherwise nothing is
// requested and the outcome tells what the system answered.
SystemOutcome RequestPowerAction(PowerAction action);
// Ends the session this process runs in.
SystemOutcome LogOffOwnSession();
