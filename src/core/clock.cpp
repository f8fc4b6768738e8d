#include "core/clock.h"

#include <chrono>

std::int64_t SystemClock::ReadMs() const
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

Clock& TheSystemClock()
{
    static Clock& clock = *new SystemClock;
    return clock;
}
