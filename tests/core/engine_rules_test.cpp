// The firing loop's rules: the thread-count table, the share by TID, what a
// checker pass posts; and translation from any thread.

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <thread>

#include "core/engine/checker_plan.h"
#include "core/scheduler.h"
#include "core/engine/trigger_checker.h"
#include "trigger_fixture.h"

TEST(CheckerPlan, ThreadCountTableIsExact)
{
    const struct { std::size_t triggers, threads, checks; } cases[] = {
        {0, 4, 4}, {15, 4, 4}, {16, 8, 4}, {31, 8, 4}, {32, 8, 8}, {63, 8, 8}, {64, 16, 8}, {127, 16, 8}, {128, 16, 16},
        {200, 16, 16}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.triggers);
        const CheckerPlan plan = ChooseCheckerPlan(c.triggers);
        EXPECT_EQ(plan.threadCount, c.threads);
        EXPECT_EQ(plan.checkTriggerCnt, c.checks);
    }
}

TEST(Translation, EveryFormWaitsForTheLockTheWorkersTake)
{
    // wxGetTranslation is not thread-safe: `_()`, wxPLURAL and a call of
    // wxGetTranslation written out must all take the one translation lock.
    const std::function<wxString()> forms[] = {[] { return _("Reminder"); },
                                               [] { return wxGetTranslation("Reminder"); },
                                               [] { return wxPLURAL("Reminder", "Reminders", 1); }};
    for (const auto& translate : forms) {
        std::unique_lock<std::mutex> held(TranslationMutex());
        std::atomic<bool> done{false};
        std::thread other([&] { done = translate() == "Reminder"; });
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_FALSE(done.load());
        held.unlock();
        other.join();
        EXPECT_TRUE(done.load());
    }
}

namespace {

struct RecordingSink : TriggerCheckSink {
    std::vector<std::int32_t> runs;
    std::vector<std::int32_t> notices;
    std::vector<RunCause> causes;
    bool RunJob(const std::shared_ptr<Job>& job, const RunCause& cause) override
    {
        runs.push_back(job->GetId());
        causes.push_back(cause);
        return true;
    }
    void AdvanceNotice(const std::shared_ptr<Job>& job) override { notices.push_back(job->GetId()); }
};

}  // namespace

class CheckerPassTest : public TriggerTest {
protected:
    const wxDateTime moment = Local(2026, 11, 23, 8, 0, 0);

    void AddJobWithTrigger(Scheduler& s, std::int32_t jid, std::uint32_t jobKind, std::int64_t tid)
    {
        auto trigger = Make(NTriggerTypeSpecTime, "0 0 8 23 11 ? 2026");
        trigger->SetTid(tid);
        s.AddTrigger(std::move(trigger));
        s.AddJob(TestJob(jid, jobKind, {static_cast<std::int32_t>(tid)}));
    }
};

TEST_F(CheckerPassTest, OnlyTheThreadOfItsTidChecksATriggerAndNotWhileItIsEdited)
{
    At(moment, -60000);
    Scheduler s(context);
    AddJobWithTrigger(s, 0, NJobTypeReminder, 5);
    s.Changes().ClearChanged();
    At(moment, -100);
    RecordingSink sink;
    for (std::size_t index : {0u, 2u, 3u})
        CheckTriggerShare(s, 4, index, sink);
    s.Triggers()[0]->SetEditing(true);  // open in a dialog: not checked either
    CheckTriggerShare(s, 4, 1, sink);
    EXPECT_TRUE(sink.runs.empty());
    EXPECT_FALSE(s.Triggers()[0]->IsFinished());
    s.Triggers()[0]->SetEditing(false);
    CheckTriggerShare(s, 4, 1, sink);
    EXPECT_EQ(sink.runs, (std::vector<std::int32_t>{0}));
    ASSERT_EQ(sink.causes.size(), 1u);  // the history names the trigger and its kind
    // Fired 100 ms ahead, the run carries the moment itself to wait for.
    EXPECT_EQ(std::make_tuple(sink.causes[0].origin, sink.causes[0].tid, sink.causes[0].triggerKind,
                              sink.causes[0].dueMs),
              std::make_tuple(RunOrigin::Trigger, 5, static_cast<std::int32_t>(NTriggerTypeSpecTime),
                              moment.GetValue().GetValue()));
    EXPECT_TRUE(s.Changes().IsDataChanged());
    EXPECT_EQ(s.Changes().GetDataChangedTime(), clock.Now());
    // Finished: never looked at again.
    CheckTriggerShare(s, 4, 1, sink);
    EXPECT_EQ(sink.runs.size(), 1u);
}

TEST_F(CheckerPassTest, DisabledJobPostsNothingButItsTriggerStillAdvances)
{
    At(moment, -60000);
    Scheduler s(context);
    AddJobWithTrigger(s, 0, NJobTypeReminder, 1);
    s.Jobs()[0]->SetEnable(false);  // the trigger itself stays enabled
    s.Changes().ClearChanged();
    At(moment, -100);
    RecordingSink sink;
    CheckTriggerShare(s, 4, 1, sink);
    EXPECT_TRUE(sink.runs.empty());
    EXPECT_FALSE(s.Changes().IsDataChanged());
    EXPECT_TRUE(s.Triggers()[0]->IsFinished());
    EXPECT_EQ(s.Triggers()[0]->GetPrevFire(), moment);
}

TEST_F(CheckerPassTest, AdvanceNoticeOnceAndOnlyForWarnBeforeRunJobs)
{
    At(moment, -60000);
    Scheduler s(context);
    AddJobWithTrigger(s, 0, NJobTypeShutdown, 4);  // announced before it runs
    AddJobWithTrigger(s, 1, NJobTypeReminder, 8);  // not announced
    At(moment, -299000);
    RecordingSink sink;
    CheckTriggerShare(s, 4, 0, sink);
    EXPECT_EQ(sink.notices, (std::vector<std::int32_t>{0}));
    EXPECT_TRUE(s.GetTriggerById(4)->IsNoticeGiven());
    EXPECT_TRUE(s.GetTriggerById(8)->IsNoticeGiven());
    clock.Advance(1000);
    CheckTriggerShare(s, 4, 0, sink);
    EXPECT_EQ(sink.notices.size(), 1u);
    // Editing the trigger clears the flag, so a new notice can come.
    TriggerParam edited;
    s.GetTriggerById(4)->MakeParam(edited);
    s.ApplyTriggerEdit(4, edited);
    EXPECT_FALSE(s.GetTriggerById(4)->IsNoticeGiven());
}
