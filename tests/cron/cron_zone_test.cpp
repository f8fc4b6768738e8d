// Daylight saving changes and fixed offsets; moments in UTC seconds so that a fold is unambiguous
// (Berlin 2024: gap 31 March, fold 27 October 01:00 UTC; St John's: 10 March 05:30, 3 November 04:30).

#include <gtest/gtest.h>

#include "core/cron/cron_expr.h"
#include "cron_test_util.h"

namespace {

TEST(CronZones, GapFoldAndOffset) {
    const struct { const char* zone; const char* expr; std::time_t after, want; const char* note; } cases[] = {
        {"UTC", "0 0 0 * * *", 1704067200, 1704153600, "midnight of 2 January"},
        {"Asia/Kolkata", "0 0 0 * * *", 1704067200, 1704133800, "local midnight is 18:30 UTC"},
        {"Asia/Kolkata", "0 0 0 1 1 ?", 0, 31516200, "1971 local"},
        {"Europe/Berlin", "0 30 2 * * *", 1711839600, 1711931400, "no 02:30 on 31 March: 1 April 02:30 CEST"},
        {"Europe/Berlin", "0 0 2 * * *", 1711839600, 1711929600, "02:00 itself is in the gap"},
        {"Europe/Berlin", "0 */20 * * * *", 1711846200, 1711846800, "01:50 CET -> 03:00 CEST"},
        {"Europe/Berlin", "* * * * * *", 1711846799, 1711846800, "01:59:59 CET -> 03:00:00 CEST"},
        {"Europe/Berlin", "0 30 2 * * *", 1729983600, 1729989000, "01:00 CEST -> first 02:30 (CEST)"},
        {"Europe/Berlin", "0 30 2 * * *", 1729989000, 1730079000, "02:30 CEST -> 02:30 CET next day"},
        {"Europe/Berlin", "0 */20 * * * *", 1729990200, 1729994400, "02:50 CEST -> 03:00 CET, no repeats"},
        {"Europe/Berlin", "* * * * * *", 1729990799, 1729994400, "02:59:59 CEST -> 03:00:00 CET"},
        {"Europe/Berlin", "0 0 3 * * *", 1729990799, 1729994400, "03:00 CEST never shows: 03:00 CET"},
        {"Europe/Berlin", "0 45 2 * * *", 1729992600, 1730079900, "02:45 already fired in CEST"},
        {"America/St_Johns", "0 30 2 * * *", 1710041400, 1710133200, "no 02:30 on 10 March"},
        {"America/St_Johns", "0 30 1 * * *", 1730601000, 1730606400, "00:00 -> 01:30 NDT"},
        {"America/St_Johns", "0 30 1 * * *", 1730606400, 1730696400, "01:30 NDT -> next day 01:30 NST"},
        {"America/St_Johns", "0 0 * * * *", 1730610000, 1730611800, "01:30 NST (repeat) -> 02:00 NST"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.zone) + " " + c.expr + ": " + c.note);
        ScopedZone zone(c.zone);
        if (!zone.InZone()) continue;  // checked by the run started in that zone
        EXPECT_EQ(CronNext(ParseCronExpr(c.expr), c.after), c.want);
    }
}

}  // namespace

// Civil seconds and the civil time they name convert both ways, across
// leap days, centuries and before 1970.
TEST(CivilTimes, SecondsAndCivilTimeConvertBothWays)
{
    for (long long s = -5LL * 365 * 86400; s < 140LL * 365 * 86400; s += 86400LL * 13 + 3671) {
        const cron::CivilTime c = cron::CivilFromSeconds(s);
        ASSERT_EQ(cron::CivilSeconds(c), s) << s;
        ASSERT_GE(c.day, 1);
        ASSERT_LE(c.day, cron::DaysInMonth(c.year, c.month));
    }
    const cron::CivilTime leap = cron::CivilFromSeconds(cron::CivilSeconds({2000, 2, 29, 23, 59, 58}));
    EXPECT_EQ(leap, (cron::CivilTime{2000, 2, 29, 23, 59, 58}));
}
