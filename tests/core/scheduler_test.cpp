// The Scheduler's rules: ids, edits and their observers, the category queries.

#include <gtest/gtest.h>

#include "core/scheduler.h"
#include "trigger_builders.h"

namespace {

struct CountingObserver : JobObserver, TriggerObserver {
    int calls = 0;
    void Changed() override { ++calls; }
};

struct RecordingRuns : JobRunRequests {
    std::vector<std::pair<std::int32_t, int>> posted;
    void PostJobRun(Job& job, int value) override { posted.emplace_back(job.GetId(), value); }
};

std::unique_ptr<Trigger> MakeTrigger(std::int64_t tid, std::uint32_t type = NTriggerTypeSpecTime)
{
    std::unique_ptr<Trigger> trigger = CreateTrigger(type);
    trigger->SetTid(tid);
    return trigger;
}

std::vector<std::int64_t> TriggerIds(const Scheduler& s)
{
    std::vector<std::int64_t> ids;
    for (const auto& t : s.Triggers())
        ids.push_back(t->GetTid());
    return ids;
}

}  // namespace

TEST(SchedulerIds, NewJidReusesTheLowestGapAndLookupsFindById)
{
    Scheduler s;
    EXPECT_EQ(s.NewJID(), 0);
    EXPECT_EQ(s.MaxJID(), 0);
    EXPECT_EQ(s.MaxTID(), 0);
    // Out of order on purpose: the scan restarts from the front after a clash.
    for (std::int32_t jid : {3, 1, 0})
        s.AddJob(TestJob(jid), false);
    EXPECT_EQ(s.NewJID(), 2);
    s.AddJob(TestJob(2), false);
    EXPECT_EQ(s.NewJID(), 4);
    EXPECT_EQ(s.MaxJID(), 3);
    EXPECT_EQ(s.GetJobById(42), nullptr);

    s.AddTrigger(MakeTrigger(11), false);
    s.AddTrigger(MakeTrigger(4), false);
    EXPECT_EQ(s.GetTriggerById(4), s.Triggers()[1].get());
    EXPECT_EQ(s.GetTriggerById(42), nullptr);
    EXPECT_FALSE(s.IsTIDFree(4));
    EXPECT_TRUE(s.IsTIDFree(5));
    EXPECT_EQ(s.MaxTID(), 11);
}

TEST(SchedulerEdits, UpdateMovesTheChangedMarkerAndRearmsAFinishedTrigger)
{
    Scheduler s;
    CountingObserver jobs, triggers;
    s.SetJobObserver(&jobs);
    s.SetTriggerObserver(&triggers);
    s.AddJob(TestJob(0), false);  // notify=false stays quiet
    s.AddTrigger(MakeTrigger(1), true);
    Trigger* first = s.Triggers()[0].get();
    first->SetFinished(true);
    s.AddTrigger(MakeTrigger(2), true);
    EXPECT_FALSE(first->IsChanged());
    s.UpdateTrigger(first, true);
    EXPECT_TRUE(first->IsChanged());
    EXPECT_FALSE(first->IsFinished());
    EXPECT_FALSE(s.Triggers()[1]->IsChanged());
    EXPECT_EQ(jobs.calls, 0);
    EXPECT_EQ(triggers.calls, 3);
    EXPECT_TRUE(s.IsDataChanged());
}

TEST(SchedulerEdits, SetJobEnableCarriesTheStateToTheJobsTriggersOnly)
{
    Scheduler s;
    for (std::int64_t tid : {1, 2, 3})
        s.AddTrigger(MakeTrigger(tid), false);
    s.AddJob(TestJob(0, NJobTypeReminder, {1, 3, 99}), false);  // 99 names no trigger
    s.AddJob(TestJob(1, NJobTypeReminder, {2}), false);

    s.SetJobEnable(s.Jobs()[0].get(), false, false);
    EXPECT_FALSE(s.GetTriggerById(1)->IsEnabled());
    EXPECT_FALSE(s.GetTriggerById(3)->IsEnabled());
    EXPECT_EQ(s.GetTriggerById(1)->GetStatus(), NTriggerStatusDisable);
    // The unknown TID 99 must not reach the last trigger of the list.
    EXPECT_TRUE(s.GetTriggerById(2)->IsEnabled());
    EXPECT_EQ(s.GetTriggerById(2)->GetStatus(), NTriggerStatusFired);
}

TEST(SchedulerEdits, DeleteJobTakesItsTriggersAndOwnersAndKeepsOthersInOrder)
{
    Scheduler s;
    for (std::int64_t tid : {10, 11, 12, 13, 14})
        s.AddTrigger(MakeTrigger(tid), false);
    s.AddJob(TestJob(0, NJobTypeReminder, {10, 12}), false);
    s.AddJob(TestJob(1, NJobTypeReminder, {11, 13, 14}), false);
    ASSERT_EQ(s.GetTriggerOwner(12)->GetId(), 0);

    Trigger* kept = s.GetTriggerById(13);
    s.DeleteJob(s.Jobs()[0].get(), true);
    EXPECT_EQ(TriggerIds(s), (std::vector<std::int64_t>{11, 13, 14}));
    EXPECT_EQ(s.GetTriggerOwner(10), nullptr);
    EXPECT_EQ(s.GetTriggerOwner(12), nullptr);
    EXPECT_EQ(s.GetTriggerOwner(13)->GetId(), 1);
    EXPECT_EQ(s.GetTriggerById(13), kept);
    ASSERT_EQ(s.Jobs().size(), 1u);
    EXPECT_EQ(s.Jobs()[0]->GetId(), 1);

    s.DeleteTrigger(s.GetTriggerById(11), false);
    EXPECT_EQ(TriggerIds(s), (std::vector<std::int64_t>{13, 14}));
}

TEST(SchedulerQueries, CategoryQueriesKeepListOrderAndListEachJobOnce)
{
    Scheduler s;
    s.AddTrigger(MakeTrigger(1, NTriggerTypeCron), false);
    s.AddTrigger(MakeTrigger(2, NTriggerTypeCron), false);
    s.AddTrigger(MakeTrigger(3, NTriggerTypeIdleTimeout), false);
    s.AddJob(TestJob(4, NJobTypeShutdown, {1, 2}), false);
    s.AddJob(TestJob(2, NJobTypeReminder, {3}), false);
    s.AddJob(TestJob(7, NJobTypeShutdown, {2}), false);
    s.Jobs()[1]->SetEnable(false);

    auto ids = [](const std::vector<Job*>& jobs) {
        std::vector<std::int32_t> out;
        for (const Job* job : jobs)
            out.push_back(job->GetId());
        return out;
    };
    EXPECT_EQ(ids(s.JobsByStatus(true)), (std::vector<std::int32_t>{4, 7}));
    EXPECT_EQ(ids(s.JobsByStatus(false)), (std::vector<std::int32_t>{2}));
    EXPECT_EQ(ids(s.JobsByJobType(NJobTypeShutdown)), (std::vector<std::int32_t>{4, 7}));
    EXPECT_EQ(ids(s.JobsByTriggerType(NTriggerTypeCron)), (std::vector<std::int32_t>{4, 7}));
    EXPECT_EQ(ids(s.JobsByTriggerType(NTriggerTypeIdleTimeout)), (std::vector<std::int32_t>{2}));
    EXPECT_TRUE(s.JobsByTriggerType(NTriggerTypeWithStart).empty());
}

TEST(SchedulerRunByNumber, RefusesAbove99AndUnknownJidsAndPostsWith128)
{
    Scheduler s;
    RecordingRuns runs;
    s.SetJobRunRequests(&runs);
    EXPECT_FALSE(s.RunJobByNumber(1));  // no jobs at all
    s.AddJob(TestJob(99), false);
    s.AddJob(TestJob(100), false);
    EXPECT_FALSE(s.RunJobByNumber(100));
    EXPECT_FALSE(s.RunJobByNumber(5));  // no such job: never the last one of the list
    EXPECT_TRUE(s.RunJobByNumber(99));
    ASSERT_EQ(runs.posted.size(), 1u);
    EXPECT_EQ(runs.posted[0], std::make_pair(99, 128));
}
