#pragma once
// Views that follow the scheduler's contents (the main frame implements both).

class Job;

class JobObserver {
public:
    virtual ~JobObserver() = default;
    virtual void Changed() = 0;
};

class TriggerObserver {
public:
    virtual ~TriggerObserver() = default;
    virtual void Changed() = 0;
};

// Where requests to run a job go: the engine that starts job threads. Any
// thread may post; the receiver must not run the job on the caller's thread.
class JobRunRequests {
public:
    virtual ~JobRunRequests() = default;
    // `value` is the delay in milliseconds before the job starts.
    virtual void PostJobRun(Job& job, int value) = 0;
};
