#pragma once
// Local-time helpers for the cron tests, in the process's current zone.

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include <gtest/gtest.h>

// "YYYY-MM-DD HH:MM:SS" in local time; only for times that occur once.
inline std::time_t Local(const std::string& text) {
    std::tm tm{};
    std::sscanf(text.c_str(), "%d-%d-%d %d:%d:%d", &tm.tm_year, &tm.tm_mon, &tm.tm_mday,
                &tm.tm_hour, &tm.tm_min, &tm.tm_sec);
    tm.tm_year -= 1900;
    tm.tm_mon -= 1;
    tm.tm_isdst = -1;
    return std::mktime(&tm);
}

inline std::string Show(std::time_t t) {
    std::tm tm{};
    char buf[64];
    std::strftime(buf, sizeof buf, "%Y-%m-%d %H:%M:%S", localtime_r(&t, &tm));
    return t == -1 ? "none" : buf;
}

// Puts the process in `zone` for the life of the object (TZ and tzset) and
// restores the previous zone; lets one program check several zones.
class ScopedZone {
public:
    explicit ScopedZone(const char* zone) {
        if (const char* old = std::getenv("TZ")) m_old = old, m_had = true;
        setenv("TZ", zone, 1);
        tzset();
    }
    ~ScopedZone() {
        if (m_had) setenv("TZ", m_old.c_str(), 1); else unsetenv("TZ");
        tzset();
    }

private:
    std::string m_old;
    bool m_had = false;
};

// The zones every search is checked in: fixed offsets on and off the hour,
// daylight saving on the hour and on the half hour.
inline const char* const kCronZones[] = {"UTC", "Asia/Kolkata", "Europe/Berlin", "America/St_Johns"};

// Tests that hold in every zone: each runs once per zone, inside it.
class CronEveryZone : public testing::TestWithParam<const char*> {
protected:
    ScopedZone zone{GetParam()};
};
