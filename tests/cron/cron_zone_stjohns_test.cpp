// America/St_Johns, 2024: -03:30 in winter, -02:30 in summer. Clocks jump
// from 02:00 to 03:00 on 10 March (05:30 UTC) and fall back from 02:00 to
// 01:00 on 3 November (04:30 UTC).

#include <gtest/gtest.h>

#include "core/cron/cron_expr.h"

namespace {

TEST(CronStJohns, GapAndFold) {
    std::tm july{};
    const std::time_t julyFirst = 1719792000;
    localtime_r(&julyFirst, &july);
    ASSERT_EQ(july.tm_gmtoff, -9000) << "this test needs TZ=America/St_Johns";

    const struct { const char* expr; std::time_t after, want; const char* note; } cases[] = {
        {"0 30 2 * * *", 1710041400, 1710133200, "10 March has no 02:30: 11 March 02:30 NDT"},
        {"0 30 1 * * *", 1730601000, 1730606400, "3 November 00:00 -> 01:30 NDT"},
        {"0 30 1 * * *", 1730606400, 1730696400, "01:30 NDT -> 4 November 01:30 NST"},
        {"0 0 * * * *", 1730610000, 1730611800, "01:30 NST (repeat) -> 02:00 NST"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.expr) + ": " + c.note);
        EXPECT_EQ(CronNext(ParseCronExpr(c.expr), c.after), c.want);
    }
}

}  // namespace
