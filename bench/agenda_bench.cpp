// The agenda: 10,000 triggers over 7 days (target: under 200 ms), and a
// list of 100,000 runs built and printed as `--agenda` prints it.

#include <cstdint>
#include <ostream>
#include <sstream>

#include <benchmark/benchmark.h>

#include "core/agenda/agenda.h"
#include "core/agenda/agenda_command.h"
#include "core/clock.h"
#include "core/jobs/job_kinds.h"
#include "core/scheduler.h"
#include "core/session/session_context.h"
#include "core/triggers/trigger.h"

namespace {

const SessionContext& AgendaBenchContext()
{
    static const SessionContext context;
    return context;
}

// `count` jobs of one trigger each; `condition(i)` gives trigger i's.
template <typename Condition>
std::unique_ptr<Scheduler> Planned(int count, Condition condition)
{
    auto scheduler = std::make_unique<Scheduler>(AgendaBenchContext());
    for (int i = 0; i < count; ++i) {
        const std::pair<std::uint32_t, wxString> kc = condition(i);
        std::unique_ptr<Trigger> trigger = CreateTrigger(kc.first, AgendaBenchContext());
        TriggerParam p;
        p.tid = i + 1;
        p.type = kc.first;
        p.condition = kc.second;
        p.prevFire = p.nextFire = p.start = "0 0 0 1 1 * 1999";
        p.end = "59 59 23 31 12 * 2999";
        trigger->Load(p);
        scheduler->AddTrigger(std::move(trigger));
        std::unique_ptr<Job> job = CreateJob(i % 50 == 0 ? NJobTypeShutdown : NJobTypeExecDosCommand);
        JobParam jp;
        jp.id = i;
        jp.type = job->GetType();
        jp.description = wxString::Format("job %d", i);
        jp.triggerIds = {i + 1};
        job->SetParam(jp);
        scheduler->AddJob(std::move(job));
    }
    return scheduler;
}

// A desktop user's mix: daily, weekday, weekly, monthly, every 4 hours,
// hourly, half-hourly in office hours, and one-off moments.
std::pair<std::uint32_t, wxString> Mixed(int i)
{
    const int m = i % 60, h = i % 24;
    switch (i % 8) {
    case 0: return {NTriggerTypeEveryDay, wxString::Format("0 %d %d * * ?", m, h)};
    case 1: return {NTriggerTypeCron, wxString::Format("0 %d %d ? * MON-FRI", m, h)};
    case 2: return {NTriggerTypeEveryWeek, wxString::Format("0 %d %d ? * %d", m, h, i % 7)};
    case 3: return {NTriggerTypeEveryMonth, wxString::Format("0 %d %d %d * ?", m, h, 1 + i % 28)};
    case 4: return {NTriggerTypeCron, wxString::Format("0 %d */4 * * ?", m)};
    case 5: return {NTriggerTypeEveryHour, wxString::Format("0 %d * * * ?", m)};
    case 6: return {NTriggerTypeCron, wxString::Format("0 %d/30 8-18 ? * MON-FRI", m % 30)};
    default: return {NTriggerTypeSpecTime, wxString::Format("0 %d %d %d 12 ? 2030", m, h, 1 + i % 28)};
    }
}

void BM_Agenda10000TriggersOver7Days(benchmark::State& state)
{
    const auto scheduler = Planned(10000, Mixed);
    const std::int64_t now = TheSystemClock().NowMs();
    std::size_t runs = 0;
    AgendaOptions window = AgendaWindow(now, 7);
    window.maxRuns = state.range(0) ? kAgendaMaxRuns : SIZE_MAX;  // every run, or the list's limit
    for (auto _ : state) {
        const Agenda agenda = BuildAgenda(*scheduler, window);
        runs = agenda.runs.size();
        benchmark::DoNotOptimize(agenda.runs.data());
    }
    state.counters["runs"] = static_cast<double>(runs);
}
BENCHMARK(BM_Agenda10000TriggersOver7Days)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// The same number of triggers, all hourly: 1.68 million runs, of which the
// list keeps the first kAgendaMaxRuns.
void BM_Agenda10000HourlyOver7Days(benchmark::State& state)
{
    const auto scheduler = Planned(10000, [](int i) {
        return std::make_pair(static_cast<std::uint32_t>(NTriggerTypeEveryHour),
                              wxString::Format("0 %d * * * ?", i % 60));
    });
    const std::int64_t now = TheSystemClock().NowMs();
    std::size_t runs = 0;
    for (auto _ : state) {
        const Agenda agenda = BuildAgenda(*scheduler, AgendaWindow(now, 7));
        runs = agenda.runs.size();
        benchmark::DoNotOptimize(agenda.runs.data());
    }
    state.counters["runs"] = static_cast<double>(runs);
}
BENCHMARK(BM_Agenda10000HourlyOver7Days)->Unit(benchmark::kMillisecond);

// 100,000 runs (596 hourly triggers over a week) built and printed with
// their sentences, as `--agenda` does.
void BM_Agenda100000RunsPrinted(benchmark::State& state)
{
    const auto scheduler = Planned(596, [](int i) {
        return std::make_pair(static_cast<std::uint32_t>(NTriggerTypeCron),
                              wxString::Format("0 %d * * * ?", i % 60));
    });
    const std::int64_t now = TheSystemClock().NowMs();
    std::size_t runs = 0;
    for (auto _ : state) {
        const AgendaOptions window = AgendaWindow(now, 7);
        const Agenda agenda = BuildAgenda(*scheduler, window);
        std::ostringstream out;
        PrintAgenda(agenda, window.fromMs, window.untilMs, out);
        runs = agenda.runs.size();
        benchmark::DoNotOptimize(out.str().size());
    }
    state.counters["runs"] = static_cast<double>(runs);
}
BENCHMARK(BM_Agenda100000RunsPrinted)->Unit(benchmark::kMillisecond);

}  // namespace
