#pragma once
// What a running instance lets its user steer from the command line. The
// window and the headless runner each implement it; every call comes on the
// main thread.

#include <cstdint>
#include <memory>

#include "desktop/control/control_protocol.h"

class RunHistory;
class Scheduler;
class SchedulerEngine;

class InstanceControl {
public:
    virtual ~InstanceControl() = default;
    virtual InstanceStatus Status() = 0;
    // False when the mode cannot change now (checking has not started).
    virtual bool SetPaused(bool paused) = 0;
    virtual void SetSilent(bool silent) = 0;
    // False when there is no job `jid`; then nothing runs.
    virtual bool Run(std::int32_t jid) = 0;
    // False when there is no window to show.
    virtual bool Show() = 0;
};

// Carries one request out and words the answer.
ControlAnswer ServeControlRequest(InstanceControl& control, const ControlRequest& request);

// The counts and the next firing of a scheduler, with the engine's modes and
// the history's last failure (when there is a history).
InstanceStatus CollectStatus(const Scheduler& scheduler, const SchedulerEngine& engine, RunHistory* history);

// The headless runner's side: pause through the engine, run as the Execute
// command does, and no window.
std::unique_ptr<InstanceControl> MakeEngineControl(Scheduler& scheduler, SchedulerEngine& engine,
                                                   RunHistory* history);
