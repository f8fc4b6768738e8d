#pragma once
// The recurring kinds: Interval, Every Minute ... Every Year and Cron. Their
// CONDITION is a six-field cron expression; they differ only in which fields
// the trigger dialog lets the user fill.

#include "core/triggers/cron_schedule.h"
#include "core/triggers/trigger.h"

class CronDrivenTrigger final : public Trigger {
public:
    // `type` is one of the recurring kinds (IsCronDrivenType).
    CronDrivenTrigger(std::uint32_t type, const SessionContext& context) : Trigger(type, context) {}

    // The next fire time after now (whole seconds): the value shown right
    // after loading, the one the first check aims at.
    void Load(const TriggerParam& param) override;
    bool CheckAndAdvance() override;
    bool IsDue(int toleranceSec) const override;
    std::int64_t NextCheckMs(std::int64_t nowMs, int noticeSec) const override;

    // Turns the cache of next moments off: the straightforward rule (tests
    // and benchmarks compare the two).
    void SetCaching(bool caching) { m_schedule.SetCaching(caching); }

private:
    bool InActivePeriod(std::int64_t nowMs) const;

    CronSchedule m_schedule;
};
