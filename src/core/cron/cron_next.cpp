// The next-moment search. It walks wall-clock fields from the largest to the
// smallest and resets every smaller field to its lowest allowed value as soon
// as a larger one moves, so the first civil time that matches is found
// without stepping through seconds. Only that candidate is converted to a
// moment; daylight saving gaps and folds are dealt with there.

#include <cstdint>
#include <limits>

#include "core/cron/cron_expr.h"
#include "core/cron/cron_local_time.h"

namespace {

using cron::CivilTime;

// Lowest set bit at index >= from, or -1.
int NextBit(std::uint64_t bits, int from) {
    if (from >= 64) return -1;
    const std::uint64_t rest = bits >> from;
    if (rest == 0) return -1;
    return from + __builtin_ctzll(rest);
}

struct Masks {
    std::uint64_t seconds, minutes, hours, daysOfMonth, months, daysOfWeek;
};

// The Gregorian calendar repeats every 400 years, weekdays included, so a
// search that finds nothing up to 400 years past its start year finds
// nothing ever. Most matches lie within days; a date on a chosen weekday
// within 28 years, or 40 across a century that is no leap year.
constexpr long long kSearchYears = 400;

// Whether some chosen month has some chosen day (February counts 29 days):
// otherwise nothing can match and the long search is not worth starting.
bool SomeDateExists(const Masks& m)
{
    static const int kLongest[12] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    for (int month = 0; month < 12; ++month) {
        if ((m.months >> month & 1) && (m.daysOfMonth & ((std::uint64_t{1} << kLongest[month]) - 1)))
            return true;
    }
    return false;
}

void StartOfMonth(CivilTime& c) {
    c.day = 1;
    c.hour = c.minute = c.second = 0;
}

// Moves `c` forward to the first matching civil time at or after it. The
// fields may overflow by one (second 60, day 32 ...) on entry; each level
// carries into the next larger one. False past the end of `lastYear`.
bool NextCivil(const Masks& m, CivilTime& c, long long lastYear) {
    for (;;) {
        if (c.year > lastYear) return false;

        const int month = NextBit(m.months, c.month - 1);
        if (month < 0) {
            ++c.year;
            c.month = 1;
            StartOfMonth(c);
            continue;
        }
        if (month + 1 != c.month) {
            c.month = month + 1;
            StartOfMonth(c);
        }

        // Day of month AND day of week; a day the month lacks never matches.
        const int monthDays = cron::DaysInMonth(c.year, c.month);
        int day = c.day;
        int weekday = cron::WeekdayFromDays(cron::DaysFromCivil(c.year, c.month, day));
        while (day <= monthDays &&
               !((m.daysOfMonth >> (day - 1) & 1) && (m.daysOfWeek >> weekday & 1))) {
            ++day;
            weekday = weekday == 6 ? 0 : weekday + 1;
        }
        if (day > monthDays) {
            ++c.month;  // 13 finds no month bit and carries into the year
            StartOfMonth(c);
            continue;
        }
        if (day != c.day) {
            c.day = day;
            c.hour = c.minute = c.second = 0;
        }

        const int hour = NextBit(m.hours, c.hour);
        if (hour < 0) {
            ++c.day;
            c.hour = c.minute = c.second = 0;
            continue;
        }
        if (hour != c.hour) {
            c.hour = hour;
            c.minute = c.second = 0;
        }

        const int minute = NextBit(m.minutes, c.minute);
        if (minute < 0) {
            ++c.hour;
            c.minute = c.second = 0;
            continue;
        }
        if (minute != c.minute) {
            c.minute = minute;
            c.second = 0;
        }

        const int second = NextBit(m.seconds, c.second);
        if (second < 0) {
            ++c.minute;
            c.second = 0;
            continue;
        }
        c.second = second;
        return true;
    }
}

// First moment in (lo, hi] whose UTC offset differs from the one at lo;
// the offsets at lo and hi must differ.
bool FirstOffsetChange(std::time_t lo, std::time_t hi, std::time_t& change) {
    long long offsetLo = 0;
    if (!cron::OffsetAt(lo, offsetLo)) return false;
    while (hi - lo > 1) {
        const std::time_t mid = lo + (hi - lo) / 2;
        long long offsetMid = 0;
        if (!cron::OffsetAt(mid, offsetMid)) return false;
        if (offsetMid == offsetLo) {
            lo = mid;
        } else {
            hi = mid;
        }
    }
    change = hi;
    return true;
}

// `c` lies in a daylight saving gap: the civil time at which the clock
// resumes, or `c` plus one second when the gap cannot be located.
bool PastGap(CivilTime& c, long long offsetHint) {
    const long long wall = cron::CivilSeconds(c);
    long long offset1 = 0, offset2 = 0;
    const std::time_t t1 = static_cast<std::time_t>(wall - offsetHint);
    if (!cron::OffsetAt(t1, offset1)) return false;
    const std::time_t t2 = static_cast<std::time_t>(wall - offset1);
    if (!cron::OffsetAt(t2, offset2)) return false;
    if (offset1 != offset2) {
        std::time_t change = 0;
        CivilTime resumed;
        if (!FirstOffsetChange(t1 < t2 ? t1 : t2, t1 < t2 ? t2 : t1, change)) return false;
        if (!cron::ToCivil(change, resumed)) return false;
        if (cron::CivilSeconds(resumed) > wall) {
            c = resumed;
            return true;
        }
    }
    ++c.second;
    return true;
}

// `c` first occurred at `first` <= after and the clock, turned back, shows it
// again: continue at the civil time just past the end of the first pass.
bool PastFold(CivilTime& c, std::time_t first, std::time_t after) {
    long long offsetFirst = 0, offsetNow = 0;
    if (!cron::OffsetAt(first, offsetFirst) || !cron::OffsetAt(after + 1, offsetNow)) return false;
    if (offsetFirst != offsetNow) {
        std::time_t change = 0;
        CivilTime lastOfFirstPass;
        if (!FirstOffsetChange(first, after + 1, change)) return false;
        if (!cron::ToCivil(change - 1, lastOfFirstPass)) return false;
        if (cron::CivilSeconds(lastOfFirstPass) >= cron::CivilSeconds(c)) {
            c = lastOfFirstPass;
        }
    }
    ++c.second;
    return true;
}

}  // namespace

std::time_t CronNext(const CronExpr& cex, std::time_t after) {
    if (after == std::numeric_limits<std::time_t>::max()) return -1;
    const Masks masks{cex.seconds.to_ullong(),     cex.minutes.to_ullong(),
                      cex.hours.to_ullong(),       cex.daysOfMonth.to_ullong(),
                      cex.months.to_ullong(),      cex.daysOfWeek.to_ullong()};

    if (!SomeDateExists(masks)) return -1;

    CivilTime start;
    if (!cron::ToCivil(after, start)) return -1;
    const long long lastYear = start.year + kSearchYears;

    CivilTime c;
    if (!cron::ToCivil(after + 1, c)) return -1;
    long long offset = cron::CivilSeconds(c) - static_cast<long long>(after + 1);

    for (;;) {
        if (!NextCivil(masks, c, lastYear)) return -1;
        std::time_t t = 0;
        switch (cron::FirstOccurrence(c, offset, t)) {
        case cron::LocalLookup::Failed:
            return -1;
        case cron::LocalLookup::Missing:
            if (!PastGap(c, offset)) return -1;
            continue;
        case cron::LocalLookup::Found:
            break;
        }
        if (t > after) return t;
        // Already shown before the clock was turned back: it fired then.
        offset = cron::CivilSeconds(c) - static_cast<long long>(t);
        if (!PastFold(c, t, after)) return -1;
    }
}
