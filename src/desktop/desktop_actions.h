#pragma once
// Registers the action of every job kind. The window and the headless mode
// use the same actions; a kind that needs something the session lacks (an X
// display, logind, a notification service) says so when it runs.
// Call once at start-up, before the engine starts any thread.

void RegisterDesktopJobActions();
