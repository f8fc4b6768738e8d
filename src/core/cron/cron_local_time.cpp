#include "core/cron/cron_local_time.h"

#include <climits>
#include <initializer_list>

namespace cron {

bool operator==(const CivilTime& a, const CivilTime& b) {
    return a.year == b.year && a.month == b.month && a.day == b.day && a.hour == b.hour &&
           a.minute == b.minute && a.second == b.second;
}

long long DaysFromCivil(long long year, int month, int day) {
    // Counts in eras of 400 years starting on 1 March, so the leap day is
    // the last day of its year.
    year -= month <= 2 ? 1 : 0;
    const long long era = (year >= 0 ? year : year - 399) / 400;
    const long long yoe = year - era * 400;
    const long long mp = (month + 9) % 12;
    const long long doy = (153 * mp + 2) / 5 + day - 1;
    const long long doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe - 719468;
}

int WeekdayFromDays(long long days) {
    // 1970-01-01 was a Thursday.
    const long long w = (days + 4) % 7;
    return static_cast<int>(w < 0 ? w + 7 : w);
}

int DaysInMonth(long long year, int month) {
    static const int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (month == 2) {
        const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
        return leap ? 29 : 28;
    }
    return kDays[month - 1];
}

long long CivilSeconds(const CivilTime& c) {
    return DaysFromCivil(c.year, c.month, c.day) * 86400LL + c.hour * 3600LL + c.minute * 60LL +
           c.second;
}

CivilTime CivilFromSeconds(long long seconds)
{
    long long days = seconds / 86400;
    long long rest = seconds % 86400;
    if (rest < 0) {
        rest += 86400;
        --days;
    }
    // Days since 1970-01-01 to a proleptic Gregorian date, by 400-year eras.
    days += 719468;
    const long long era = (days >= 0 ? days : days - 146096) / 146097;
    const long long dayOfEra = days - era * 146097;
    const long long yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const long long dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const long long mp = (5 * dayOfYear + 2) / 153;
    CivilTime c;
    c.day = static_cast<int>(dayOfYear - (153 * mp + 2) / 5 + 1);
    c.month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    c.year = yearOfEra + era * 400 + (c.month <= 2 ? 1 : 0);
    c.hour = static_cast<int>(rest / 3600);
    c.minute = static_cast<int>(rest % 3600 / 60);
    c.second = static_cast<int>(rest % 60);
    return c;
}

bool ToCivil(std::time_t t, CivilTime& c) {
    std::tm tm{};
    if (!LocalTm(t, tm)) return false;
    c.year = tm.tm_year + 1900LL;
    c.month = tm.tm_mon + 1;
    c.day = tm.tm_mday;
    c.hour = tm.tm_hour;
    c.minute = tm.tm_min;
    c.second = tm.tm_sec;
    return true;
}

bool OffsetAt(std::time_t t, long long& offset) {
    CivilTime c;
    if (!ToCivil(t, c)) return false;
    offset = CivilSeconds(c) - static_cast<long long>(t);
    return true;
}

namespace {

// Some moment at which local time shows `c`, not necessarily the first.
LocalLookup AnyOccurrence(const CivilTime& c, long long wall, long long offsetHint,
                          std::time_t& t) {
    // Guess with the hint, then with the offset found at the guess: enough
    // wherever only two offsets meet.
    const std::time_t t1 = static_cast<std::time_t>(wall - offsetHint);
    CivilTime c1;
    if (!ToCivil(t1, c1)) return LocalLookup::Failed;
    if (c1 == c) {
        t = t1;
        return LocalLookup::Found;
    }
    const long long offset1 = CivilSeconds(c1) - static_cast<long long>(t1);
    if (offset1 != offsetHint) {
        const std::time_t t2 = static_cast<std::time_t>(wall - offset1);
        CivilTime c2;
        if (!ToCivil(t2, c2)) return LocalLookup::Failed;
        if (c2 == c) {
            t = t2;
            return LocalLookup::Found;
        }
    }
    // Unusual zone histories: let the C library try each daylight flag.
    if (c.year - 1900 < INT_MIN || c.year - 1900 > INT_MAX) return LocalLookup::Failed;
    for (int isdst : {-1, 0, 1}) {
        std::tm tm{};
        tm.tm_year = static_cast<int>(c.year - 1900);
        tm.tm_mon = c.month - 1;
        tm.tm_mday = c.day;
        tm.tm_hour = c.hour;
        tm.tm_min = c.minute;
        tm.tm_sec = c.second;
        tm.tm_isdst = isdst;
        const std::time_t r = std::mktime(&tm);
        CivilTime back;
        if (ToCivil(r, back) && back == c) {
            t = r;
            return LocalLookup::Found;
        }
    }
    return LocalLookup::Missing;
}

}  // namespace

LocalLookup FirstOccurrence(const CivilTime& c, long long offsetHint, std::time_t& t) {
    const long long wall = CivilSeconds(c);
    const LocalLookup found = AnyOccurrence(c, wall, offsetHint, t);
    if (found != LocalLookup::Found) return found;

    // An earlier occurrence needs a larger offset before a backward change of
    // the clock; look at the offset a day before.
    const long long offset = wall - static_cast<long long>(t);
    long long before = 0;
    if (!OffsetAt(t - 86400, before) || before <= offset) return LocalLookup::Found;
    const std::time_t earlier = static_cast<std::time_t>(wall - before);
    CivilTime check;
    if (earlier < t && ToCivil(earlier, check) && check == c) t = earlier;
    return LocalLookup::Found;
}

}  // namespace cron
