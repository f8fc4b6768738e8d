// The Scheduler's rules: ids, edits, and the whole-job and trigger edits
// the dialogs store.

#include <gtest/gtest.h>

#include "core/scheduler.h"
#include "harness.h"
#include "trigger_builders.h"

namespace {

std::unique_ptr<Trigger> MakeTrigger(std::int64_t tid, std::uint32_t type = NTriggerTypeSpecTime)
{
    std::unique_ptr<Trigger> trigger = CreateTrigger(type, HarnessContext());
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
    Scheduler s(HarnessContext());
    EXPECT_EQ(s.NewJID(), 0);
    EXPECT_EQ(s.UnusedTid({}), 1);
    // Out of order on purpose: the scan restarts from the front after a clash.
    for (std::int32_t jid : {3, 1, 0})
        s.AddJob(TestJob(jid));
    EXPECT_EQ(s.NewJID(), 2);
    s.AddJob(TestJob(2));
    EXPECT_EQ(s.NewJID(), 4);
    EXPECT_EQ(s.GetJobById(42), nullptr);

    s.AddTrigger(MakeTrigger(11));
    s.AddTrigger(MakeTrigger(4));
    EXPECT_EQ(s.GetTriggerById(4), s.Triggers()[1].get());
    EXPECT_EQ(s.GetTriggerById(42), nullptr);
    // Above every stored TID and every one a dialog holds.
    EXPECT_EQ(s.UnusedTid({}), 12);
    EXPECT_EQ(s.UnusedTid({12, 13}), 14);
}

TEST(SchedulerEdits, SetJobEnableCarriesTheStateToTheJobsTriggersOnly)
{
    Scheduler s(HarnessContext());
    for (std::int64_t tid : {1, 2, 3})
        s.AddTrigger(MakeTrigger(tid));
    s.AddJob(TestJob(0, NJobTypeReminder, {1, 3, 99}));  // 99 names no trigger
    s.AddJob(TestJob(1, NJobTypeReminder, {2}));

    s.SetJobEnable(s.Jobs()[0].get(), false);
    EXPECT_FALSE(s.GetTriggerById(1)->IsEnabled());
    EXPECT_FALSE(s.GetTriggerById(3)->IsEnabled());
    EXPECT_EQ(s.GetTriggerById(1)->GetStatus(), NTriggerStatusDisable);
    // The unknown TID 99 must not reach the last trigger of the list.
    EXPECT_TRUE(s.GetTriggerById(2)->IsEnabled());
    EXPECT_EQ(s.GetTriggerById(2)->GetStatus(), NTriggerStatusFired);
}

TEST(SchedulerEdits, DeleteJobTakesItsTriggersAndOwnersAndKeepsOthersInOrder)
{
    Scheduler s(HarnessContext());
    for (std::int64_t tid : {10, 11, 12, 13, 14})
        s.AddTrigger(MakeTrigger(tid));
    s.AddJob(TestJob(0, NJobTypeReminder, {10, 12}));
    s.AddJob(TestJob(1, NJobTypeReminder, {11, 13, 14}));
    ASSERT_EQ(s.GetTriggerOwner(12)->GetId(), 0);

    Trigger* kept = s.GetTriggerById(13);
    s.DeleteJob(s.Jobs()[0].get());
    EXPECT_EQ(TriggerIds(s), (std::vector<std::int64_t>{11, 13, 14}));
    EXPECT_EQ(s.GetTriggerOwner(10), nullptr);
    EXPECT_EQ(s.GetTriggerOwner(12), nullptr);
    EXPECT_EQ(s.GetTriggerOwner(13)->GetId(), 1);
    EXPECT_EQ(s.GetTriggerById(13), kept);
    ASSERT_EQ(s.Jobs().size(), 1u);
    EXPECT_EQ(s.Jobs()[0]->GetId(), 1);

    s.DeleteTrigger(s.GetTriggerById(11));
    EXPECT_EQ(TriggerIds(s), (std::vector<std::int64_t>{13, 14}));
}

namespace {

TriggerParam Param(std::int64_t tid, std::uint32_t type, const char* condition)
{
    TriggerParam p;
    p.tid = tid;
    p.type = type;
    p.condition = condition;
    p.prevFire = p.nextFire = "0 0 0 1 1 * 1999";
    p.start = "0 0 0 1 1 * 1999";
    p.end = "59 59 23 31 12 * 2999";
    return p;
}

}  // namespace

TEST(SchedulerEdits, AJobDialogResultIsStoredAsOneEdit)
{
    struct Case {
        int line;
        std::int32_t editedJid;         // -1: a new job or a copy
        std::uint32_t kind;             // the job's kind after the edit
        std::vector<TriggerParam> triggers;
        std::set<std::int64_t> changed;
        std::vector<std::int64_t> tids;  // the triggers afterwards, in list order
        const char* condition2;          // TID 2's condition afterwards ("" when gone)
        bool sameJobObject;              // the edited job object kept
    };
    const TriggerParam every = Param(2, NTriggerTypeCron, "0 0 12 * * ?");
    const TriggerParam changed = Param(2, NTriggerTypeCron, "0 30 6 * * ?");
    const TriggerParam otherKind = Param(2, NTriggerTypeSpecTime, "0 0 8 23 11 ? 2030");
    const TriggerParam added = Param(5, NTriggerTypeCron, "0 0 1 * * ?");
    const Case cases[] = {
        // Untouched triggers keep their object and times; a changed one is reloaded.
        {__LINE__, 0, NJobTypeReminder, {every, Param(3, NTriggerTypeCron, "0 0 3 * * ?")}, {}, {2, 3}, "0 0 12 * * ?", true},
        {__LINE__, 0, NJobTypeReminder, {changed, Param(3, NTriggerTypeCron, "0 0 3 * * ?")}, {2}, {2, 3}, "0 30 6 * * ?", true},
        // Removed in the dialog: gone from the list; added: appended.
        {__LINE__, 0, NJobTypeReminder, {every, added}, {}, {2, 5}, "0 0 12 * * ?", true},
        // A trigger of another kind replaces the old one under its TID.
        {__LINE__, 0, NJobTypeReminder, {otherKind, Param(3, NTriggerTypeCron, "0 0 3 * * ?")}, {2}, {3, 2}, "0 0 8 23 11 ? 2030", true},
        // A job of another kind is a new object under the same JID, its triggers made again.
        {__LINE__, 0, NJobTypeOpenUrl, {every}, {}, {2}, "0 0 12 * * ?", false},
        // A copy is a new job beside the original.
        {__LINE__, -1, NJobTypeReminder, {added}, {}, {2, 3, 5}, "0 0 12 * * ?", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        Scheduler s(HarnessContext());
        s.AddTrigger(LoadedTrigger(HarnessContext(), 2, NTriggerTypeCron, "0 0 12 * * ?"));
        s.AddTrigger(LoadedTrigger(HarnessContext(), 3, NTriggerTypeCron, "0 0 3 * * ?"));
        s.AddJob(TestJob(0, NJobTypeReminder, {2, 3}));
        const Job* before = s.Jobs()[0].get();
        const Trigger* untouched = s.GetTriggerById(3);

        JobEdit edit;
        edit.editedJid = c.editedJid;
        edit.job.id = c.editedJid >= 0 ? c.editedJid : s.NewJID();
        edit.job.type = c.kind;
        edit.job.description = "edited";
        edit.triggers = c.triggers;
        edit.changedTids = c.changed;
        for (const TriggerParam& t : c.triggers)
            edit.job.triggerIds.push_back(t.tid);
        ASSERT_TRUE(s.ApplyJobEdit(edit));

        EXPECT_EQ(TriggerIds(s), c.tids);
        const auto job = s.GetJobById(edit.job.id);
        ASSERT_NE(job, nullptr);
        EXPECT_EQ(job->GetType(), c.kind);
        EXPECT_EQ(job.get() == before, c.sameJobObject);
        for (const TriggerParam& t : c.triggers)
            EXPECT_EQ(s.GetTriggerOwner(t.tid), job) << "TID " << t.tid;
        const Trigger* second = s.GetTriggerById(2);
        EXPECT_EQ(second ? second->GetCondition() : wxString(), wxString(c.condition2));
        if (c.editedJid >= 0 && c.sameJobObject && s.GetTriggerById(3)) {
            EXPECT_EQ(s.GetTriggerById(3), untouched);
        }
        EXPECT_TRUE(s.Changes().IsDataChanged());
    }
}

TEST(SchedulerEdits, ATriggerDialogResultRearmsOrReplacesUnderTheSameTid)
{
    Scheduler s(HarnessContext());
    s.AddTrigger(LoadedTrigger(HarnessContext(), 4, NTriggerTypeCron, "0 0 12 * * ?"));
    s.AddJob(TestJob(1, NJobTypeReminder, {4}));
    Trigger* trigger = s.GetTriggerById(4);
    trigger->SetFinished(true);
    trigger->SetNoticeGiven(true);

    ASSERT_TRUE(s.ApplyTriggerEdit(4, Param(4, NTriggerTypeCron, "0 15 9 * * ?")));
    EXPECT_EQ(s.GetTriggerById(4), trigger);
    EXPECT_EQ(trigger->GetCondition(), "0 15 9 * * ?");
    EXPECT_FALSE(trigger->IsFinished());
    EXPECT_FALSE(trigger->IsNoticeGiven());

    ASSERT_TRUE(s.ApplyTriggerEdit(4, Param(4, NTriggerTypeSpecTime, "0 0 8 23 11 ? 2030")));
    ASSERT_NE(s.GetTriggerById(4), nullptr);
    EXPECT_EQ(s.GetTriggerById(4)->GetType(), NTriggerTypeSpecTime);
    EXPECT_EQ(s.GetTriggerOwner(4)->GetId(), 1);
    EXPECT_EQ(s.Triggers().size(), 1u);
    EXPECT_FALSE(s.ApplyTriggerEdit(99, Param(99, NTriggerTypeCron, "* * * * * ?")));
}
