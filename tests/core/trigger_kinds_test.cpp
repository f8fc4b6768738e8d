// What every kind with a moment shares, one row per kind: the 200 ms window
// before the moment, a moment missed while the program was closed, the
// disabled state, and the active period of the recurring kinds.

#include "trigger_fixture.h"

namespace {

// Every row is due on Monday 23 November 2026 at 08:00:00.
const wxDateTime kMoment = Local(2026, 11, 23, 8, 0, 0);
const char* const k1999 = "0 0 0 1 1 * 1999";
const char* const kAtMoment = "0 0 8 23 11 * 2026";

struct Kind {
    const char* name;
    std::uint32_t type;
    const char* condition;
    wxDateTime after;  // the next moment after kMoment; none for one-shot kinds
    bool OneShot() const { return !after.IsValid(); }
};

const Kind kOneShotKinds[] = {
    {"SpecialTime", NTriggerTypeSpecTime, "0 0 8 23 11 ? 2026", wxDateTime()},
    {"CountDown", NTriggerTypeCountDown, "0 0 8 23 11 2026 0 0 5 0", wxDateTime()},
};

const Kind kRecurringKinds[] = {
    {"Interval", NTriggerTypeInterval, "0 0/45 * * * ?", Local(2026, 11, 23, 8, 45, 0)},
    {"EveryMinute", NTriggerTypeEveryMinute, "0 * * * * *", Local(2026, 11, 23, 8, 1, 0)},
    {"EveryHour", NTriggerTypeEveryHour, "0 0 * * * ?", Local(2026, 11, 23, 9, 0, 0)},
    {"EveryDay", NTriggerTypeEveryDay, "0 0 8 * * ?", Local(2026, 11, 24, 8, 0, 0)},
    {"EveryWeek", NTriggerTypeEveryWeek, "0 0 8 ? * 1-5", Local(2026, 11, 24, 8, 0, 0)},
    {"EveryMonth", NTriggerTypeEveryMonth, "0 0 8 23 * ?", Local(2026, 12, 23, 8, 0, 0)},
    {"EveryYear", NTriggerTypeEveryYear, "0 0 8 23 11 ?", Local(2027, 11, 23, 8, 0, 0)},
    {"Cron", NTriggerTypeCron, "0 0 8 ? * MON", Local(2026, 11, 30, 8, 0, 0)},
};

class TriggerKinds : public TriggerTest, public ::testing::WithParamInterface<Kind> {};
class RecurringKinds : public TriggerKinds {};

std::string RowName(const ::testing::TestParamInfo<Kind>& info)
{
    return info.param.name;
}

}  // namespace

TEST_P(TriggerKinds, FiresOnlyInsideTheWindowBeforeItsMomentAndOnce)
{
    const Kind& kind = GetParam();
    const struct { std::int64_t offsetMs; bool fires; } cases[] = {
        {-250, false}, {-201, false}, {-200, true}, {-150, true}, {-1, true}, {1, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.offsetMs);
        At(kMoment, -60000);
        auto trigger = Make(kind.type, kind.condition);
        ASSERT_EQ(trigger->GetNextFire(), kMoment);
        At(kMoment, c.offsetMs);
        EXPECT_EQ(trigger->CheckAndAdvance(), c.fires);
        // A one-shot moment is done once fired or passed.
        const bool done = kind.OneShot() && c.offsetMs > -201;
        EXPECT_EQ(trigger->IsFinished(), done);
        EXPECT_EQ(trigger->GetStatus(), done ? NTriggerStatusFired : NTriggerStatusWaiting);
        if (c.fires) {
            EXPECT_EQ(trigger->GetPrevFire(), kMoment);
            // A finished one-shot trigger is no longer checked; a recurring
            // one must not fire twice in one window.
            if (!kind.OneShot()) {
                EXPECT_EQ(trigger->GetNextFire(), kind.after);
                clock.Advance(50);
                EXPECT_FALSE(trigger->CheckAndAdvance());
            }
        }
    }
}

TEST_P(TriggerKinds, MissedMomentIsMadeUpOnceOnlyWhenAsked)
{
    const Kind& kind = GetParam();
    const struct { const char* setting; const char* prevFire; const char* recordedNext;
                   bool oneShotFires, recurringFires; } cases[] = {
        {"1", k1999, kAtMoment, true, true},
        {"0", k1999, kAtMoment, false, false},
        {"", k1999, kAtMoment, false, false},
        // Fired before: a one-shot moment is over; a recurring one was due again.
        {"1", "0 0 8 1 11 * 2026", kAtMoment, false, true},
        // No moment was recorded: a recurring kind has nothing to make up.
        {"1", k1999, k1999, true, false},
    };
    const wxDateTime now = Local(2026, 11, 23, 12, 0, 0, 700);
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.setting << " " << c.prevFire << " / " << c.recordedNext);
        settings.values["execMissFiredTrigger"] = c.setting;
        At(now);
        auto trigger = Make(kind.type, kind.condition, c.prevFire, c.recordedNext);
        const bool fires = kind.OneShot() ? c.oneShotFires : c.recurringFires;
        EXPECT_EQ(trigger->CheckAndAdvance(), fires);
        if (fires) {
            EXPECT_EQ(trigger->GetPrevFire(), now);
        }
        EXPECT_EQ(trigger->IsFinished(), kind.OneShot());
        clock.Advance(50);
        EXPECT_FALSE(trigger->CheckAndAdvance());
    }
}

TEST_P(TriggerKinds, DisabledTriggerSaysSoAndFiresOnceEnabled)
{
    const Kind& kind = GetParam();
    At(kMoment, -5000);
    auto trigger = Make(kind.type, kind.condition);
    trigger->SetEnable(false);
    At(kMoment, -100);
    EXPECT_FALSE(trigger->CheckAndAdvance());
    EXPECT_EQ(trigger->GetStatus(), NTriggerStatusDisable);
    // Recurring kinds leave the enable test to their check.
    EXPECT_EQ(trigger->IsDue(300), !kind.OneShot());
    trigger->SetEnable(true);
    EXPECT_TRUE(trigger->IsDue(300));
    EXPECT_TRUE(trigger->CheckAndAdvance());
}

TEST_P(RecurringKinds, TheActivePeriodIncludesBothEnds)
{
    const Kind& kind = GetParam();
    At(kMoment, -60000);
    auto trigger = Make(kind.type, kind.condition, k1999, k1999, "59 59 7 23 11 * 2026", kAtMoment);
    At(kMoment, -1001);
    EXPECT_FALSE(trigger->CheckAndAdvance());
    EXPECT_EQ(trigger->GetStatus(), NTriggerStatusWaitStart);
    EXPECT_FALSE(trigger->IsDue(300));
    At(kMoment, -1000);
    EXPECT_FALSE(trigger->CheckAndAdvance());
    EXPECT_EQ(trigger->GetStatus(), NTriggerStatusWaiting);
    EXPECT_TRUE(trigger->IsDue(300));
    At(kMoment, -100);
    EXPECT_TRUE(trigger->CheckAndAdvance());
    At(kMoment, 0);
    trigger->CheckAndAdvance();
    EXPECT_EQ(trigger->GetStatus(), NTriggerStatusWaiting);
    At(kMoment, 1);
    EXPECT_FALSE(trigger->CheckAndAdvance());
    EXPECT_EQ(trigger->GetStatus(), NTriggerStatusTimeout);
}

INSTANTIATE_TEST_SUITE_P(OneShot, TriggerKinds, ::testing::ValuesIn(kOneShotKinds), RowName);
INSTANTIATE_TEST_SUITE_P(Recurring, TriggerKinds, ::testing::ValuesIn(kRecurringKinds), RowName);
INSTANTIATE_TEST_SUITE_P(Recurring, RecurringKinds, ::testing::ValuesIn(kRecurringKinds), RowName);
