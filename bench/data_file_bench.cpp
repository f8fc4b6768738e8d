// Load and save of a data file with 10,000 jobs and 10,000 triggers.

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <memory>
#include <vector>

#include <wx/filename.h>

#include "core/data/scheduler_data.h"
#include "core/scheduler.h"
#include "core/session/session_context.h"

namespace {

const SessionContext& BenchContext()
{
    static const SessionContext context;
    return context;
}

// A folder holding a saved data file of `count` jobs and as many triggers.
class LargeDataFile {
public:
    explicit LargeDataFile(int count)
    {
        char pattern[] = "/tmp/cadrelle-bench-XXXXXX";
        m_dir = wxString::FromUTF8(::mkdtemp(pattern));
        Scheduler s(BenchContext(), m_dir);
        Fill(s, count);
        s.Changes().MarkChanged();
        SaveSchedulerData(s, false);
    }
    ~LargeDataFile() { wxFileName::Rmdir(m_dir, wxPATH_RMDIR_RECURSIVE); }
    const wxString& Dir() const { return m_dir; }

    static void Fill(Scheduler& s, int count)
    {
        std::vector<std::unique_ptr<Job>> jobs;
        std::vector<std::unique_ptr<Trigger>> triggers;
        const char* const conditions[] = {"0 0 8 * * ?", "0/30 * * * * ?", "0 30 8 ? * 1-5", "0 0 9 24 11 ? 2030"};
        const std::uint32_t kinds[] = {NTriggerTypeEveryDay, NTriggerTypeInterval, NTriggerTypeEveryWeek,
                                       NTriggerTypeSpecTime};
        for (int i = 0; i < count; ++i) {
            std::unique_ptr<Trigger> trigger = CreateTrigger(kinds[i % 4], BenchContext());
            TriggerParam tp;
            tp.tid = (std::int64_t{1} << 32) + i;  // TIDs past 32 bits cost nothing extra
            tp.type = kinds[i % 4];
            tp.condition = conditions[i % 4];
            tp.prevFire = "0 0 8 20 11 * 2026";
            tp.nextFire = "0 0 8 23 11 * 2026";
            tp.start = "0 0 0 1 1 * 1999";
            tp.end = "59 59 23 31 12 * 2999";
            trigger->Load(tp);
            triggers.push_back(std::move(trigger));

            std::unique_ptr<Job> job = CreateJob(static_cast<std::uint32_t>(i % NJobTypeCount));
            JobParam jp;
            jp.id = i;
            jp.type = job->GetType();
            jp.description = wxString::Format("Job number %d: back up the photos & notes", i);
            jp.params = {"/home/user/Pictures", "/mnt/backup/pictures", "1"};
            jp.triggerIds = {(std::int64_t{1} << 32) + i};
            job->SetParam(jp);
            jobs.push_back(std::move(job));
        }
        auto lock = s.EditLock();
        s.Fill(std::move(jobs), std::move(triggers));
    }

private:
    wxString m_dir;
};

void BM_LoadDataFile(benchmark::State& state)
{
    const int count = static_cast<int>(state.range(0));
    LargeDataFile file(count);
    for (auto _ : state) {
        auto s = std::make_unique<Scheduler>(BenchContext(), file.Dir());
        LoadSchedulerData(*s, false);
        state.PauseTiming();  // freeing 20,000 objects is not loading
        if (s->Jobs().size() != static_cast<std::size_t>(count) || s->Triggers().size() != static_cast<std::size_t>(count))
            state.SkipWithError("wrong count");
        s.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_LoadDataFile)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_SaveDataFile(benchmark::State& state)
{
    LargeDataFile file(static_cast<int>(state.range(0)));
    Scheduler s(BenchContext(), file.Dir());
    LoadSchedulerData(s, false);
    for (auto _ : state) {
        s.Changes().MarkChanged();
        SaveSchedulerData(s, false);  // both copies, each fsynced
    }
}
BENCHMARK(BM_SaveDataFile)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace

// The reader alone, without handing the result to a scheduler.
#include "core/data/data_file_reader.h"

namespace {

void BM_LoadStepReader(benchmark::State& state)
{
    LargeDataFile file(static_cast<int>(state.range(0)));
    const DataFilePaths paths = MakeDataFilePaths(file.Dir());
    for (auto _ : state) {
        DataFileContent content;
        ReadDataFile(paths.working, content, BenchContext());
        benchmark::DoNotOptimize(content.jobs.data());
        state.PauseTiming();
        content = DataFileContent();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_LoadStepReader)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
