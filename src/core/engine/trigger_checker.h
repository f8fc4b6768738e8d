#pragma once
// The firing pass: what a checker thread does with its share of the
// triggers every 50 ms, and the arming of the With Start triggers before the
// first pass.

#include <cstddef>
#include <cstdint>
#include <memory>

#include "core/history/run_record.h"

class Job;
class Scheduler;
class Trigger;

// A job is announced this many seconds before a trigger fires it, when the
// job asks for a warning.
constexpr int kNoticeSeconds = 300;

// Where a checker pass sends what it found. Called while the pass holds the
// list lock shared: implementations only queue.
class TriggerCheckSink {
public:
    virtual ~TriggerCheckSink() = default;
    // A firing trigger's enabled job; true when the request was queued.
    // `cause` names the trigger and its moment (`dueMs`), which the run
    // waits for.
    virtual bool RunJob(const std::shared_ptr<Job>& job, const RunCause& cause) = 0;
    // The job of a trigger due within the notice period (warn-before-run set).
    virtual void AdvanceNotice(const std::shared_ptr<Job>& job) = 0;
};

// One full pass over the triggers whose TID modulo `count` is `index`: each
// enabled, unfinished trigger that is not being edited is checked. Takes
// the list lock shared for the pass. The engine's checkers check only what
// is due (checker_index.h); this pass is the rule they must agree with.
void CheckTriggerShare(Scheduler& scheduler, std::size_t count, std::size_t index, TriggerCheckSink& sink);

// What a pass does with one trigger (under the read lock, inside the pass's
// clock reading): check and advance it; a firing of an enabled job goes to
// `sink` and counts a change, so the advanced PREVFIRE reaches the data
// file; otherwise the advance notice, once, when its job asks for one.
void CheckTrigger(Scheduler& scheduler, Trigger& trigger, TriggerCheckSink& sink);

// Arms every With Start trigger that has not fired again, counting from
// now; returns how many. Under the edit lock (the caller's).
std::size_t ArmWithStartTriggers(Scheduler& scheduler);
