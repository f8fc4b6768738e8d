#include "core/triggers/trigger.h"
#include "core/triggers/trigger_kinds.h"

namespace {

std::unique_ptr<Trigger> MakeKind(std::uint32_t type)
{
    switch (type) {
    case NTriggerTypeCountDown: return std::make_unique<CountDownTrigger>();
    case NTriggerTypeWithStart: return std::make_unique<WithStartTrigger>();
    case NTriggerTypeInterval: return std::make_unique<IntervalTrigger>();
    case NTriggerTypeIdleTimeout: return std::make_unique<IdleTimeoutTrigger>();
    case NTriggerTypeSpecTime: return std::make_unique<SpecTimeTrigger>();
    case NTriggerTypeEveryMinute: return std::make_unique<EveryMinuteTrigger>();
    case NTriggerTypeEveryHour: return std::make_unique<EveryHourTrigger>();
    case NTriggerTypeEveryDay: return std::make_unique<EveryDayTrigger>();
    case NTriggerTypeEveryWeek: return std::make_unique<EveryWeekTrigger>();
    case NTriggerTypeEveryMonth: return std::make_unique<EveryMonthTrigger>();
    case NTriggerTypeEveryYear: return std::make_unique<EveryYearTrigger>();
    case NTriggerTypeCron: return std::make_unique<CronTrigger>();
    default: return nullptr;
    }
}

}  // namespace

std::unique_ptr<Trigger> CreateTrigger(std::uint32_t type)
{
    std::unique_ptr<Trigger> trigger = MakeKind(type);
    if (trigger && IsCronDrivenType(type))
        trigger->SetFirePending(true);
    return trigger;
}

std::unique_ptr<Trigger> CopyTrigger(const Trigger& source)
{
    TriggerParam param;
    source.MakeParam(param);
    std::unique_ptr<Trigger> copy = CreateTrigger(source.GetType());
    if (copy)
        copy->Load(param);
    return copy;
}
