// Europe/Berlin, 2024: clocks jump from 02:00 CET to 03:00 CEST on 31 March
// (01:00 UTC) and fall back from 03:00 CEST to 02:00 CET on 27 October
// (01:00 UTC). Moments are given as UTC seconds so that the fold is
// unambiguous.

#include <gtest/gtest.h>

#include <sstream>

#include "core/cron/cron_expr.h"
#include "core/cron/cron_next_command.h"

namespace {

TEST(CronBerlin, GapAndFold) {
    std::tm july{};
    const std::time_t julyFirst = 1719792000;
    localtime_r(&julyFirst, &july);
    ASSERT_EQ(july.tm_gmtoff, 7200) << "this test needs TZ=Europe/Berlin";

    const struct { const char* expr; std::time_t after, want; const char* note; } cases[] = {
        {"0 30 2 * * *", 1711839600, 1711931400, "no 02:30 on 31 March: 1 April 02:30 CEST"},
        {"0 0 2 * * *", 1711839600, 1711929600, "02:00 itself is in the gap: 1 April 02:00 CEST"},
        {"0 */20 * * * *", 1711846200, 1711846800, "01:50 CET -> 03:00 CEST"},
        {"* * * * * *", 1711846799, 1711846800, "01:59:59 CET -> 03:00:00 CEST"},
        {"0 0 12 * * *", 1711846799, 1711879200, "noon after the change is 10:00 UTC"},
        {"0 30 2 * * *", 1729983600, 1729989000, "01:00 CEST -> first 02:30 (CEST)"},
        {"0 30 2 * * *", 1729989000, 1730079000, "02:30 CEST -> 02:30 CET of the next day"},
        {"0 */20 * * * *", 1729990200, 1729994400, "02:50 CEST -> 03:00 CET, no repeats"},
        {"0 */20 * * * *", 1729991400, 1729994400, "from 02:10 CET (second pass) -> 03:00 CET"},
        {"* * * * * *", 1729990799, 1729994400, "02:59:59 CEST -> 03:00:00 CET"},
        {"0 0 3 * * *", 1729990799, 1729994400, "03:00 CEST never shows: 03:00 CET"},
        {"0 45 2 * * *", 1729992600, 1730079900, "02:45 already fired in CEST: next day"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.expr) + ": " + c.note);
        EXPECT_EQ(CronNext(ParseCronExpr(c.expr), c.after), c.want);
    }
}

TEST(CronBerlin, CommandFromInGapOrFold) {
    std::ostringstream out, err;
    EXPECT_EQ(RunCronNextCommand({"* * * * * *", "--from", "2024-03-31 02:30:00"}, out, err, 0), 2);
    EXPECT_EQ(out.str(), "");
    // A repeated time means its first occurrence, so 02:45 still follows.
    std::ostringstream out2, err2;
    EXPECT_EQ(RunCronNextCommand({"0 45 2 * * *", "--count", "2", "--from", "2024-10-27 02:30:00"},
                                 out2, err2, 0), 0);
    EXPECT_EQ(out2.str(), "2024-10-27 02:45:00\n2024-10-28 02:45:00\n");
}

}  // namespace
