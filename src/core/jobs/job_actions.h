#pragma once
// What each job kind does is supplied by the desktop layer, so the core stays
// free of X11, sockets and processes. The layer registers one action per kind
// at start-up, before any job thread runs; a kind without an action logs that
// it is not available yet.

#include <cstdint>
#include <functional>

class Job;

using JobAction = std::function<void(Job&)>;

// Registers the action of a kind (replacing any earlier one). Call before the
// scheduler starts its threads.
void SetJobAction(std::uint32_t type, JobAction action);
// Removes every registered action (tests).
void ClearJobActions();
// Runs the kind's action, or logs that the kind is not available yet.
void RunJobAction(Job& job);
