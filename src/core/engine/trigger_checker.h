#pragma once
// The firing pass: what a checker thread does with its share of the
// triggers every 50 ms, and the arming of the With Start triggers before the
// first pass.

#include <cstddef>
#include <memory>

#include "core/history/run_record.h"

class Job;
class Scheduler;

// A job is announced this many seconds before a trigger fires it, when the
// job asks for a warning.
constexpr int kNoticeSeconds = 300;

// Where a checker pass sends what it found. Called while the pass holds the
// list lock shared: implementations only queue.
class TriggerCheckSink {
public:
    virtual ~TriggerCheckSink() = default;
    // A firing trigger's enabled job; true when the request was queued.
    // `cause` names the trigger (for the run history).
    virtual bool RunJob(const std::shared_ptr<Job>& job, const RunCause& cause) = 0;
    // The job of a trigger due within the notice period (warn-before-run set).
    virtual void AdvanceNotice(const std::shared_ptr<Job>& job) = 0;
};

// One pass over the triggers whose TID modulo `count` is `index`: each
// enabled, unfinished trigger that is not being edited is checked and
// advanced; firings and advance notices go to `sink`. A firing whose job
// was asked to run counts a change, so the advanced PREVFIRE reaches the
// data file. Takes the list lock shared for the pass.
void CheckTriggerShare(Scheduler& scheduler, std::size_t count, std::size_t index, TriggerCheckSink& sink);

// Arms every With Start trigger that has not fired again, counting from
// now; returns how many. Under the edit lock (the caller's).
std::size_t ArmWithStartTriggers(Scheduler& scheduler);
