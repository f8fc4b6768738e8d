#include "core/core_log.h"

#include "core/clock.h"

int LogMs()
{
    return GetClock().Now().GetMillisecond();
}
