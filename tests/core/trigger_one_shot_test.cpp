// The one-shot kinds' own rules: the due tolerance, Count Down's target in
// its condition, With Start counted from the program's start.

#include "core/engine/trigger_checker.h"
#include "core/scheduler.h"
#include "core/triggers/one_shot_triggers.h"
#include "trigger_fixture.h"

static const wxDateTime kMoment = Local(2026, 11, 23, 8, 0, 0);

using OneShotTest = TriggerTest;

TEST_F(OneShotTest, CountDownKeepsItsTargetAndDurationInTheCondition)
{
    At(kMoment, -1000);
    auto trigger = Make(NTriggerTypeCountDown, "0 0 8 23 11 2026 1 2 3 4");
    EXPECT_EQ(trigger->GetNextFire(), kMoment);
    EXPECT_EQ(trigger->GetCondition(), "0 0 8 23 11 2026 1 2 3 4");
    auto& countDown = static_cast<CountDownTrigger&>(*trigger);
    EXPECT_EQ(countDown.Duration().days, 1);
    EXPECT_EQ(countDown.Duration().seconds, 4);
    // Reloading does not restart the count: the target stands in CONDITION.
    At(kMoment, -500);
    auto copy = CopyTrigger(*trigger);
    EXPECT_EQ(copy->GetNextFire(), kMoment);
    // A day the month lacks must not spill into the next month.
    auto february = Make(NTriggerTypeCountDown, "30 15 10 28 2 2027 0 0 1 0");
    EXPECT_EQ(february->GetNextFire(), Local(2027, 2, 28, 10, 15, 30));
}

TEST_F(OneShotTest, WithStartCountsFromTheStartAndFiresOncePerRun)
{
    const wxDateTime start = Local(2026, 11, 22, 9, 0, 0, 0);
    context.SetStartTime(start);
    At(start);
    auto trigger = Make(NTriggerTypeWithStart, "0 0 5 0 - -");
    const wxDateTime due = Local(2026, 11, 22, 9, 5, 0);
    EXPECT_EQ(trigger->GetNextFire(), due);
    EXPECT_EQ(trigger->GetCondition(), "0 0 5 0 - -");

    // No made-up firing for With Start, whatever the setting.
    settings.values["execMissFiredTrigger"] = "1";
    At(due, -150);
    EXPECT_TRUE(trigger->CheckAndAdvance());
    // Finished: the checker never looks at it again in this run.
    EXPECT_TRUE(trigger->IsFinished());
    EXPECT_EQ(trigger->GetPrevFire(), due);

    auto late = Make(NTriggerTypeWithStart, "0 0 1 0 - -");
    At(start, 120000);
    EXPECT_FALSE(late->CheckAndAdvance());
    EXPECT_EQ(late->GetStatus(), NTriggerStatusFired);
}

TEST_F(OneShotTest, StartUpPreparationResetsOnlyUnfiredWithStartTriggers)
{
    context.SetStartTime(Local(2026, 11, 22, 9, 0, 0));
    At(Local(2026, 11, 22, 9, 0, 0));
    Scheduler s(context);
    for (int tid = 1; tid <= 3; ++tid) {
        auto trigger = Make(NTriggerTypeWithStart, "0 1 30 0 - -");
        trigger->SetTid(tid);
        s.AddTrigger(std::move(trigger));
    }
    s.AddTrigger(Make(NTriggerTypeSpecTime, "0 0 8 23 11 ? 2026"));
    s.Triggers()[1]->SetFinished(true);

    const wxDateTime now = Local(2026, 11, 22, 10, 0, 0, 500);
    At(now);
    EXPECT_EQ(ArmWithStartTriggers(s), 2u);
    EXPECT_EQ(s.Triggers()[0]->GetNextFire(), Local(2026, 11, 22, 11, 30, 0, 500));
    EXPECT_EQ(s.Triggers()[1]->GetNextFire(), Local(2026, 11, 22, 10, 30, 0));
    EXPECT_EQ(s.Triggers()[2]->GetNextFire(), Local(2026, 11, 22, 11, 30, 0, 500));
}
