// Zones on POSIX: TZ and tzset switch the running process.

#include "cron_test_util.h"

long long LocalWithOffset(std::time_t t, std::tm& tm) {
    localtime_r(&t, &tm);
    return tm.tm_gmtoff;
}

ScopedZone::ScopedZone(const char* zone) {
    if (const char* old = std::getenv("TZ")) m_old = old, m_had = true;
    setenv("TZ", zone, 1);
    tzset();
}

ScopedZone::~ScopedZone() {
    if (m_had) setenv("TZ", m_old.c_str(), 1); else unsetenv("TZ");
    tzset();
}
