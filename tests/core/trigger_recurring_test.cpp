// The recurring kinds' own rules: alignment to the minute, the next moment
// shown after loading, and bad conditions.

#include "core/triggers/cron_driven_trigger.h"
#include "harness.h"
#include "trigger_fixture.h"

class RecurringTest : public TriggerTest {
protected:
    // Moves the clock in 50 ms steps from `from` to `to` and returns the
    // PREVFIRE of every firing.
    std::vector<wxDateTime> Drive(Trigger& trigger, const wxDateTime& from, const wxDateTime& to)
    {
        std::vector<wxDateTime> fired;
        for (At(from); clock.NowMs() <= to.GetValue().GetValue(); clock.Advance(50)) {
            if (trigger.CheckAndAdvance())
                fired.push_back(trigger.GetPrevFire());
        }
        return fired;
    }
};

TEST_F(RecurringTest, IntervalWithAStepThatDoesNotDivideSixtyIsAlignedToTheMinute)
{
    const wxDateTime from = Local(2026, 11, 23, 10, 0, 0);
    At(from, -1000);
    auto trigger = Make(NTriggerTypeInterval, "0/45 * * * * ?");
    const std::vector<wxDateTime> fired = Drive(*trigger, Local(2026, 11, 23, 9, 59, 59), Local(2026, 11, 23, 10, 2, 0));
    const std::vector<wxDateTime> expected = {Local(2026, 11, 23, 10, 0, 0),  Local(2026, 11, 23, 10, 0, 45),
                                              Local(2026, 11, 23, 10, 1, 0),  Local(2026, 11, 23, 10, 1, 45),
                                              Local(2026, 11, 23, 10, 2, 0)};
    EXPECT_EQ(fired, expected);
}

TEST_F(RecurringTest, MalformedConditionNeverFiresShowsInvalidAndIsReportedOnce)
{
    const struct { std::uint32_t type; const char* condition; const char* message; } cases[] = {
        {NTriggerTypeCron, "0 0 25 * * ?", "Hours \"25\": Specified range exceeds maximum (0-23)."},
        {NTriggerTypeInterval, "0/0 * * * * ?", "Seconds \"0/0\": Incrementer must be a positive value (0-59)."},
        {NTriggerTypeEveryMinute, "0, * * * * *", "Seconds \"0,\": Value cannot end with comma (0-59)."},
        {NTriggerTypeEveryDay, "0 0 8 * *", "cron expression must have six fields"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.condition);
        RecordedMessages messages(context);
        At(Local(2026, 11, 23, 9, 59, 58, 400));
        std::unique_ptr<Trigger> trigger;
        ASSERT_NO_THROW(trigger = Make(c.type, c.condition));
        EXPECT_EQ(trigger->GetStatus(), NTriggerStatusInvalid);
        // Checks that land on whole seconds, where "now" used to match.
        EXPECT_TRUE(Drive(*trigger, Local(2026, 11, 23, 10, 0, 0), Local(2026, 11, 23, 10, 0, 3)).empty());
        EXPECT_EQ(trigger->GetStatus(), NTriggerStatusInvalid);
        EXPECT_FALSE(trigger->GetNextFire().IsValid());
        EXPECT_FALSE(trigger->IsDue(300));
        EXPECT_EQ(messages.Boxes(), (std::vector<std::string>{c.message}));
        EXPECT_EQ(TriggerStatusName(trigger->GetStatus()), "Invalid");

        // A corrected condition is parsed afresh and the trigger works again.
        trigger->SetCondition("0 0 12 * * ?");
        trigger->CheckAndAdvance();
        EXPECT_EQ(trigger->GetStatus(), NTriggerStatusWaiting);
        EXPECT_EQ(trigger->GetNextFire(), Local(2026, 11, 23, 12, 0, 0));
    }
}
