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

// After the wall clock steps, firing resumes at the first occurrence after
// the new time: a step back must not leave the last firing (now in the
// future) blocking every firing until the clock catches up with it; a step
// forward skips what it jumped over. Daylight-saving changes are no steps:
// the clock runs on and the occurrences follow local time.
TEST_F(RecurringTest, AfterAClockStepFiringResumesAtTheFirstOccurrenceAfterIt)
{
    const struct {
        int line;
        const char* condition;
        wxDateTime before;      // a firing here, then the clock steps...
        std::int64_t stepMs;    // ...by this much (0: it runs on)
        wxDateTime firstAfter;  // the first firing after the step
    } cases[] = {
        {__LINE__, "*/10 * * * * ?", Local(2026, 11, 23, 10, 3, 0), -180000, Local(2026, 11, 23, 10, 0, 10)},
        {__LINE__, "*/10 * * * * ?", Local(2026, 11, 23, 10, 3, 0), -3600000, Local(2026, 11, 23, 9, 3, 10)},
        {__LINE__, "0 */5 * * * ?", Local(2026, 11, 23, 10, 5, 0), -3600000, Local(2026, 11, 23, 9, 10, 0)},
        {__LINE__, "*/10 * * * * ?", Local(2026, 11, 23, 10, 3, 0), 3600000, Local(2026, 11, 23, 11, 3, 10)},
        // Daylight saving begins (02:00 -> 03:00) and ends (03:00 -> 02:00).
        {__LINE__, "0 */30 * * * ?", Local(2026, 3, 29, 1, 30, 0), 0, Local(2026, 3, 29, 3, 0, 0)},
        {__LINE__, "0 0 * * * ?", Local(2026, 10, 25, 1, 0, 0), 0, Local(2026, 10, 25, 2, 0, 0)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        At(c.before, -100);
        auto trigger = Make(NTriggerTypeCron, c.condition);
        ASSERT_TRUE(trigger->CheckAndAdvance());
        ASSERT_EQ(trigger->GetPrevFire(), c.before);
        clock.Advance(100 + c.stepMs);
        std::vector<wxDateTime> fired;
        for (int i = 0; i < 3 * 3600 * 20 && fired.empty(); ++i, clock.Advance(50)) {
            if (trigger->CheckAndAdvance())
                fired.push_back(trigger->GetPrevFire());
        }
        ASSERT_EQ(fired.size(), 1u);
        EXPECT_EQ(fired[0], c.firstAfter) << fired[0].FormatISOCombined();
        // The same occurrence never twice: the next firing is a later one.
        clock.Advance(300);
        EXPECT_FALSE(trigger->CheckAndAdvance());
    }
}
