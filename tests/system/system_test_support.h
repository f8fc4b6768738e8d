#pragma once
// python3-dbusmock's logind and screen saver on the launcher's session bus,
// which also stands in for the system bus.

#include <unistd.h>

#include <cstdlib>

#include <gtest/gtest.h>

#include "dbus_mock.h"
#include "desktop/jobs/system_jobs.h"

// Set, and the jobs registered, before any test runs.
class SystemEnvironment : public ::testing::Environment {
public:
    void SetUp() override
    {
        const char* bus = std::getenv("DBUS_SESSION_BUS_ADDRESS");
        ASSERT_TRUE(bus) << "run under tests/support/desktop_session.sh";
        ::setenv("DBUS_SYSTEM_BUS_ADDRESS", bus, 1);
        RegisterSystemJobActions(HarnessContext().Actions());
    }
};
inline ::testing::Environment* const g_systemEnvironment =
    ::testing::AddGlobalTestEnvironment(new SystemEnvironment);

const char* const kLogindPath = "/org/freedesktop/login1";

// logind, from dbusmock's template, with sessions of the calling user.
class LogindMock : public DbusMock {
public:
    LogindMock() : DbusMock("org.freedesktop.login1", {"--template", "logind"}) {}
    // The session's object path.
    std::string AddSession(const std::string& id)
    {
        BusCall("org.freedesktop.login1", kLogindPath, "org.freedesktop.DBus.Mock.AddSession",
                {Quoted(id), Quoted("seat0"), std::to_string(::getuid()), Quoted("tester"), "true"});
        return std::string(kLogindPath) + "/session/" + id;
    }
    bool AnswerSessionByPid(const std::string& id)
    {
        return AddMethod(kLogindPath, "org.freedesktop.login1.Manager", "GetSessionByPID", "u", "o",
                         "ret = '" + std::string(kLogindPath) + "/session/" + id + "'");
    }
    // The session's Lock sets its LockedHint, as a screen locker would.
    bool LockSetsLockedHint(const std::string& id)
    {
        return AddMethod(std::string(kLogindPath) + "/session/" + id, "org.freedesktop.login1.Session", "Lock", "",
                         "", "self.UpdateProperties('org.freedesktop.login1.Session', {'LockedHint': dbus.Boolean(True)})");
    }
    bool AnswerCan(const std::string& can, const std::string& answer)
    {
        return AddMethod(kLogindPath, "org.freedesktop.login1.Manager", can, "", "s", "ret = '" + answer + "'");
    }
};

// A desktop screen saver (org.freedesktop.ScreenSaver with Lock).
struct ScreenSaverMock : DbusMock {
    ScreenSaverMock()
        : DbusMock("org.freedesktop.ScreenSaver",
                   {"--session", "org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver", "org.freedesktop.ScreenSaver"})
    {
        AddMethod("/org/freedesktop/ScreenSaver", "", "Lock", "", "", "");
    }
};
