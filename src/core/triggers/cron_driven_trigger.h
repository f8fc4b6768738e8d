#pragma once
// The recurring kinds: Interval, Every Minute ... Every Year and Cron. Their
// CONDITION is a six-field cron expression; they differ only in which fields
// the trigger dialog lets the user fill.

#include "core/triggers/cron_schedule.h"
#include "core/triggers/trigger.h"

class CronDrivenTrigger : public Trigger {
public:
    // The next fire time from now, rounded down to the minute: the value
    // shown right after loading; the first check replaces it.
    void Load(const TriggerParam& param) override;
    bool CheckAndAdvance() override;
    bool IsDue(int toleranceSec) const override;

    // Turns the cache of next moments off: the straightforward rule (tests
    // and benchmarks compare the two).
    void SetCaching(bool caching) { m_schedule.SetCaching(caching); }

protected:
    explicit CronDrivenTrigger(std::uint32_t type) : Trigger(type) {}

private:
    bool InActivePeriod(std::int64_t nowMs) const;

    CronSchedule m_schedule;
};

#define CADRELLE_CRON_DRIVEN_KIND(ClassName, TypeValue)                 \
    class ClassName : public CronDrivenTrigger {                        \
    public:                                                             \
        ClassName() : CronDrivenTrigger(TypeValue) {}                   \
    };

CADRELLE_CRON_DRIVEN_KIND(IntervalTrigger, NTriggerTypeInterval)
CADRELLE_CRON_DRIVEN_KIND(EveryMinuteTrigger, NTriggerTypeEveryMinute)
CADRELLE_CRON_DRIVEN_KIND(EveryHourTrigger, NTriggerTypeEveryHour)
CADRELLE_CRON_DRIVEN_KIND(EveryDayTrigger, NTriggerTypeEveryDay)
CADRELLE_CRON_DRIVEN_KIND(EveryWeekTrigger, NTriggerTypeEveryWeek)
CADRELLE_CRON_DRIVEN_KIND(EveryMonthTrigger, NTriggerTypeEveryMonth)
CADRELLE_CRON_DRIVEN_KIND(EveryYearTrigger, NTriggerTypeEveryYear)
CADRELLE_CRON_DRIVEN_KIND(CronTrigger, NTriggerTypeCron)

#undef CADRELLE_CRON_DRIVEN_KIND
