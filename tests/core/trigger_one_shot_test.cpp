// Special Time, Count Down and With Start: the 200 ms window, missed moments
// and the made-up firing.

#include "core/app_start_time.h"
#include "core/scheduler.h"
#include "core/triggers/one_shot_triggers.h"
#include "trigger_fixture.h"

namespace {

const wxDateTime kMoment = Local(2026, 11, 23, 8, 0, 0);

}  // namespace

class OneShotTest : public TriggerTest {};

TEST_F(OneShotTest, FiresOnlyInsideTheWindowBeforeItsMoment)
{
    struct Case {
        int line;
        std::int64_t offsetMs;
        bool fires;
        std::uint32_t status;
        bool finished;
    };
    const Case cases[] = {
        {__LINE__, -250, false, NTriggerStatusWaiting, false},
        {__LINE__, -201, false, NTriggerStatusWaiting, false},
        {__LINE__, -200, true, NTriggerStatusFired, true},
        {__LINE__, -150, true, NTriggerStatusFired, true},
        {__LINE__, 0, true, NTriggerStatusFired, true},
        {__LINE__, 1, false, NTriggerStatusFired, true},  // missed: done for good
    };
    for (std::uint32_t type : {NTriggerTypeSpecTime, NTriggerTypeCountDown}) {
        for (const Case& c : cases) {
            SCOPED_TRACE(testing::Message() << "kind " << type << " line " << c.line);
            At(kMoment, -60000);
            auto trigger = type == NTriggerTypeSpecTime ? Make(type, "0 0 8 23 11 ? 2026")
                                                        : Make(type, "0 0 8 23 11 2026 0 0 5 0");
            ASSERT_EQ(trigger->GetNextFire(), kMoment);
            At(kMoment, c.offsetMs);
            EXPECT_EQ(trigger->CheckAndAdvance(), c.fires);
            EXPECT_EQ(trigger->GetStatus(), c.status);
            EXPECT_EQ(trigger->IsFinished(), c.finished);
            if (c.fires) {
                EXPECT_EQ(trigger->GetPrevFire(), kMoment);
            }
        }
    }
}

TEST_F(OneShotTest, MissedMomentIsMadeUpOnceOnlyWhenAskedAndNeverFired)
{
    struct Case {
        int line;
        const char* setting;
        const char* prevFire;
        bool fires;
    };
    const Case cases[] = {
        {__LINE__, "1", "0 0 0 1 1 * 1999", true},
        {__LINE__, "0", "0 0 0 1 1 * 1999", false},
        {__LINE__, "", "0 0 0 1 1 * 1999", false},
        {__LINE__, "1", "0 0 8 1 11 * 2026", false},  // fired before: not again
    };
    const wxDateTime now = Local(2026, 11, 24, 12, 0, 0, 321);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        settings.values["execMissFiredTrigger"] = c.setting;
        At(now);
        auto trigger = Make(NTriggerTypeSpecTime, "0 0 8 23 11 ? 2026", c.prevFire);
        EXPECT_EQ(trigger->CheckAndAdvance(), c.fires);
        EXPECT_TRUE(trigger->IsFinished());
        EXPECT_EQ(trigger->GetStatus(), NTriggerStatusFired);
        if (c.fires) {
            EXPECT_EQ(trigger->GetPrevFire(), now);
        }
        clock.Advance(50);
        EXPECT_FALSE(trigger->CheckAndAdvance());
    }
}

TEST_F(OneShotTest, DisabledTriggerSaysSoAndNeverFires)
{
    At(kMoment, -5000);
    auto trigger = Make(NTriggerTypeSpecTime, "0 0 8 23 11 ? 2026");
    trigger->SetEnable(false);
    At(kMoment, -100);
    EXPECT_FALSE(trigger->CheckAndAdvance());
    EXPECT_EQ(trigger->GetStatus(), NTriggerStatusDisable);
    EXPECT_FALSE(trigger->IsDue(300));
    trigger->SetEnable(true);
    EXPECT_TRUE(trigger->IsDue(300));
    EXPECT_TRUE(trigger->CheckAndAdvance());
}

TEST_F(OneShotTest, IsDueCoversTheToleranceAheadInclusively)
{
    At(kMoment, -1000);
    auto trigger = Make(NTriggerTypeSpecTime, "0 0 8 23 11 ? 2026");
    At(kMoment, -300001);
    EXPECT_FALSE(trigger->IsDue(300));
    At(kMoment, -300000);
    EXPECT_TRUE(trigger->IsDue(300));
    At(kMoment, 0);
    EXPECT_TRUE(trigger->IsDue(300));
    At(kMoment, 1);
    EXPECT_FALSE(trigger->IsDue(300));
}

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
    SetAppStartTime(start);
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
    SetAppStartTime(Local(2026, 11, 22, 9, 0, 0));
    At(Local(2026, 11, 22, 9, 0, 0));
    Scheduler s;
    for (int tid = 1; tid <= 3; ++tid) {
        auto trigger = Make(NTriggerTypeWithStart, "0 1 30 0 - -");
        trigger->SetTid(tid);
        s.AddTrigger(std::move(trigger), false);
    }
    s.AddTrigger(Make(NTriggerTypeSpecTime, "0 0 8 23 11 ? 2026"), false);
    s.Triggers()[1]->SetFinished(true);

    const wxDateTime now = Local(2026, 11, 22, 10, 0, 0, 500);
    At(now);
    EXPECT_EQ(s.PrepareWithStartTriggers(), 2u);
    EXPECT_EQ(s.Triggers()[0]->GetNextFire(), Local(2026, 11, 22, 11, 30, 0, 500));
    EXPECT_EQ(s.Triggers()[1]->GetNextFire(), Local(2026, 11, 22, 10, 30, 0));
    EXPECT_EQ(s.Triggers()[2]->GetNextFire(), Local(2026, 11, 22, 11, 30, 0, 500));
}
