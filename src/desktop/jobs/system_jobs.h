#pragma once

class JobActions;
// The session and power job kinds: 16 "Lock Workstation", 17 "Shutoff
// Display", 18 "Empty Recyclebin", 19 "Suspend", 20 "Hibernates",
// 21 "Shutdown", 22 "Reboot" and 23 "Logoff". They take no parameters, run
// on the job's own thread and need no event loop.

// Registers the eight actions with SetJobAction. Call at start-up, before the
// engine starts any thread.
void RegisterSystemJobActions(JobActions& actions);
