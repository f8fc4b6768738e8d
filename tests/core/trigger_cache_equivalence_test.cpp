// The cached next moments of the recurring kinds must give exactly what
// the straightforward rule (parse and search on every check) gives: same
// firings, statuses and times, whatever the clock does.

#include <random>
#include <string>

#include "core/triggers/cron_driven_trigger.h"
#include "trigger_fixture.h"

namespace {

std::string RandomField(std::mt19937& rng, int min, int max, bool dayField)
{
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    const int a = pick(min, max), b = pick(min, max), lo = std::min(a, b), hi = std::max(a, b);
    const std::string s = std::to_string(a), los = std::to_string(lo), his = std::to_string(hi);
    const std::string forms[] = {dayField && pick(0, 1) ? "?" : "*", "*", "*", s, los + "-" + his,
                                 "*/" + std::to_string(pick(1, (max - min) / 2 + 1)),
                                 los + "/" + std::to_string(pick(1, 13)), s + "," + std::to_string(b),
                                 los + "-" + his + "/" + std::to_string(pick(1, 7))};
    return forms[pick(0, 8)];
}

std::string RandomExpression(std::mt19937& rng)
{
    return RandomField(rng, 0, 59, false) + " " + RandomField(rng, 0, 59, false) + " " +
           RandomField(rng, 0, 23, false) + " " + RandomField(rng, 1, 31, true) + " " +
           RandomField(rng, 1, 12, false) + " " + RandomField(rng, 0, 6, true);
}

}  // namespace

using CacheEquivalenceTest = TriggerTest;

TEST_F(CacheEquivalenceTest, CachedAndStraightforwardAgreeOverRandomClocks)
{
    std::mt19937 rng(424242);
    // Start points around ordinary days and both daylight-saving changes of
    // this zone (the test runs under TZ=Europe/Berlin).
    const wxDateTime starts[] = {Local(2026, 11, 23, 10, 0, 0), Local(2026, 3, 29, 1, 58, 0),
                                 Local(2026, 10, 25, 1, 58, 0), Local(2026, 12, 31, 23, 58, 0),
                                 Local(2028, 2, 28, 23, 59, 0)};
    std::uniform_int_distribution<int> step(0, 99);
    int firings = 0;
    for (int round = 0; round < 300; ++round) {
        const std::string expression = round % 10 == 9 ? "0 0 25 * * ?" : RandomExpression(rng);
        SCOPED_TRACE(expression);
        At(starts[round % 5], std::uniform_int_distribution<int>(0, 999)(rng));
        auto cached = Make(NTriggerTypeCron, wxString(expression));
        auto straight = Make(NTriggerTypeCron, wxString(expression));
        static_cast<CronDrivenTrigger&>(*straight).SetCaching(false);
        ASSERT_EQ(cached->GetNextFire(), straight->GetNextFire());
        for (int check = 0; check < 400; ++check) {
            const int r = step(rng);
            if (r < 70)
                clock.Advance(50);
            else if (r < 85)
                clock.Advance(std::uniform_int_distribution<int>(1, 120000)(rng));
            else if (r < 92)
                clock.Advance(std::uniform_int_distribution<std::int64_t>(3600000, 40LL * 86400000)(rng));
            else
                clock.Advance(-std::uniform_int_distribution<std::int64_t>(1, 7200000)(rng));
            const bool a = cached->CheckAndAdvance();
            const bool b = straight->CheckAndAdvance();
            ASSERT_EQ(a, b) << "check " << check << " at " << clock.Now().FormatISOCombined();
            ASSERT_EQ(cached->GetStatus(), straight->GetStatus());
            ASSERT_EQ(cached->GetNextFire().IsValid(), straight->GetNextFire().IsValid());
            if (cached->GetNextFire().IsValid()) {
                ASSERT_EQ(cached->GetNextFire(), straight->GetNextFire()) << "check " << check;
            }
            ASSERT_EQ(cached->GetPrevFire(), straight->GetPrevFire());
            ASSERT_EQ(cached->IsDue(300), straight->IsDue(300));
            firings += a ? 1 : 0;
        }
    }
    // The clock sequences must actually exercise the firing path.
    EXPECT_GT(firings, 50);
}
