// The recurring kinds (Interval, Every ..., Cron): the firing window, the
// double-fire guard, the active period, made-up firings and bad conditions.

#include "core/triggers/cron_driven_trigger.h"
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

TEST_F(RecurringTest, EveryDayFiresInsideTheWindowAndOnlyOnce)
{
    const wxDateTime eight = Local(2026, 11, 23, 8, 0, 0);
    struct Case {
        int line;
        std::int64_t offsetMs;
        bool fires;
    };
    const Case cases[] = {
        {__LINE__, -250, false}, {__LINE__, -201, false}, {__LINE__, -200, true},
        {__LINE__, -150, true},  {__LINE__, -1, true},    {__LINE__, 1, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        At(eight, -3600000);
        auto trigger = Make(NTriggerTypeEveryDay, "0 0 8 * * ?");
        At(eight, c.offsetMs);
        EXPECT_EQ(trigger->CheckAndAdvance(), c.fires);
        EXPECT_EQ(trigger->GetStatus(), NTriggerStatusWaiting);
        EXPECT_FALSE(trigger->IsFinished());
        if (c.fires) {
            EXPECT_EQ(trigger->GetPrevFire(), eight);
            EXPECT_EQ(trigger->GetNextFire(), Local(2026, 11, 24, 8, 0, 0));
            // The next checks of the same window do not fire again.
            clock.Advance(50);
            EXPECT_FALSE(trigger->CheckAndAdvance());
        }
    }
}

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

TEST_F(RecurringTest, EveryWeekFiresOnWeekdaysOnly)
{
    At(Local(2026, 11, 21, 0, 0, 0));
    auto trigger = Make(NTriggerTypeEveryWeek, "0 30 8 ? * 1-5");
    std::vector<int> firedDays;
    // 21 November 2026 is a Saturday; try 08:30 on nine days in a row.
    for (int day = 21; day <= 29; ++day) {
        const wxDateTime moment = Local(2026, 11, day, 8, 30, 0);
        for (std::int64_t offset : {-150, -100, -50, 0}) {
            At(moment, offset);
            if (trigger->CheckAndAdvance())
                firedDays.push_back(day);
        }
    }
    EXPECT_EQ(firedDays, (std::vector<int>{23, 24, 25, 26, 27}));
}

TEST_F(RecurringTest, EveryMonthSkipsMonthsWithoutADay31)
{
    At(Local(2027, 1, 15, 12, 0, 0));
    auto trigger = Make(NTriggerTypeEveryMonth, "0 0 0 31 * ?");
    std::vector<wxDateTime> fired;
    for (int round = 0; round < 4; ++round) {
        trigger->CheckAndAdvance();  // brings the next fire time up to date
        const wxDateTime next = trigger->GetNextFire();
        At(next, -100);
        ASSERT_TRUE(trigger->CheckAndAdvance());
        fired.push_back(trigger->GetPrevFire());
        At(next, 1000);
    }
    const std::vector<wxDateTime> expected = {Local(2027, 1, 31, 0, 0, 0), Local(2027, 3, 31, 0, 0, 0),
                                              Local(2027, 5, 31, 0, 0, 0), Local(2027, 7, 31, 0, 0, 0)};
    EXPECT_EQ(fired, expected);
}

TEST_F(RecurringTest, ActivePeriodGivesWaitStartAndTimeout)
{
    At(Local(2026, 11, 23, 12, 0, 0));
    auto early = Make(NTriggerTypeEveryMinute, "0 * * * * *", "0 0 0 1 1 * 1999", "0 0 0 1 1 * 1999",
                      "0 0 0 1 12 * 2026");
    EXPECT_FALSE(early->CheckAndAdvance());
    EXPECT_EQ(early->GetStatus(), NTriggerStatusWaitStart);
    EXPECT_FALSE(early->IsDue(300));

    auto over = Make(NTriggerTypeEveryMinute, "0 * * * * *", "0 0 0 1 1 * 1999", "0 0 0 1 1 * 1999",
                     "0 0 0 1 1 * 1999", "0 0 0 1 11 * 2026");
    EXPECT_FALSE(over->CheckAndAdvance());
    EXPECT_EQ(over->GetStatus(), NTriggerStatusTimeout);

    // Both ends belong to the period.
    auto edge = Make(NTriggerTypeEveryMinute, "0 * * * * *", "0 0 0 1 1 * 1999", "0 0 0 1 1 * 1999",
                     "0 0 0 1 1 * 1999", "59 59 11 23 11 * 2026");
    At(Local(2026, 11, 23, 11, 59, 59));
    edge->CheckAndAdvance();
    EXPECT_EQ(edge->GetStatus(), NTriggerStatusWaiting);
    clock.Advance(1);
    edge->CheckAndAdvance();
    EXPECT_EQ(edge->GetStatus(), NTriggerStatusTimeout);

    edge->SetEnable(false);
    EXPECT_FALSE(edge->CheckAndAdvance());
    EXPECT_EQ(edge->GetStatus(), NTriggerStatusDisable);
}

TEST_F(RecurringTest, NextFireShownAfterLoadIsRoundedDownToTheMinute)
{
    At(Local(2026, 11, 23, 10, 20, 0));
    auto trigger = Make(NTriggerTypeEveryHour, "30 15 * * * ?");
    EXPECT_EQ(trigger->GetNextFire(), Local(2026, 11, 23, 11, 15, 0));
    trigger->CheckAndAdvance();
    EXPECT_EQ(trigger->GetNextFire(), Local(2026, 11, 23, 11, 15, 30));
}

TEST_F(RecurringTest, FiringMissedWhileClosedIsMadeUpOnceWhenAsked)
{
    // Last fired on the 21st at 08:00; the saved next fire time, the 22nd,
    // passed while the program was not running.
    const wxDateTime now = Local(2026, 11, 22, 12, 0, 0, 700);
    for (const char* setting : {"1", "0"}) {
        SCOPED_TRACE(setting);
        settings.values["execMissFiredTrigger"] = setting;
        At(now);
        auto trigger = Make(NTriggerTypeEveryDay, "0 0 8 * * ?", "0 0 8 21 11 * 2026", "0 0 8 22 11 * 2026");
        const bool refire = std::string(setting) == "1";
        EXPECT_EQ(trigger->CheckAndAdvance(), refire);
        if (refire) {
            EXPECT_EQ(trigger->GetPrevFire(), now);
        }
        clock.Advance(50);
        EXPECT_FALSE(trigger->CheckAndAdvance());
    }
    // Never fired at all (NEXTFIRE in 1999): nothing to make up.
    settings.values["execMissFiredTrigger"] = "1";
    At(now);
    auto fresh = Make(NTriggerTypeEveryDay, "0 0 8 * * ?");
    EXPECT_FALSE(fresh->CheckAndAdvance());
}

TEST_F(RecurringTest, MalformedConditionNeverFiresShowsInvalidAndIsReportedOnce)
{
    const struct {
        std::uint32_t type;
        const char* condition;
        const char* message;
    } cases[] = {
        {NTriggerTypeCron, "0 0 25 * * ?", "Specified range exceeds maximum"},
        {NTriggerTypeInterval, "0/0 * * * * ?", "Incrementer must be a positive value"},
        {NTriggerTypeEveryMinute, "0, * * * * *", "Value cannot end with comma"},
        {NTriggerTypeEveryDay, "0 0 8 * *", "cron expression must have six fields"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.condition);
        messages.texts.clear();
        At(Local(2026, 11, 23, 9, 59, 58, 400));
        std::unique_ptr<Trigger> trigger;
        ASSERT_NO_THROW(trigger = Make(c.type, c.condition));
        EXPECT_EQ(trigger->GetStatus(), NTriggerStatusInvalid);
        // Checks that land on whole seconds, where "now" used to match.
        EXPECT_TRUE(Drive(*trigger, Local(2026, 11, 23, 10, 0, 0), Local(2026, 11, 23, 10, 0, 3)).empty());
        EXPECT_EQ(trigger->GetStatus(), NTriggerStatusInvalid);
        EXPECT_FALSE(trigger->GetNextFire().IsValid());
        EXPECT_FALSE(trigger->IsDue(300));
        EXPECT_EQ(messages.texts, (std::vector<wxString>{c.message}));
        EXPECT_EQ(TriggerStatusName(trigger->GetStatus()), "Invalid");

        // A corrected condition is parsed afresh and the trigger works again.
        trigger->SetCondition("0 0 12 * * ?");
        trigger->CheckAndAdvance();
        EXPECT_EQ(trigger->GetStatus(), NTriggerStatusWaiting);
        EXPECT_EQ(trigger->GetNextFire(), Local(2026, 11, 23, 12, 0, 0));
    }
}
