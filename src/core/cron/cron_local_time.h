#pragma once
// Wall-clock (local civil) time arithmetic for the cron search. The search
// walks civil times, which is cheap, and only asks the C library for the
// few candidates it finds.

#include <ctime>

namespace cron {

struct CivilTime {
    long long year = 1970;
    int month = 1;   // 1..12
    int day = 1;     // 1..31
    int hour = 0;
    int minute = 0;
    int second = 0;
};

bool operator==(const CivilTime& a, const CivilTime& b);
inline bool operator!=(const CivilTime& a, const CivilTime& b) { return !(a == b); }

// Days since 1970-01-01 of a proleptic Gregorian date.
long long DaysFromCivil(long long year, int month, int day);
// 0 = Sunday.
int WeekdayFromDays(long long days);
int DaysInMonth(long long year, int month);
// The civil time read as if it were UTC, in seconds since the epoch. Local
// time t shows civil c exactly when CivilSeconds(c) - t is the UTC offset at t.
long long CivilSeconds(const CivilTime& c);
// The inverse of CivilSeconds: pure arithmetic, no C library.
CivilTime CivilFromSeconds(long long seconds);

// The C library's local time of `t` into `tm` (localtime_r on POSIX,
// localtime_s on Windows); false when it cannot convert it.
bool LocalTm(std::time_t t, std::tm& tm);

// Local time of `t`; false when the C library cannot convert it.
bool ToCivil(std::time_t t, CivilTime& c);
// UTC offset in seconds at `t`; false when `t` cannot be converted.
bool OffsetAt(std::time_t t, long long& offset);

enum class LocalLookup { Found, Missing, Failed };

// The first moment at which local time shows `c`. Missing: `c` falls into a
// daylight saving gap. Failed: a conversion failed. `offsetHint` is a UTC
// offset likely to apply (for instance the one of a nearby moment); it only
// affects speed.
LocalLookup FirstOccurrence(const CivilTime& c, long long offsetHint, std::time_t& t);

}  // namespace cron
