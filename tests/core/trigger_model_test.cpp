// The trigger base: initial values, copies and the date-time text.

#include <gtest/gtest.h>

#include "core/clock.h"
#include "core/datetime_text.h"
#include "core/triggers/trigger.h"
#include "core/triggers/trigger_kinds.h"
#include "test_support.h"
#include "trigger_builders.h"

TEST(TriggerBase, NewTriggerStartsWaitingEnabledAndNeverFired)
{
    ManualClock clock(Local(2026, 11, 22, 14, 35, 12, 250).GetValue().GetValue());
    SetClock(&clock);
    std::unique_ptr<Trigger> trigger = CreateTrigger(NTriggerTypeEveryDay);
    SetClock(nullptr);

    EXPECT_EQ(trigger->GetStatus(), NTriggerStatusWaiting);
    EXPECT_TRUE(trigger->IsEnabled());
    EXPECT_FALSE(trigger->IsFinished());
    EXPECT_EQ(trigger->GetTid(), -1);
    // 1 January 1999 at the current time of day.
    EXPECT_EQ(trigger->GetPrevFire(), Local(1999, 1, 1, 14, 35, 12, 250));
    EXPECT_EQ(trigger->GetNextFire(), Local(1999, 1, 1, 14, 35, 12, 250));
    EXPECT_EQ(trigger->GetStart(), Local(1999, 1, 1, 0, 0, 0));
    EXPECT_EQ(trigger->GetEnd(), Local(2999, 12, 31, 23, 59, 59));
}

TEST(TriggerBase, CopyKeepsKindConditionAndTimes)
{
    // Before the recorded next moment, whatever the date of the run.
    ManualClock clock(Local(2026, 11, 22, 12, 0, 0).GetValue().GetValue());
    SetClock(&clock);
    std::unique_ptr<Trigger> source = LoadedTrigger(17, NTriggerTypeCron, "0 30 8 ? * MON-FRI", "0 30 8 20 11 * 2026",
                                                    "0 30 8 23 11 * 2026", "0 0 0 1 11 * 2026",
                                                    "59 59 23 31 12 * 2027");

    std::unique_ptr<Trigger> copy = CopyTrigger(*source);
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy.get(), source.get());
    EXPECT_NE(dynamic_cast<CronTrigger*>(copy.get()), nullptr);
    EXPECT_EQ(copy->GetTid(), 17);
    EXPECT_EQ(copy->GetCondition(), "0 30 8 ? * MON-FRI");
    EXPECT_EQ(copy->GetPrevFire(), Local(2026, 11, 20, 8, 30, 0));
    EXPECT_EQ(copy->GetNextFire(), Local(2026, 11, 23, 8, 30, 0));
    EXPECT_EQ(copy->GetStart(), Local(2026, 11, 1, 0, 0, 0));
    EXPECT_EQ(copy->GetEnd(), Local(2027, 12, 31, 23, 59, 59));
    SetClock(nullptr);
}

TEST(DateTimeText, ReadsFieldsInOrderAndIgnoresTheSixthToken)
{
    const wxDateTime start = Local(2026, 1, 31, 12, 0, 0, 500);
    const struct { int line; const char* text; wxDateTime expected; } cases[] = {
        {__LINE__, "5 4 3 2 1 * 2027", Local(2027, 1, 2, 3, 4, 5)},
        {__LINE__, "5 4 3 2 1 ? 2027", Local(2027, 1, 2, 3, 4, 5)},
        {__LINE__, "5 4 3 2 1 0 2027", Local(2027, 1, 2, 3, 4, 5)},
        {__LINE__, "  5   4 3 2 1 * 2027 ", Local(2027, 1, 2, 3, 4, 5)},
        // Day 1 is set before the month, so the old day 31 cannot overflow
        // into March; a day February lacks leaves day 1.
        {__LINE__, "0 0 0 28 2 * 2026", Local(2026, 2, 28, 0, 0, 0)},
        {__LINE__, "0 0 0 31 2 * 2026", Local(2026, 2, 1, 0, 0, 0)},
        {__LINE__, "0 0 0 29 2 * 2028", Local(2028, 2, 29, 0, 0, 0)},
        // Out of range fields keep the previous value.
        {__LINE__, "61 4 3 2 1 * 2027", Local(2027, 1, 2, 3, 4, 0)},
        {__LINE__, "0 0 0 1 1 0 1999", Local(1999, 1, 1, 0, 0, 0)},
        {__LINE__, "59 59 23 31 12 0 2999", Local(2999, 12, 31, 23, 59, 59)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        wxDateTime dt = start;
        ASSERT_TRUE(ReadDateTimeText(c.text, dt));
        EXPECT_EQ(dt, c.expected) << dt.FormatISOCombined() << " " << dt.GetMillisecond();
    }
    wxDateTime untouched = start;
    EXPECT_FALSE(ReadDateTimeText("1 2 3 4 5 *", untouched));
    EXPECT_FALSE(ReadDateTimeText("", untouched));
    EXPECT_EQ(untouched, start);
}

TEST(DateTimeText, FormatRoundTripsAndDropsMilliseconds)
{
    const wxDateTime moment = Local(2026, 10, 25, 2, 30, 7, 999);
    EXPECT_EQ(FormatDateTimeText(moment), "7 30 2 25 10 * 2026");
    wxDateTime back = wxDateTime::Now();
    ASSERT_TRUE(ReadDateTimeText(FormatDateTimeText(moment), back));
    EXPECT_EQ(back, Local(2026, 10, 25, 2, 30, 7));
    EXPECT_EQ(FormatDateTimeText(wxDateTime()), "0 0 0 1 1 * 1999");
}
