// Searches that do not touch a daylight saving change: they hold in every
// zone the tests run in.

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <random>
#include <vector>

#include "core/cron/cron_expr.h"
#include "cron_test_util.h"

namespace {

TEST_P(CronEveryZone, Table) {
    const struct { const char* expr; const char* from; const char* want; } cases[] = {
        {"0/10 * * * * ?", "2024-05-06 12:00:10", "2024-05-06 12:00:20"},  // strictly after
        {"*/11 * * * * *", "2024-05-06 12:49:56", "2024-05-06 12:50:00"},
        // Seconds moved to :44 on the way must not survive the day change.
        {"*/11 * 0 ? * *", "2024-05-06 12:49:40", "2024-05-07 00:00:00"},
        {"5 * 10-11 * * *", "2024-05-06 09:59:59", "2024-05-06 10:00:05"},
        {"30 45 10 * 6 *", "2024-05-20 11:00:00", "2024-06-01 10:45:30"},
        {"10-40/7 * * * * *", "2024-05-06 12:00:38", "2024-05-06 12:01:10"},
        {"0 0 12 ? * MON-FRI", "2024-05-10 12:00:00", "2024-05-13 12:00:00"},  // Fri -> Mon
        {"0 0 0 1 JAN ?", "2024-12-31 23:59:59", "2025-01-01 00:00:00"},
        {"59 59 23 31 12 ?", "2024-12-31 23:59:59", "2025-12-31 23:59:59"},
        {"0 0 0 13 * 5", "2024-01-01 00:00:00", "2024-09-13 00:00:00"},  // Friday 13th only
        {"0 0 0 31 * FRI", "2024-01-01 00:00:00", "2024-05-31 00:00:00"},
        {"0 0 12 31 * ?", "2024-05-31 12:00:00", "2024-07-31 12:00:00"},  // June has no 31st
        {"0 0 0 30 2 ?", "2024-01-01 00:00:00", "none"},
        {"0 0 0 29 2 ?", "2024-03-01 00:00:00", "2028-02-29 00:00:00"},
        {"0 0 0 29 2 ?", "2100-01-01 00:00:00", "2104-02-29 00:00:00"},  // 2100 is no leap year
        {"0 0 0 29 2 ?", "2097-01-01 00:00:00", "2104-02-29 00:00:00"},
        // A date on a chosen weekday may lie decades ahead; it is still found.
        {"0 14 7 24 11 2", "2026-11-24 08:00:00", "2037-11-24 07:14:00"},
        {"0 0 0 29 2 1", "2025-01-01 00:00:00", "2044-02-29 00:00:00"},
        {"0 0 0 29 2 0", "2090-01-01 00:00:00", "2128-02-29 00:00:00"},  // 38 years, over 2100
        {"0 0 0 31 4,6,9,11 ?", "2024-01-01 00:00:00", "none"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.expr) + " from " + c.from);
        EXPECT_EQ(Show(CronNext(ParseCronExpr(c.expr), Local(c.from))), c.want);
    }
}

// Reference: step second by second and take the first match whose local
// time has not been shown before (folds here are at most two hours).
std::time_t Scan(const CronExpr& e, std::time_t after, std::time_t limit) {
    auto wall = [](std::time_t t, std::tm& tm) { return static_cast<long long>(t) + LocalWithOffset(t, tm); };
    std::tm tm{};
    long long shown = LLONG_MIN;
    for (std::time_t t = after - 7200; t <= after; ++t) shown = std::max(shown, wall(t, tm));
    for (std::time_t t = after + 1; t <= after + limit; ++t) {
        const long long w = wall(t, tm);
        if (w <= shown) continue;
        shown = w;
        if (e.seconds[tm.tm_sec] && e.minutes[tm.tm_min] && e.hours[tm.tm_hour] &&
            e.daysOfMonth[tm.tm_mday - 1] && e.months[tm.tm_mon] && e.daysOfWeek[tm.tm_wday]) {
            return t;
        }
    }
    return -1;
}

std::string RandomField(std::mt19937& rng, int min, int max, int starPercent) {
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    if (pick(0, 99) < starPercent) return "*";
    std::string field;
    for (int items = pick(1, 3); items > 0; --items) {
        const int a = pick(min, max), b = pick(a, max), step = pick(1, (max - min) / 2 + 1);
        const std::string as = std::to_string(a), bs = std::to_string(b);
        const std::string ss = "/" + std::to_string(step);
        const std::string forms[] = {as, as + "-" + bs, "*" + ss, as + ss, as + "-" + bs + ss};
        field += (field.empty() ? "" : ",") + forms[pick(0, 4)];
    }
    return field;
}

TEST_P(CronEveryZone, AgreesWithSecondBySecondScan) {
    std::mt19937 rng(1234567);
    // Offset changes of this zone from 2023 to 2026, found hour by hour.
    std::vector<std::time_t> changes;
    long long offset = 0;
    for (std::time_t t = 1672531200; t < 1767225600; t += 3600) {
        std::tm tm{};
        const long long now = LocalWithOffset(t, tm);
        if (t != 1672531200 && now != offset) changes.push_back(t);
        offset = now;
    }
    const std::time_t limit = 36 * 3600;
    for (int i = 0; i < 120; ++i) {
        // Mostly dense fields, so that the scan usually finds the answer.
        const std::string expr =
            RandomField(rng, 0, 59, 20) + " " + RandomField(rng, 0, 59, 30) + " " +
            RandomField(rng, 0, 23, 40) + " " + RandomField(rng, 1, 31, 70) + " " +
            RandomField(rng, 1, 12, 80) + " " + RandomField(rng, 0, 6, 60);
        std::time_t after = std::uniform_int_distribution<std::time_t>(1672531200, 1767225600)(rng);
        if (i % 2 == 1 && !changes.empty()) {
            after = changes[i % changes.size()] +
                    std::uniform_int_distribution<int>(-10800, 5400)(rng);
        }
        SCOPED_TRACE(expr + " after " + Show(after) + " (" + std::to_string(after) + ")");
        const CronExpr e = ParseCronExpr(expr);
        const std::time_t got = CronNext(e, after);
        const std::time_t want = Scan(e, after, limit);
        if (want != -1) {
            EXPECT_EQ(Show(got), Show(want));
            EXPECT_EQ(got, want);
        } else {
            EXPECT_TRUE(got == -1 || got > after + limit) << Show(got);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Zones, CronEveryZone, testing::ValuesIn(kCronZones));

}  // namespace
