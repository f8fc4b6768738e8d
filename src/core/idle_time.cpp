#include "core/idle_time.h"

#include <atomic>

namespace {

class NoIdleTime final : public IdleTimeSource {
public:
    long IdleSeconds() override { return 0; }
};

NoIdleTime g_noIdleTime;
std::atomic<IdleTimeSource*> g_source{&g_noIdleTime};

}  // namespace

IdleTimeSource& GetIdleTimeSource()
{
    return *g_source.load(std::memory_order_acquire);
}

void SetIdleTimeSource(IdleTimeSource* source)
{
    g_source.store(source ? source : &g_noIdleTime, std::memory_order_release);
}
