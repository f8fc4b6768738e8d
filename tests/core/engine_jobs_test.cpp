// Job threads started by the engine: delay, silent mode, chaining, a job
// deleted while it is chained, and shutdown. Real threads, the real clock.

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include <gtest/gtest.h>

#include "captured_log.h"
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

// Holds a job's action until opened, and tells when one is waiting in it.
struct Gate {
    std::mutex mutex;
    std::condition_variable changed;
    bool entered = false, open = false;
    void Pass()
    {
        std::unique_lock<std::mutex> lock(mutex);
        entered = true;
        changed.notify_all();
        changed.wait_for(lock, std::chrono::seconds(10), [this] { return open; });
    }
    bool WaitEntered()
    {
        std::unique_lock<std::mutex> lock(mutex);
        return changed.wait_for(lock, std::chrono::seconds(5), [this] { return entered; });
    }
    void Open()
    {
        std::lock_guard<std::mutex> lock(mutex);
        open = true;
        changed.notify_all();
    }
};

// Records which jobs ran, in order and when, from any thread.
class RunLog {
public:
    void Add(std::int32_t jid)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_runs.emplace_back(jid, std::chrono::steady_clock::now());
    }
    std::vector<std::int32_t> Ids() const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        std::vector<std::int32_t> ids;
        for (const auto& run : m_runs)
            ids.push_back(run.first);
        return ids;
    }
    long GapMs(std::size_t from, std::size_t to) const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return std::chrono::duration_cast<std::chrono::milliseconds>(m_runs[to].second - m_runs[from].second).count();
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
        scheduler.AddJob(TestJob(jid, kind, {}, std::move(associated), interval, enable), false);
        return scheduler.GetJobById(jid).get();
    }

    // Drains requests on this (the main) thread until `count` runs were seen
    // or the time is up, then a little longer to catch runs too many.
    void PumpUntil(std::size_t count, std::chrono::milliseconds limit = std::chrono::milliseconds(5000))
    {
        const auto end = std::chrono::steady_clock::now() + limit;
        const auto pump = [this] {
            engine.ProcessRequests();
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        };
        while (runs.Ids().size() < count && std::chrono::steady_clock::now() < end)
            pump();
        for (int i = 0; i < 40; ++i)
            pump();
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
    ASSERT_EQ(runs.Ids().size(), 2u);
    EXPECT_GE(runs.GapMs(0, 1), 280);
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
    Gate gate;
    wxString seen;
    SetJobAction(NJobTypeRefreshUrl, [&](Job& job) {
        gate.Pass();
        seen = job.GetParamAt(0);
        runs.Add(job.GetId());
    });
    Job* job = AddJob(5, NJobTypeRefreshUrl);
    auto edit = [&](const char* url) {  // as the job dialog does
        auto lock = scheduler.EditLock();
        JobParam p;
        job->GetParam(p);
        p.params = {url};
        job->SetParam(p);
    };
    edit("http://127.0.0.1:9/before");
    engine.PostJobRun(*job, 0);
    engine.ProcessRequests();
    edit("http://127.0.0.1:9/after");
    scheduler.DeleteJob(job, false);
    gate.Open();
    PumpUntil(1);
    EXPECT_EQ(runs.Ids(), (std::vector<std::int32_t>{5}));
    EXPECT_EQ(seen, "http://127.0.0.1:9/before");
}

TEST_F(EngineJobsTest, ShutdownCutsDelaysShortAndLeavesBehindOnlyAJobThatWillNotEnd)
{
    CapturedLog log;
    wxLog* const previous = wxLog::SetActiveTarget(&log);  // whether or not the capture installs itself
    Gate gate;
    SetJobAction(NJobTypeRefreshUrl, [&](Job& job) {
        gate.Pass();
        runs.Add(job.GetId());
    });
    engine.PostJobRun(*AddJob(555, NJobTypeRefreshUrl), 0);
    engine.PostJobRun(*AddJob(666, NJobTypeSendUdpMsg), 60000);
    engine.ProcessRequests();
    ASSERT_TRUE(gate.WaitEntered());
    const auto start = std::chrono::steady_clock::now();
    engine.Shutdown(300);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
    const std::vector<wxString> behind = log.Matching("left behind");
    ASSERT_EQ(behind.size(), 1u);
    EXPECT_TRUE(behind[0].EndsWith("left behind: JID_555")) << behind[0];
    EXPECT_TRUE(log.Has("<<- [JID_666,"));  // the delayed job gave up its wait and ended
    gate.Open();
    EXPECT_TRUE(engine.WaitForJobThreads(5000));
    EXPECT_EQ(runs.Ids(), (std::vector<std::int32_t>{555}));
    EXPECT_FALSE(log.Has("<<- [JID_555,"));  // left behind: it no longer reaches the log
    wxLog::SetActiveTarget(previous);
}
