// Job threads started by the engine: delay, silent mode, chaining and shutdown. Real threads, the real clock.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <mutex>
#include <thread>

#include <gtest/gtest.h>

#include "captured_log.h"
#include "harness.h"
#include "trigger_builders.h"

#include "core/engine/scheduler_engine.h"
#include "core/history/run_history.h"
#include "core/history/run_report.h"
#include "core/jobs/job_actions.h"
#include "core/session/session_context.h"

namespace {

class TestHost : public EngineHost {
public:
    void WakeMainThread() override {}
    void JobStarted(const Job& job) override { started.push_back(job.GetId()); }
    std::vector<std::int32_t> started;
};

// Records which jobs ran, in order and when, from any thread.
class RunLog {
public:
    void Add(std::int32_t jid)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_ids.push_back(jid), m_times.push_back(std::chrono::steady_clock::now());
    }
    std::vector<std::int32_t> Ids() const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_ids;
    }
    long GapMs(std::size_t from, std::size_t to) const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return std::chrono::duration_cast<std::chrono::milliseconds>(m_times[to] - m_times[from]).count();
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::int32_t> m_ids;
    std::vector<std::chrono::steady_clock::time_point> m_times;
};

class EngineJobsTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        for (std::uint32_t kind = 0; kind < NJobTypeCount; ++kind)
            context->Actions().Set(kind, [this](const Job& job, SessionContext&) { runs.Add(job.GetId()); });
    }
    void TearDown() override
    {
        engine.Shutdown();
        EXPECT_TRUE(engine.WaitForJobThreads(5000));
    }
    void Run(std::int32_t jid) { engine.RunJob(scheduler.GetJobById(jid)); }

    Job* AddJob(std::int32_t jid, std::uint32_t kind, IdList associated = {}, std::int32_t interval = 0,
                bool enable = true)
    {
        scheduler.AddJob(TestJob(jid, kind, {}, std::move(associated), interval, enable));
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

    std::shared_ptr<SessionContext> context = std::make_shared<SessionContext>();
    Scheduler scheduler{*context};
    TestHost host;
    SchedulerEngine engine{scheduler, context, host};
    RunLog runs;
};

}  // namespace

TEST_F(EngineJobsTest, ChainSkipsOwnIdAndStartsDisabledJobsAfterTheInterval)
{
    AddJob(3, NJobTypeSendUdpMsg, {7, 3, 42}, 300);  // 42 does not exist
    AddJob(7, NJobTypeSendTcpMsg, {}, 0, false);      // disabled, still chained
    Run(3);
    PumpUntil(2);
    EXPECT_EQ(runs.Ids(), (std::vector<std::int32_t>{3, 7}));
    ASSERT_EQ(runs.Ids().size(), 2u);
    EXPECT_GE(runs.GapMs(0, 1), 280);
    EXPECT_EQ(host.started, (std::vector<std::int32_t>{3, 7}));
}

TEST_F(EngineJobsTest, SilentModeHoldsBackItsKindsButStillChains)
{
    AddJob(1, NJobTypeKeyTyping, {2});
    AddJob(2, NJobTypeOpenFolder);
    engine.SetSilentMode(true);
    Run(1);
    PumpUntil(1);
    EXPECT_EQ(runs.Ids(), (std::vector<std::int32_t>{2}));
    engine.SetSilentMode(false);
    Run(1);
    PumpUntil(3);
    EXPECT_EQ(runs.Ids(), (std::vector<std::int32_t>{2, 1, 2}));
}

TEST_F(EngineJobsTest, ShutdownCutsDelaysShortAndLeavesBehindOnlyAJobThatWillNotEnd)
{
    CapturedLog log;
    wxLog* const previous = wxLog::SetActiveTarget(&log);  // whether or not the capture installs itself
    std::promise<void> entered, open;  // hold the job's action until opened
    std::shared_future<void> opened = open.get_future().share();
    context->Actions().Set(NJobTypeRefreshUrl, [&](const Job& job, SessionContext&) {
        entered.set_value();
        opened.wait_for(std::chrono::seconds(10));
        runs.Add(job.GetId());
    });
    AddJob(555, NJobTypeRefreshUrl);
    AddJob(665, NJobTypeSendUdpMsg, {666}, 60000);  // 666 waits a minute
    AddJob(666, NJobTypeSendUdpMsg);
    Run(555);
    Run(665);
    engine.ProcessRequests();
    ASSERT_EQ(entered.get_future().wait_for(std::chrono::seconds(5)), std::future_status::ready);
    // 665 ran and ended; its chained 666 is waiting out its minute.
    ASSERT_TRUE(WaitUntil([&] {
        engine.ProcessRequests();
        return runs.Ids().size() == 1 && engine.JobThreadCount() == 2;
    }));
    const auto start = std::chrono::steady_clock::now();
    engine.Shutdown(300);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
    const std::vector<wxString> behind = log.Matching("left behind");
    ASSERT_EQ(behind.size(), 1u);
    EXPECT_TRUE(behind[0].EndsWith("left behind: JID_555")) << behind[0];
    EXPECT_TRUE(log.Has("<<- [JID_666,"));   // the delayed job gave up its wait and ended
    EXPECT_FALSE(log.Has("->> [JID_666,"));  // without starting
    open.set_value();
    EXPECT_TRUE(engine.WaitForJobThreads(5000));
    EXPECT_EQ(runs.Ids(), (std::vector<std::int32_t>{665, 555}));
    EXPECT_FALSE(log.Has("<<- [JID_555,"));  // left behind: it no longer reaches the log
    wxLog::SetActiveTarget(previous);
}

// What the engine hands the run history: every run, every run that did not
// happen and why, with what asked for it, into a real database.
TEST_F(EngineJobsTest, RunsAndRunsNotMadeReachTheHistory)
{
    TempDir dir;
    RunHistory history(*context, dir.File("history.db"));
    ASSERT_TRUE(history.Start());
    context->SetRecorder(&history);
    context->Actions().Set(NJobTypeSendTcpMsg, [this](const Job& job, SessionContext&) {
        ReportRunDetails("connecting to 127.0.0.1:9");
        ReportRunFailed("Connection refused");
        runs.Add(job.GetId());
    });
    AddJob(1, NJobTypeSendUdpMsg, {2, 42});     // 42 does not exist
    AddJob(2, NJobTypeSendTcpMsg);              // fails
    AddJob(3, NJobTypeKeyTyping);               // held back in silent mode
    AddJob(4, NJobTypeSendUdpMsg, {5}, 60000);  // 5 would be due in a minute
    AddJob(5, NJobTypeSendUdpMsg);
    Run(1);
    Run(4);
    PumpUntil(3);
    engine.SetSilentMode(true);
    Run(3);
    PumpUntil(4, std::chrono::milliseconds(300));
    engine.Shutdown();
    context->SetRecorder(nullptr);
    ASSERT_TRUE(history.Flush());

    const struct {
        int line;
        std::int32_t jid;
        RunOutcome outcome;
        RunOrigin origin;
        std::int32_t sourceJid;
        NotRunReason reason;
        std::string details;
    } cases[] = {
        {__LINE__, 1, RunOutcome::Succeeded, RunOrigin::ExecuteCommand, 0, NotRunReason::None, ""},
        {__LINE__, 2, RunOutcome::Failed, RunOrigin::Chain, 1, NotRunReason::None, "Connection refused"},
        {__LINE__, 42, RunOutcome::NotRun, RunOrigin::Chain, 1, NotRunReason::ChainedJobGone, ""},
        {__LINE__, 3, RunOutcome::NotRun, RunOrigin::ExecuteCommand, 0, NotRunReason::SilentMode, ""},
        {__LINE__, 4, RunOutcome::Succeeded, RunOrigin::ExecuteCommand, 0, NotRunReason::None, ""},
        {__LINE__, 5, RunOutcome::NotRun, RunOrigin::Chain, 4, NotRunReason::ProgramEnded, ""},
    };
    EXPECT_EQ(history.Count(), static_cast<std::int64_t>(std::size(cases)));
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        const std::vector<RunRecord> found = history.Query({c.jid, OutcomeFilter::All, std::nullopt, "", -1});
        ASSERT_EQ(found.size(), 1u);
        const RunRecord& r = found[0];
        EXPECT_EQ(std::make_tuple(r.outcome, r.origin, r.sourceJid, r.reason, r.details),
                  std::make_tuple(c.outcome, c.origin, c.sourceJid, c.reason, c.details));
        // Started and ended when it ran; neither when it did not.
        EXPECT_EQ(r.startMs != 0 && r.endMs >= r.startMs, c.outcome != RunOutcome::NotRun);
        EXPECT_GT(r.dueMs, 0);
    }
    // A chained run is due after its interval.
    const RunRecord chained = history.Query({5, OutcomeFilter::All, std::nullopt, "", 1}).at(0);
    const RunRecord source = history.Query({4, OutcomeFilter::All, std::nullopt, "", 1}).at(0);
    EXPECT_GE(chained.dueMs, source.endMs + 60000);
}

// Two schedulers in one process, each with its own clock and actions: a
// trigger fires in the session whose clock reaches its moment, and its job
// runs with that session's actions only.
TEST(EngineSideBySide, TwoSessionsKeepTheirOwnClocksAndActions)
{
    const wxDateTime moment = Local(2026, 11, 23, 8, 0, 0);
    struct Session {
        ManualClock clock;
        std::shared_ptr<SessionContext> context = std::make_shared<SessionContext>(clock);
        Scheduler scheduler{*context};
        TestHost host;
        SchedulerEngine engine{scheduler, context, host};
        std::atomic<int> runs{0};
    };
    Session early, late;
    for (Session* s : {&early, &late}) {
        s->clock.Set(moment);
        s->clock.Advance(-3600000);
        s->context->Actions().Set(NJobTypeReminder, [s](const Job&, SessionContext& context) {
            EXPECT_EQ(&context, s->context.get());
            ++s->runs;
        });
        s->scheduler.AddTrigger(LoadedTrigger(*s->context, 1, NTriggerTypeSpecTime, "0 0 8 23 11 ? 2026"));
        s->scheduler.AddJob(TestJob(0, NJobTypeReminder, {1}));
        s->engine.StartChecking();
    }
    early.clock.Set(moment);
    early.clock.Advance(-100);
    auto pumpUntil = [&](const std::function<bool()>& done) {
        return WaitUntil([&] {
            early.engine.ProcessRequests();
            late.engine.ProcessRequests();
            return done();
        }, 5000);
    };
    ASSERT_TRUE(pumpUntil([&] { return early.runs == 1; }));
    EXPECT_EQ(late.runs, 0);
    late.clock.Set(moment);
    late.clock.Advance(-50);
    ASSERT_TRUE(pumpUntil([&] { return late.runs == 1; }));
    EXPECT_EQ(early.runs, 1);
    for (Session* s : {&early, &late}) {
        s->engine.Shutdown();
        EXPECT_TRUE(s->engine.WaitForJobThreads(5000));
    }
}

// A burst of runs larger than the job threads allowed: the excess waits its
// turn, every run happens once, threads never exceed the bound, and every
// thread is joined (none left over).
TEST_F(EngineJobsTest, ABurstWaitsForFreeThreadsAndEveryRunHappensOnce)
{
    // Thousands of short runs: threads start and end thousands of times a
    // second (run under the thread and address sanitizers too).
    constexpr int kRuns = 20 * static_cast<int>(SchedulerEngine::kMaxJobThreads);
    std::atomic<int> busy{0}, peak{0};
    context->Actions().Set(NJobTypeSendUdpMsg, [&](const Job& job, SessionContext&) {
        const int now = ++busy;
        for (int seen = peak.load(); now > seen && !peak.compare_exchange_weak(seen, now);) {
        }
        std::this_thread::sleep_for(std::chrono::microseconds(job.GetId() % 7 == 0 ? 2000 : 50));
        --busy;
        runs.Add(job.GetId());
    });
    for (int jid = 0; jid < kRuns; ++jid)
        AddJob(jid, NJobTypeSendUdpMsg);
    for (int jid = 0; jid < kRuns; ++jid)
        Run(jid);
    std::size_t mostThreads = 0;
    ASSERT_TRUE(WaitUntil([&] {
        engine.ProcessRequests();
        mostThreads = std::max(mostThreads, engine.JobThreadCount());
        return runs.Ids().size() == static_cast<std::size_t>(kRuns) && engine.JobThreadCount() == 0;
    }, 60000));
    EXPECT_LE(mostThreads, SchedulerEngine::kMaxJobThreads);
    EXPECT_LE(peak.load(), static_cast<int>(SchedulerEngine::kMaxJobThreads));
    std::vector<std::int32_t> ids = runs.Ids();
    std::sort(ids.begin(), ids.end());
    EXPECT_EQ(std::unique(ids.begin(), ids.end()), ids.end());
    EXPECT_EQ(engine.WaitingRunCount(), 0u);
}
