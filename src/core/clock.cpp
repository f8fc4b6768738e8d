#include "core/clock.h"

#include <chrono>

std::int64_t SystemClock::ReadMs() const
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

namespace {
// Never destroyed: a job thread left running at exit may still read it.
Clock& TheSystemClock()
{
    static Clock& clock = *new SystemClock;
    return clock;
}
std::atomic<Clock*> g_clock{nullptr};  // null: the system clock
}  // namespace

Clock& GetClock()
{
    Clock* clock = g_clock.load(std::memory_order_acquire);
    return clock ? *clock : TheSystemClock();
}

void SetClock(Clock* clock)
{
    g_clock.store(clock, std::memory_order_release);
}

ClockPassScope::ClockPassScope()
{
    t_clockPassTimeMs = GetClock().ReadMs();
}
