// Check-and-advance of recurring triggers that are not due: what the
// checker threads do twenty times a second for every trigger.

#include <benchmark/benchmark.h>

#include "core/clock.h"
#include "core/session/session_context.h"
#include "core/triggers/cron_driven_trigger.h"

namespace {

// New Year's midnight: never due while a benchmark runs (unless it runs then).
const char* const kNotDueCondition = "0 0 0 1 1 ?";

const SessionContext& BenchClockContext()
{
    static const SessionContext context;
    return context;
}

std::unique_ptr<Trigger> MakeRecurring(std::int64_t tid, const char* condition, bool caching)
{
    std::unique_ptr<Trigger> trigger = CreateTrigger(NTriggerTypeCron, BenchClockContext());
    TriggerParam p;
    p.tid = tid;
    p.type = NTriggerTypeCron;
    p.condition = condition;
    p.prevFire = "0 0 0 1 1 * 2026";
    p.nextFire = "0 0 0 1 1 * 2027";
    p.start = "0 0 0 1 1 * 1999";
    p.end = "59 59 23 31 12 * 2999";
    trigger->Load(p);
    static_cast<CronDrivenTrigger&>(*trigger).SetCaching(caching);
    return trigger;
}

// Arg 0: cached or not; arg 1: which expression (New Year's midnight, or
// 08:30 on weekdays: due only within 200 ms of that moment).
void BM_CheckNotDue(benchmark::State& state)
{
    const bool caching = state.range(0) != 0;
    const char* const condition = state.range(1) == 0 ? kNotDueCondition : "0 30 8 ? * MON-FRI";
    std::unique_ptr<Trigger> trigger = MakeRecurring(1, condition, caching);
    for (auto _ : state)
        benchmark::DoNotOptimize(trigger->CheckAndAdvance());
    state.SetLabel(std::string(caching ? "cached " : "straightforward ") + condition);
}
BENCHMARK(BM_CheckNotDue)->Args({1, 0})->Args({0, 0})->Args({1, 1})->Args({0, 1});

void BM_PassOver10000Recurring(benchmark::State& state)
{
    const bool caching = state.range(0) != 0;
    const char* const conditions[] = {"0 0 0 1 1 ?", "0 0 0 29 2 ?", "0 0 0 1 JAN ?", "59 59 23 31 12 ?"};
    std::vector<std::unique_ptr<Trigger>> triggers;
    for (int i = 0; i < 10000; ++i)
        triggers.push_back(MakeRecurring(i, conditions[i % 4], caching));
    for (auto _ : state) {
        // As a checker pass does it: one clock reading for the whole pass.
        const ClockPassScope pass(BenchClockContext().GetClock());
        int fired = 0;
        for (const auto& trigger : triggers)
            fired += trigger->CheckAndAdvance() ? 1 : 0;
        benchmark::DoNotOptimize(fired);
    }
    state.SetLabel(caching ? "cached" : "straightforward");
}
BENCHMARK(BM_PassOver10000Recurring)->Arg(1)->Arg(0)->Unit(benchmark::kMicrosecond);

}  // namespace
