// Zones on Windows: the C runtime follows the system's zone (under Wine, the
// one Wine derives from the TZ it was started with) and cannot switch to a
// zone by name while running; a TZ variable in its own environment would be
// read as a POSIX rule ("CET-1CEST", with United States change dates), so it
// is removed before any test runs.

#include "cron_test_util.h"

namespace {

// Before any other static object is made: test files keep local moments in
// constants.
struct SystemZone {
    SystemZone() {
        _putenv_s("TZ", "");
        _tzset();
    }
} g_systemZone __attribute__((init_priority(101)));

}  // namespace

long long LocalWithOffset(std::time_t t, std::tm& tm) {
    localtime_s(&tm, &t);
    std::tm copy = tm;  // _mkgmtime normalises its argument
    return static_cast<long long>(_mkgmtime(&copy)) - static_cast<long long>(t);
}

ScopedZone::ScopedZone(const char* zone) {
    const char* run = std::getenv("CADRELLE_TEST_ZONE");
    m_inZone = run && std::string(run) == zone;
}

ScopedZone::~ScopedZone() = default;
