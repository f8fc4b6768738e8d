#include "core/clock.h"

#include <chrono>

std::int64_t SystemClock::ReadMs() const
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

namespace {
SystemClock g_systemClock;
std::atomic<Clock*> g_clock{&g_systemClock};
}  // namespace

Clock& GetClock()
{
    return *g_clock.load(std::memory_order_acquire);
}

void SetClock(Clock* clock)
{
    g_clock.store(clock ? clock : &g_systemClock, std::memory_order_release);
}

ClockPassScope::ClockPassScope()
{
    t_clockPassTimeMs = GetClock().ReadMs();
}
