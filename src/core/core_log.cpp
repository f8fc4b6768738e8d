#include "core/core_log.h"

#include <atomic>

#include "core/clock.h"

namespace {
// The clock of the log that is the toolkit's active log target. Process-wide
// because that target is: every line goes to it, from any thread.
std::atomic<const Clock*> g_logClock{nullptr};
}  // namespace

void SetLogClock(const Clock* clock)
{
    g_logClock.store(clock, std::memory_order_release);
}

int LogMs()
{
    const Clock* clock = g_logClock.load(std::memory_order_acquire);
    const std::int64_t ms = (clock ? *clock : TheSystemClock()).NowMs();
    return static_cast<int>(((ms % 1000) + 1000) % 1000);
}
