#pragma once
// The session and power jobs against python3-dbusmock's logind and a screen
// saver on the launcher's session bus, which also stands in for the system
// bus.

#include "dbus_mock.h"

const char* const kLogindPath = "/org/freedesktop/login1";

// logind, from dbusmock's template, with sessions of the calling user.
class LogindMock : public DbusMock {
public:
    LogindMock() : DbusMock("org.freedesktop.login1", {"--template", "logind"}) {}
    // Returns the session's object path.
    std::string AddSession(const std::string& id);
    // Manager.GetSessionByPID answers with the session `id`.
    bool AnswerSessionByPid(const std::string& id);
    // The session's Lock sets its LockedHint, as a screen locker would.
    bool LockSetsLockedHint(const std::string& id);
    // Manager.<can> answers `answer`.
    bool AnswerCan(const std::string& can, const std::string& answer);
};

// A desktop screen saver (org.freedesktop.ScreenSaver with Lock).
class ScreenSaverMock : public DbusMock {
public:
    ScreenSaverMock();
};
