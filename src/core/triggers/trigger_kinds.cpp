#include "core/triggers/trigger_kinds.h"

#include "core/triggers/cron_driven_trigger.h"
#include "core/triggers/idle_timeout_trigger.h"
#include "core/triggers/one_shot_triggers.h"

namespace {

template <typename Kind>
std::unique_ptr<Trigger> Make(std::uint32_t, const SessionContext& context)
{
    return std::make_unique<Kind>(context);
}

std::unique_ptr<Trigger> MakeCronDriven(std::uint32_t type, const SessionContext& context)
{
    return std::make_unique<CronDrivenTrigger>(type, context);
}

// In kind order; names marked for the catalogue (English in the data file,
// the logs and --list, translated in the window).
const TriggerKind kTriggerKinds[NTriggerTypeCount] = {
    {wxTRANSLATE("Count Down"), false, 10, Make<CountDownTrigger>},
    {wxTRANSLATE("With Start"), false, 4, Make<WithStartTrigger>},
    {wxTRANSLATE("Interval"), true, 0, MakeCronDriven},
    {wxTRANSLATE("Idle Timeout"), false, 0, Make<IdleTimeoutTrigger>},
    {wxTRANSLATE("Specical Time"), false, 0, Make<SpecTimeTrigger>},
    {wxTRANSLATE("Every Minute"), true, 0, MakeCronDriven},
    {wxTRANSLATE("Every Hour"), true, 0, MakeCronDriven},
    {wxTRANSLATE("Every Day"), true, 0, MakeCronDriven},
    {wxTRANSLATE("Every Week"), true, 0, MakeCronDriven},
    {wxTRANSLATE("Every Month"), true, 0, MakeCronDriven},
    {wxTRANSLATE("Every Year"), true, 0, MakeCronDriven},
    {wxTRANSLATE("Cron"), true, 0, MakeCronDriven},
};

}  // namespace

const TriggerKind* FindTriggerKind(std::uint32_t type)
{
    return type < NTriggerTypeCount ? &kTriggerKinds[type] : nullptr;
}

wxString TriggerTypeName(std::uint32_t type)
{
    const TriggerKind* kind = FindTriggerKind(type);
    return kind ? wxString(kind->name) : wxString();
}

bool IsCronDrivenType(std::uint32_t type)
{
    const TriggerKind* kind = FindTriggerKind(type);
    return kind && kind->cronDriven;
}

std::unique_ptr<Trigger> CreateTrigger(std::uint32_t type, const SessionContext& context)
{
    const TriggerKind* kind = FindTriggerKind(type);
    if (!kind)
        return nullptr;
    std::unique_ptr<Trigger> trigger = kind->make(type, context);
    // A new recurring trigger has a firing to come.
    if (kind->cronDriven)
        trigger->SetFirePending(true);
    return trigger;
}

std::unique_ptr<Trigger> CopyTrigger(const Trigger& source)
{
    TriggerParam param;
    source.MakeParam(param);
    std::unique_ptr<Trigger> copy = CreateTrigger(source.GetType(), source.Context());
    if (copy)
        copy->Load(param);
    return copy;
}
