#pragma once
// The twelve trigger kinds. Each kind brings its own load, check-and-advance
// and is-due; until a kind has them, it keeps the base behaviour (the saved
// times are kept and the trigger never fires).

#include "core/triggers/trigger.h"

#define CADRELLE_TRIGGER_KIND(ClassName, TypeValue)            \
    class ClassName : public Trigger {                         \
    public:                                                    \
        ClassName() : Trigger(TypeValue) {}                    \
    };

CADRELLE_TRIGGER_KIND(CountDownTrigger, NTriggerTypeCountDown)
CADRELLE_TRIGGER_KIND(WithStartTrigger, NTriggerTypeWithStart)
CADRELLE_TRIGGER_KIND(IntervalTrigger, NTriggerTypeInterval)
CADRELLE_TRIGGER_KIND(IdleTimeoutTrigger, NTriggerTypeIdleTimeout)
CADRELLE_TRIGGER_KIND(SpecTimeTrigger, NTriggerTypeSpecTime)
CADRELLE_TRIGGER_KIND(EveryMinuteTrigger, NTriggerTypeEveryMinute)
CADRELLE_TRIGGER_KIND(EveryHourTrigger, NTriggerTypeEveryHour)
CADRELLE_TRIGGER_KIND(EveryDayTrigger, NTriggerTypeEveryDay)
CADRELLE_TRIGGER_KIND(EveryWeekTrigger, NTriggerTypeEveryWeek)
CADRELLE_TRIGGER_KIND(EveryMonthTrigger, NTriggerTypeEveryMonth)
CADRELLE_TRIGGER_KIND(EveryYearTrigger, NTriggerTypeEveryYear)
CADRELLE_TRIGGER_KIND(CronTrigger, NTriggerTypeCron)

#undef CADRELLE_TRIGGER_KIND
