#include "core/engine/trigger_checker.h"

#include "core/scheduler.h"
#include "core/session/session_context.h"

void CheckTriggerShare(Scheduler& scheduler, std::size_t count, std::size_t index, TriggerCheckSink& sink)
{
    auto lock = scheduler.ReadLock();
    const Clock& clock = scheduler.Context().GetClock();
    const ClockPassScope pass(clock);
    const auto& tids = scheduler.TriggerTids();
    const auto& triggers = scheduler.Triggers();
    for (std::size_t i = 0; i < tids.size(); ++i) {
        if (static_cast<std::uint64_t>(tids[i]) % count != index)
            continue;
        Trigger& trigger = *triggers[i];
        if (!trigger.IsEnabled() || trigger.IsFinished() || trigger.IsEditing())
            continue;
        CheckTrigger(scheduler, trigger, sink);
    }
}

void CheckTrigger(Scheduler& scheduler, Trigger& trigger, TriggerCheckSink& sink)
{
    if (trigger.CheckAndAdvance()) {
        const auto& owner = scheduler.GetTriggerOwner(trigger.GetTid());
        // The moment it fired for: PREVFIRE now holds it (or now, for a
        // firing made up).
        RunCause cause;
        cause.origin = RunOrigin::Trigger;
        cause.tid = static_cast<std::int32_t>(trigger.GetTid());
        cause.triggerKind = static_cast<std::int32_t>(trigger.GetType());
        cause.dueMs = trigger.GetPrevFire().GetValue().GetValue();
        if (owner && owner->IsEnabled() && sink.RunJob(owner, cause))
            scheduler.Changes().MarkChangedByFiring(scheduler.Context().GetClock().Now());
    } else if (!trigger.IsNoticeGiven() && trigger.IsDue(kNoticeSeconds)) {
        const auto& owner = scheduler.GetTriggerOwner(trigger.GetTid());
        if (owner && owner->IsEnabled() && owner->IsWarnBeforeRun())
            sink.AdvanceNotice(owner);
        trigger.SetNoticeGiven(true);
    }
}

std::size_t ArmWithStartTriggers(Scheduler& scheduler)
{
    const wxDateTime now = scheduler.Context().GetClock().Now();
    std::size_t armed = 0;
    for (const auto& trigger : scheduler.Triggers()) {
        if (!trigger->IsFinished() && trigger->ArmFromStart(now))
            ++armed;
    }
    return armed;
}
