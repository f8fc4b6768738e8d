#pragma once
// The network job kinds: 8 "Refresh URL", 10 "Send UDP MSG", 11 "Send TCP MSG"
// and 12 "Wake On Lan". Their actions run on the job's own thread and need
// no event loop, so they work in the window and in headless mode alike.

#include <memory>

class JobActions;
class WebRequests;

// Registers the four actions; Refresh URL sends through `web`. Call at
// start-up, before the engine starts any thread.
void RegisterNetworkJobActions(JobActions& actions, const std::shared_ptr<WebRequests>& web);
