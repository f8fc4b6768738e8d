#pragma once
// Local-time helpers for the cron tests. The zone is the one the test
// process was started with (TZ set by CTest).

#include <cstdio>
#include <ctime>
#include <string>

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
    if (t == -1) return "none";
    std::tm tm{};
    char buf[64];
    localtime_r(&t, &tm);
    std::strftime(buf, sizeof buf, "%Y-%m-%d %H:%M:%S", &tm);
    return buf;
}
