// Job threads started by the engine: delay, silent mode, chaining, and a job
// deleted while it is chained. Real threads, the real clock.

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include <gtest/gtest.h>

#include "trigger_builders.h"

#include "core/engine/scheduler_engine.h"
#include "core/jobs/job_actions.h"

namespace {

class TestHost : public EngineHost {
public:
    void WakeMainThread() override {}
    void JobStarted(const Job& job) override { started.push_back(job.GetId()); }
    std::vector<std::int32_t> started;
};

// Records which jobs ran, in order, from any thread.
class RunLog {
public:
    void Add(std::int32_t jid)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_runs.push_back({jid, std::chrono::steady_clock::now()});
    }
    std::vector<std::int32_t> Ids() const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        std::vector<std::int32_t> ids;
        for (const auto& run : m_runs)
            ids.push_back(run.first);
        return ids;
    }
    std::size_t Count() const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_runs.size();
    }
    std::chrono::milliseconds Gap(std::size_t from, std::size_t to) const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return std::chrono::duration_cast<std::chrono::milliseconds>(m_runs[to].second - m_runs[from].second);
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::pair<std::int32_t, std::chrono::steady_clock::time_point>> m_runs;
};

class EngineJobsTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        for (std::uint32_t kind = 0; kind < NJobTypeCount; ++kind)
            SetJobAction(kind, [this](Job& job) { runs.Add(job.GetId()); });
    }
    void TearDown() override
    {
        engine.Shutdown();
        EXPECT_TRUE(engine.WaitForJobThreads(5000));
        ClearJobActions();
    }

    Job* AddJob(std::int32_t jid, std::uint32_t kind, IdList associated = {}, std::int32_t interval = 0,
                bool enable = true)
    {
        std::unique_ptr<Job> job = CreateJob(kind);
        JobParam p;
        p.id = jid;
        p.type = kind;
        p.associatedJids = std::move(associated);
        p.jobInterval = interval;
        p.enable = enable;
        job->SetParam(p);
        Job* raw = job.get();
        scheduler.AddJob(std::move(job), false);
        return raw;
    }

    // Drains requests on this (the main) thread until `count` runs were seen
    // or the time is up, then a little longer to catch runs too many.
    void PumpUntil(std::size_t count, std::chrono::milliseconds limit = std::chrono::milliseconds(5000))
    {
        const auto end = std::chrono::steady_clock::now() + limit;
        while (runs.Count() < count && std::chrono::steady_clock::now() < end) {
            engine.ProcessRequests();
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        for (int i = 0; i < 40; ++i) {
            engine.ProcessRequests();
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }

    Scheduler scheduler;
    TestHost host;
    SchedulerEngine engine{scheduler, host};
    RunLog runs;
};

}  // namespace

TEST_F(EngineJobsTest, ChainSkipsOwnIdAndStartsDisabledJobsAfterTheInterval)
{
    Job* first = AddJob(3, NJobTypeSendUdpMsg, {7, 3, 42}, 300);  // 42 does not exist
    AddJob(7, NJobTypeSendTcpMsg, {}, 0, false);                   // disabled, still chained
    engine.PostJobRun(*first, 0);
    PumpUntil(2);
    EXPECT_EQ(runs.Ids(), (std::vector<std::int32_t>{3, 7}));
    ASSERT_EQ(runs.Count(), 2u);
    EXPECT_GE(runs.Gap(0, 1).count(), 280);
    EXPECT_EQ(host.started, (std::vector<std::int32_t>{3, 7}));
}

TEST_F(EngineJobsTest, SilentModeHoldsBackItsKindsButStillChains)
{
    Job* typing = AddJob(1, NJobTypeKeyTyping, {2});
    AddJob(2, NJobTypeOpenFolder);
    engine.SetSilentMode(true);
    engine.PostJobRun(*typing, 0);
    PumpUntil(1);
    EXPECT_EQ(runs.Ids(), (std::vector<std::int32_t>{2}));
    engine.SetSilentMode(false);
    engine.PostJobRun(*typing, 0);
    PumpUntil(3);
    EXPECT_EQ(runs.Ids(), (std::vector<std::int32_t>{2, 1, 2}));
}

TEST_F(EngineJobsTest, JobDeletedBeforeItsTurnInAChainIsSkippedQuietly)
{
    Job* first = AddJob(1, NJobTypeSendUdpMsg, {2}, 200);
    Job* second = AddJob(2, NJobTypeSendUdpMsg);
    engine.PostJobRun(*first, 0);
    engine.ProcessRequests();
    scheduler.DeleteJob(second, false);
    PumpUntil(2, std::chrono::milliseconds(800));
    EXPECT_EQ(runs.Ids(), (std::vector<std::int32_t>{1}));
}

TEST_F(EngineJobsTest, ARunningJobUsesItsOwnCopyWhileTheOriginalIsEditedOrDeleted)
{
    std::mutex gate;
    std::condition_variable opened;
    bool go = false;
    wxString seen;
    SetJobAction(NJobTypeRefreshUrl, [&](Job& job) {
        std::unique_lock<std::mutex> lock(gate);
        opened.wait_for(lock, std::chrono::seconds(5), [&] { return go; });
        seen = job.GetParamAt(0);
        runs.Add(job.GetId());
    });
    Job* job = AddJob(5, NJobTypeRefreshUrl);
    {
        auto lock = scheduler.EditLock();
        JobParam p;
        job->GetParam(p);
        p.params = {"http://127.0.0.1:9/before"};
        job->SetParam(p);
    }
    engine.PostJobRun(*job, 0);
    engine.ProcessRequests();
    {
        auto lock = scheduler.EditLock();
        JobParam p;
        job->GetParam(p);
        p.params = {"http://127.0.0.1:9/after"};
        job->SetParam(p);
    }
    scheduler.DeleteJob(job, false);
    {
        std::lock_guard<std::mutex> lock(gate);
        go = true;
    }
    opened.notify_all();
    PumpUntil(1);
    EXPECT_EQ(runs.Ids(), (std::vector<std::int32_t>{5}));
    EXPECT_EQ(seen, "http://127.0.0.1:9/before");
}

TEST_F(EngineJobsTest, PauseStopsTheCheckersAndASecondToggleStartsFreshOnes)
{
    EXPECT_FALSE(engine.TogglePause());  // before the start: nothing happens
    EXPECT_FALSE(engine.IsPaused());
    scheduler.AddTrigger(EverySecondTrigger(1), false);
    Job* job = AddJob(0, NJobTypeSendUdpMsg);
    {
        auto lock = scheduler.EditLock();
        job->TriggerIds().push_back(1);
    }
    scheduler.UpdateJob(job, false);
    engine.StartChecking();
    EXPECT_EQ(engine.ThreadCount(), 4u);
    PumpUntil(1, std::chrono::milliseconds(2500));
    ASSERT_GE(runs.Count(), 1u);

    EXPECT_TRUE(engine.TogglePause());
    EXPECT_TRUE(engine.IsPaused());
    std::this_thread::sleep_for(std::chrono::milliseconds(200));  // the checkers see stopCheck
    const wxDateTime pausedAt = scheduler.Triggers()[0]->GetPrevFire();
    const std::size_t runsBefore = runs.Count();
    std::this_thread::sleep_for(std::chrono::milliseconds(2200));
    engine.ProcessRequests();
    EXPECT_EQ(scheduler.Triggers()[0]->GetPrevFire(), pausedAt);
    EXPECT_EQ(runs.Count(), runsBefore);

    EXPECT_FALSE(engine.TogglePause());
    EXPECT_FALSE(engine.IsPaused());
    PumpUntil(runsBefore + 1, std::chrono::milliseconds(2500));
    EXPECT_GT(runs.Count(), runsBefore);
    EXPECT_GT(scheduler.Triggers()[0]->GetPrevFire(), pausedAt);
}
