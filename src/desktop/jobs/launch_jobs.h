#pragma once

class JobActions;
// The launch kinds 1 "Open URL", 2 "Open File", 3 "Open Folder", 5 "Exec DOS
// Command", 6 "Exec Script File" (parameter 0 is the target), and kind 4
// "Backup Folder" (parameter 0 the source, 1 the destination). All run on the
// job's own thread and never wait for what they start.

// Registers the six actions with SetJobAction. Call at start-up, before the
// engine starts any thread.
void RegisterLaunchJobActions(JobActions& actions);
