#pragma once
// Registers the action of every job kind into a session's table. The window
// and the headless mode use the same actions; a kind that needs something
// the session lacks (an X display, logind, a notification service) says so
// when it runs. Call once at start-up, before the engine starts any thread.

#include <memory>

class JobActions;
class WebRequests;

// What the registered actions share while the session runs.
struct DesktopJobs {
    std::shared_ptr<WebRequests> web;  // Refresh URL's requests under way
};

std::unique_ptr<DesktopJobs> RegisterDesktopJobActions(JobActions& actions);
// At the end: requests still under way end as "Cancelled".
void CancelDesktopJobs(DesktopJobs& jobs);
