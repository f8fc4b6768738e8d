// Idle Timeout: the exact-second threshold, the quiet period after a firing
// and the units of its condition.

#include "core/triggers/idle_timeout_trigger.h"
#include "trigger_fixture.h"

using IdleTest = TriggerTest;

TEST_F(IdleTest, FiresAtTheExactThresholdOnlyAndThenKeepsQuietFor22Checks)
{
    At(Local(2026, 11, 23, 10, 0, 0));
    auto trigger = Make(NTriggerTypeIdleTimeout, "- 10 - - - -");
    idle.seconds = 599;
    EXPECT_FALSE(trigger->CheckAndAdvance());
    idle.seconds = 601;  // a missed second: this idle period never fires
    clock.Advance(50);
    EXPECT_FALSE(trigger->CheckAndAdvance());
    idle.seconds = 600;
    clock.Advance(50);
    EXPECT_TRUE(trigger->CheckAndAdvance());
    EXPECT_EQ(trigger->GetPrevFire(), Local(2026, 11, 23, 10, 0, 0));

    // Quiet for the next 22 checks, whatever the idle time, and the idle
    // source is not even asked.
    const int queriesBefore = idle.queries;
    for (int i = 0; i < IdleTimeoutTrigger::kQuietChecks; ++i) {
        clock.Advance(50);
        EXPECT_FALSE(trigger->CheckAndAdvance()) << i;
    }
    EXPECT_EQ(idle.queries, queriesBefore);
    // The 23rd check is armed again: 1150 ms later, another second.
    clock.Advance(50);
    EXPECT_TRUE(trigger->CheckAndAdvance());
}

TEST_F(IdleTest, ConditionUnitsAndTheirThresholds)
{
    const struct { int line; const char* condition; int unit; int amount; long fireAt; } cases[] = {
        {__LINE__, "45 - - - - -", IdleTimeoutTrigger::UnitSeconds, 45, 45},
        {__LINE__, "- 10 - - - -", IdleTimeoutTrigger::UnitMinutes, 10, 600},
        {__LINE__, "- - 2 - - -", IdleTimeoutTrigger::UnitHours, 2, 7200},
        {__LINE__, "5 7 - - - -", IdleTimeoutTrigger::UnitMinutes, 7, 420},  // the later one wins
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        At(Local(2026, 11, 23, 10, 0, 0));
        auto trigger = Make(NTriggerTypeIdleTimeout, c.condition);
        auto& idleTrigger = static_cast<IdleTimeoutTrigger&>(*trigger);
        EXPECT_EQ(idleTrigger.GetUnit(), c.unit);
        EXPECT_EQ(idleTrigger.GetAmount(), c.amount);
        idle.seconds = c.fireAt - 1;
        EXPECT_FALSE(trigger->CheckAndAdvance());
        idle.seconds = c.fireAt;
        clock.Advance(1000);
        EXPECT_TRUE(trigger->CheckAndAdvance());
        EXPECT_FALSE(trigger->IsDue(300));
    }
    At(Local(2026, 11, 23, 10, 0, 0));
    auto none = Make(NTriggerTypeIdleTimeout, "- - - - - -");
    idle.seconds = 0;
    EXPECT_FALSE(none->CheckAndAdvance());
    EXPECT_EQ(Make(NTriggerTypeIdleTimeout, "- 10 - - - -")->GetCondition(), "- 10 - - - -");
}

// Without a source of idle time (a session without a display) the trigger
// says so instead of waiting for ever, and waits again once there is one.
TEST_F(IdleTest, WithoutIdleTimeTheStatusSaysWhy)
{
    At(Local(2026, 11, 23, 10, 0, 0));
    auto trigger = Make(NTriggerTypeIdleTimeout, "45 - - - - -");
    context.SetIdleTimeSource(nullptr);
    EXPECT_FALSE(trigger->CheckAndAdvance());
    EXPECT_EQ(trigger->GetStatus(), NTriggerStatusNoIdleTime);
    EXPECT_EQ(TriggerStatusName(trigger->GetStatus()), "No idle time");
    context.SetIdleTimeSource(&idle);
    idle.seconds = 45;
    clock.Advance(50);
    EXPECT_TRUE(trigger->CheckAndAdvance());
    EXPECT_EQ(trigger->GetStatus(), NTriggerStatusWaiting);
}
