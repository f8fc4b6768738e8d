// The run history: what recording costs the job's thread, and how fast the
// newest runs come back from a database of 200,000.

#include <cstdlib>

#include <benchmark/benchmark.h>
#include <wx/filename.h>
#include <wx/init.h>

#include "core/history/history_command.h"
#include "core/history/history_db.h"
#include "core/history/run_history.h"
#include "core/session/session_context.h"

namespace {

RunRecord SampleRun(std::int32_t jid, std::int64_t atMs)
{
    RunRecord run;
    run.jid = jid;
    run.jobKind = 12;
    run.description = "Nightly backup of the documents folder";
    run.dueMs = run.startMs = atMs;
    run.endMs = atMs + 1200;
    run.origin = RunOrigin::Trigger;
    run.tid = jid;
    run.triggerKind = 5;
    run.outcome = jid % 10 == 0 ? RunOutcome::Failed : RunOutcome::Succeeded;
    run.details = "copied 12 files (3456789 bytes)";
    return run;
}

// A folder holding a history of `runs` runs, made once per process.
const wxString& FilledHistory(int runs)
{
    static wxInitializer init;
    static const wxString dir = [runs] {
        char name[] = "/tmp/cadrelle-bench-XXXXXX";
        const wxString made = wxString::FromUTF8(::mkdtemp(name));
        SessionContext context;
        RunHistory history(context, made + "/history.db");
        history.Start();
        const std::int64_t now = context.GetClock().NowMs();
        for (int i = 0; i < runs; ++i)
            history.Record(SampleRun(i % 500, now - static_cast<std::int64_t>(runs - i) * 1000));
        history.Flush(600000);
        return made;
    }();
    return dir;
}

// The job thread's share: Record only queues.
void BM_RecordRun(benchmark::State& state)
{
    static wxInitializer init;
    char name[] = "/tmp/cadrelle-bench-XXXXXX";
    const wxString dir = wxString::FromUTF8(::mkdtemp(name));
    SessionContext context;
    RunHistory history(context, dir + "/history.db");
    history.Start();
    std::int32_t jid = 0;
    for (auto _ : state) {
        ++jid;
        history.Record(SampleRun(jid, 1764000000000LL + jid));
    }
    history.Stop();
    wxFileName::Rmdir(dir, wxPATH_RMDIR_RECURSIVE);
}
BENCHMARK(BM_RecordRun)->Iterations(200000)->Unit(benchmark::kMicrosecond);

// What `--history --limit 100` does after opening: the query and the table.
void BM_HistoryLimit100Of200k(benchmark::State& state)
{
    const wxString& dir = FilledHistory(200000);
    for (auto _ : state) {
        HistoryOpenResult opened = OpenHistoryDb((dir + "/history.db").utf8_string(), true);
        HistoryQuery query;
        query.limit = 100;
        benchmark::DoNotOptimize(FormatHistoryTable(QueryRuns(opened.db.get(), query)));
    }
}
BENCHMARK(BM_HistoryLimit100Of200k)->Unit(benchmark::kMillisecond);

// The failed runs of one job, and every job's last result (the job list).
void BM_FailedOfOneJobOf200k(benchmark::State& state)
{
    const wxString& dir = FilledHistory(200000);
    HistoryOpenResult opened = OpenHistoryDb((dir + "/history.db").utf8_string(), true);
    for (auto _ : state) {
        HistoryQuery query;
        query.jid = 10;
        query.outcome = OutcomeFilter::Failed;
        benchmark::DoNotOptimize(QueryRuns(opened.db.get(), query));
        benchmark::DoNotOptimize(QueryLastResults(opened.db.get()));
    }
}
BENCHMARK(BM_FailedOfOneJobOf200k)->Unit(benchmark::kMillisecond);

}  // namespace
