#pragma once
// Local-time helpers for the cron tests, in the process's current zone.

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include <gtest/gtest.h>

#include "core/cron/cron_local_time.h"

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
    if (t == -1 || !cron::LocalTm(t, tm)) return "none";
    std::strftime(buf, sizeof buf, "%Y-%m-%d %H:%M:%S", &tm);
    return buf;
}

// The C library's local time of `t` into `tm`; returns the UTC offset in
// seconds at `t` (cron_test_zone_posix.cpp, cron_test_zone_win.cpp).
long long LocalWithOffset(std::time_t t, std::tm& tm);

// Puts the process in `zone` for the life of the object and restores the
// previous zone; lets one program check several zones. Where a running
// process cannot change its zone (Windows: the C runtime follows the
// system's zone), the program runs once per zone instead, started in it with
// CADRELLE_TEST_ZONE naming it, and InZone() says whether `zone` is that run's.
class ScopedZone {
public:
    explicit ScopedZone(const char* zone);
    ~ScopedZone();
    ScopedZone(const ScopedZone&) = delete;
    ScopedZone& operator=(const ScopedZone&) = delete;
    bool InZone() const { return m_inZone; }

private:
    std::string m_old;
    bool m_had = false;
    bool m_inZone = true;
};

// The zones every search is checked in: fixed offsets on and off the hour,
// daylight saving on the hour and on the half hour.
inline const char* const kCronZones[] = {"UTC", "Asia/Kolkata", "Europe/Berlin", "America/St_Johns"};

// Tests that hold in every zone: each runs once per zone, inside it.
class CronEveryZone : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        if (!zone.InZone()) GTEST_SKIP() << GetParam() << " is checked by the run started in it";
    }
    ScopedZone zone{GetParam()};
};
