#pragma once
// The property checks shared by the libFuzzer target and the corpus
// regression test: whatever the input, parsing either throws one of the
// known messages or yields a usable expression, and the search from a few
// fixed moments gives strictly increasing moments that really match.

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <initializer_list>
#include <string>

#include "core/cron/cron_expr.h"
#include "core/cron/cron_local_time.h"

namespace cron_check {

inline bool KnownMessage(const std::string& m) {
    static const char* const kMessages[] = {
        "Invalid empty cron expression",        "cron expression must have six fields",
        "Specified range requires two fields",  "Specified range is less than minimum",
        "Specified range exceeds maximum",      "Specified range start exceeds range end",
        "Incrementer must have two fields",     "Incrementer must be a positive value",
        "Value cannot end with comma",          "Expression parsing error",
        "Value must be a number"};
    for (const char* known : kMessages) {
        if (m == known) return true;
    }
    return false;
}

inline bool LocalFields(std::time_t t, std::tm& tm) { return cron::LocalTm(t, tm); }

inline bool Matches(const CronExpr& cex, const std::tm& tm) {
    return tm.tm_sec < 60 && cex.seconds[tm.tm_sec] && cex.minutes[tm.tm_min] &&
           cex.hours[tm.tm_hour] && cex.daysOfMonth[tm.tm_mday - 1] && cex.months[tm.tm_mon] &&
           cex.daysOfWeek[tm.tm_wday];
}

// The UTC offset at `t`: its local fields read as if they were UTC, minus
// `t` (days from the civil date worked out here, not by the search's code).
inline long long OffsetOf(std::time_t t) {
    std::tm tm{};
    if (!LocalFields(t, tm)) return 0;
    const int m = tm.tm_mon + 1;
    const long long y = tm.tm_year + 1900LL - (m <= 2);
    const long long era = (y >= 0 ? y : y - 399) / 400;
    const long long yoe = y - era * 400;
    const long long doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + tm.tm_mday - 1;
    const long long days = era * 146097 + yoe * 365 + yoe / 4 - yoe / 100 + doy - 719468;
    return days * 86400 + tm.tm_hour * 3600 + tm.tm_min * 60 + tm.tm_sec - static_cast<long long>(t);
}

// Empty when every check passes, else what went wrong.
inline std::string Problem(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    CronExpr cex;
    try {
        cex = ParseCronExpr(text);
    } catch (const cron::bad_cronexpr& e) {
        if (!KnownMessage(e.what())) return std::string("unknown message: ") + e.what();
        return {};
    }
    if (cex.source != text) return "source text not kept";
    if (cex.seconds.none() || cex.minutes.none() || cex.hours.none() || cex.daysOfMonth.none() ||
        cex.months.none() || cex.daysOfWeek.none()) {
        return "a field parsed to an empty set";
    }

    // Around the 2024 daylight saving changes of central Europe, and a plain day.
    const std::time_t starts[] = {1711846740, 1729989000, 1729991400, 1709161200};
    for (std::time_t prev : starts) {
        for (int n = 0; n < 3; ++n) {
            const std::time_t next = CronNext(cex, prev);
            if (next == -1) break;
            if (next <= prev) return "result not after the start";
            std::tm tm{};
            if (!LocalFields(next, tm) || !Matches(cex, tm)) return "result does not match";
            // Nothing fires in (prev, next), so every start in between must
            // find `next` as well.
            for (std::time_t mid : {next - 1, prev + (next - prev) / 2, prev + (next - prev) / 7}) {
                if (CronNext(cex, mid) != next) return "a later start finds a different moment";
            }
            // No first occurrence of a matching time may be skipped in the
            // first two minutes after the start (folds here are one hour).
            for (std::time_t s = prev + 1; s < next && s <= prev + 120; ++s) {
                if (LocalFields(s, tm) && Matches(cex, tm) && OffsetOf(s - 7200) <= OffsetOf(s)) {
                    return "skipped an earlier match";
                }
            }
            prev = next;
        }
    }
    return {};
}

}  // namespace cron_check
