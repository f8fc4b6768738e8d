#include "system_test_support.h"

#include <cstdlib>

#include <gtest/gtest.h>

#include "desktop/jobs/system_jobs.h"

namespace {

class SystemEnvironment : public ::testing::Environment {
public:
    void SetUp() override
    {
        const char* bus = std::getenv("DBUS_SESSION_BUS_ADDRESS");
        ASSERT_TRUE(bus) << "run under tests/support/desktop_session.sh";
        ::setenv("DBUS_SYSTEM_BUS_ADDRESS", bus, 1);
        RegisterSystemJobActions();
    }
};

[[maybe_unused]] ::testing::Environment* const g_environment =
    ::testing::AddGlobalTestEnvironment(new SystemEnvironment);

}  // namespace
