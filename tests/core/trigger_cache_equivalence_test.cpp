// The cached next moments of the recurring kinds must give exactly what
// the straightforward rule (parse and search on every check) gives: same
// firings, statuses and times, whatever the clock does.

#include <random>
#include <sstream>

#include "core/triggers/cron_driven_trigger.h"
#include "trigger_fixture.h"

namespace {

std::string RandomField(std::mt19937& rng, int min, int max, bool dayField)
{
    std::uniform_int_distribution<int> pick(0, 9);
    std::uniform_int_distribution<int> value(min, max);
    const int a = value(rng);
    const int b = value(rng);
    const int lo = std::min(a, b);
    const int hi = std::max(a, b);
    std::ostringstream out;
    switch (pick(rng)) {
    case 0:
    case 1: out << (dayField && pick(rng) < 5 ? "?" : "*"); break;
    case 2: out << a; break;
    case 3: out << lo << "-" << hi; break;
    case 4: out << "*/" << std::uniform_int_distribution<int>(1, (max - min) / 2 + 1)(rng); break;
    case 5: out << lo << "/" << std::uniform_int_distribution<int>(1, 13)(rng); break;
    case 6: out << a << "," << b; break;
    case 7: out << lo << "-" << hi << "/" << std::uniform_int_distribution<int>(1, 7)(rng); break;
    default: out << "*"; break;
    }
    return out.str();
}

std::string RandomExpression(std::mt19937& rng)
{
    return RandomField(rng, 0, 59, false) + " " + RandomField(rng, 0, 59, false) + " " +
           RandomField(rng, 0, 23, false) + " " + RandomField(rng, 1, 31, true) + " " +
           RandomField(rng, 1, 12, false) + " " + RandomField(rng, 0, 6, true);
}

}  // namespace

class CacheEquivalenceTest : public TriggerTest {};

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
