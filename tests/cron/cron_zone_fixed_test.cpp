// Zones without daylight saving: the search must land on the zone's own
// midnight, whatever its offset from UTC.

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "core/cron/cron_expr.h"

namespace {

TEST(CronFixedZone, MidnightInAbsoluteSeconds) {
    const std::string zone = std::getenv("TZ") ? std::getenv("TZ") : "";
    // 2024-01-01 00:00:00 UTC, then local midnight of 2 January.
    const std::time_t start = 1704067200;
    const std::time_t want = zone == "Asia/Kolkata" ? 1704133800   // 18:30 UTC
                             : zone == "UTC"        ? 1704153600   // 2 January 00:00 UTC
                                                    : -2;
    ASSERT_NE(want, -2) << "unexpected zone " << zone;
    EXPECT_EQ(CronNext(ParseCronExpr("0 0 0 * * *"), start), want);
    EXPECT_EQ(CronNext(ParseCronExpr("0 0 0 1 1 ?"), 0), zone == "UTC" ? 31536000 : 31516200);
}

}  // namespace
