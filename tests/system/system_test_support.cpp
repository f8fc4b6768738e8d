#include "system_test_support.h"

#include <cstdlib>

#include <gtest/gtest.h>
#include <unistd.h>

#include "desktop/jobs/system_jobs.h"

namespace {

const char* const kMockIface = "org.freedesktop.DBus.Mock";

// The launcher's session bus serves as the system bus too; set before
// anything opens a bus.
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

std::string LogindMock::AddSession(const std::string& id)
{
    BusCall("org.freedesktop.login1", kLogindPath, std::string(kMockIface) + ".AddSession",
            {Quoted(id), Quoted("seat0"), std::to_string(::getuid()), Quoted("tester"), "true"});
    return std::string(kLogindPath) + "/session/" + id;
}

bool LogindMock::AnswerSessionByPid(const std::string& id)
{
    return AddMethod(kLogindPath, "org.freedesktop.login1.Manager", "GetSessionByPID", "u", "o",
                     "ret = '/org/freedesktop/login1/session/" + id + "'");
}

bool LogindMock::LockSetsLockedHint(const std::string& id)
{
    return AddMethod(std::string(kLogindPath) + "/session/" + id, "org.freedesktop.login1.Session", "Lock", "", "",
                     "self.UpdateProperties('org.freedesktop.login1.Session', {'LockedHint': dbus.Boolean(True)})");
}

bool LogindMock::AnswerCan(const std::string& can, const std::string& answer)
{
    return AddMethod(kLogindPath, "org.freedesktop.login1.Manager", can, "", "s", "ret = '" + answer + "'");
}

ScreenSaverMock::ScreenSaverMock()
    : DbusMock("org.freedesktop.ScreenSaver", {"--session", "org.freedesktop.ScreenSaver",
                                               "/org/freedesktop/ScreenSaver", "org.freedesktop.ScreenSaver"})
{
    AddMethod("/org/freedesktop/ScreenSaver", "", "Lock", "", "", "");
}
