// Lock Workstation and Logoff act on the caller's own logind session: found
// by process id, else by XDG_SESSION_ID; the lock falls back to the
// desktop's screen saver when no locker reports the session locked.

#include <unistd.h>

#include <gtest/gtest.h>

#include "core/jobs/job.h"
#include "system_test_support.h"

namespace {

class SessionJobTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(logind.IsRunning()) << "python3-dbusmock's logind template did not start";
        ownPath = logind.AddSession("c7");
        logind.AddSession("c9");
        logind.ClearCalls(kLogindPath);  // the sessions' own setting up
    }

    LogindMock logind;
    RecordedMessages messages;
    CapturedLog log;
    std::string ownPath;
};

TEST_F(SessionJobTest, LogoffEndsTheSessionOfOurProcessElseTheOneNamedInTheEnvironment)
{
    const std::string byPid = "GetSessionByPID(uint32 " + std::to_string(::getpid()) + ")";
    // The template has no GetSessionByPID at first: as for a process that
    // logind counts to no session.
    const struct {
        bool pidHasSession;
        const char* environment;
        std::vector<std::string> calls;
    } rows[] = {
        {false, "c9", {"GetSession('c9')", "TerminateSession('c9')"}},
        {false, nullptr, {}},  // neither: nothing is ended, the user is told why
        {true, "c9", {byPid, "TerminateSession('c7')"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.calls.size());
        if (row.pidHasSession) {
            ASSERT_TRUE(logind.AnswerSessionByPid("c7"));
        }
        logind.ClearCalls(kLogindPath);
        const ScopedEnv sessionId("XDG_SESSION_ID", row.environment);
        RunJob(NJobTypeLogoff, {}, 21, "bye");
        EXPECT_EQ(logind.Calls(kLogindPath), row.calls);
    }
    EXPECT_EQ(log.Matching("[JID_21] Logoff done").size(), 2u);
    const std::vector<std::string> boxes = messages.Boxes();
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].rfind("Logoff failed! Error code: ", 0), 0u) << boxes[0];
    EXPECT_NE(boxes[0].find("\nthis program runs in no logind session"), std::string::npos) << boxes[0];
    EXPECT_NE(boxes[0].find("XDG_SESSION_ID is not set"), std::string::npos) << boxes[0];
}

TEST_F(SessionJobTest, LockIsAskedOfOurOwnSessionAndFallsBackToTheScreenSaver)
{
    ASSERT_TRUE(logind.AnswerSessionByPid("c7"));
    const struct {
        bool lockerLocks;
        bool screenSaver;
        const char* log;  // "" when the user gets a box instead
    } cases[] = {
        // Nobody carries it out: a box, checked below.
        {false, false, ""},
        {false, true, "org.freedesktop.ScreenSaver locked the session"},
        // Last: a locked session stays locked.
        {true, false, "[JID_23] Lock Workstation done: logind locked session c7"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.log);
        ASSERT_TRUE(logind.AddMethod(ownPath, "org.freedesktop.login1.Session", "Lock", "", "", ""));
        if (c.lockerLocks) {
            ASSERT_TRUE(logind.LockSetsLockedHint("c7"));
        }
        std::unique_ptr<ScreenSaverMock> screenSaver;
        if (c.screenSaver) {
            screenSaver = std::make_unique<ScreenSaverMock>();
            ASSERT_TRUE(screenSaver->IsRunning());
        }
        const std::size_t before = logind.Calls(ownPath).size();
        RunJob(NJobTypeLockWorkstation, {}, 23, "lock");
        EXPECT_EQ(logind.Calls(ownPath).size(), before + 1);
        if (screenSaver) {
            EXPECT_EQ(screenSaver->Calls("/org/freedesktop/ScreenSaver"), std::vector<std::string>{"Lock()"});
        }
        if (c.log[0]) {
            EXPECT_EQ(log.Matching(c.log).size(), 1u);
        }
    }
    // Only the first case told the user, naming both tries.
    const std::vector<RecordedMessage> boxes = messages.All();
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].caption, "Cadrelle");
    EXPECT_EQ(boxes[0].text.rfind("LockWorkStation failed! Error code: ", 0), 0u) << boxes[0].text;
    EXPECT_NE(boxes[0].text.find("no screen locker reported the session locked"), std::string::npos);
    EXPECT_NE(boxes[0].text.find("org.freedesktop.ScreenSaver could not lock it"), std::string::npos);
}

TEST(LockWithoutLogind, TheScreenSaverStillLocksAndItsAbsenceIsNamed)
{
    const TempDir dir;
    const std::string deadAddress = "unix:path=" + dir.File("no-bus-here").utf8_string();
    const ScopedEnv system("DBUS_SYSTEM_BUS_ADDRESS", deadAddress.c_str());
    RecordedMessages messages;
    {
        const ScreenSaverMock screenSaver;
        ASSERT_TRUE(screenSaver.IsRunning());
        RunJob(NJobTypeLockWorkstation, {}, 26, "lock");
        EXPECT_TRUE(messages.All().empty());
    }
    RunJob(NJobTypeLockWorkstation, {}, 26, "lock");
    const std::vector<std::string> boxes = messages.Boxes();
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_NE(boxes[0].find("\nlogind is not reachable on the system bus: "), std::string::npos) << boxes[0];
    EXPECT_NE(boxes[0].find("org.freedesktop.ScreenSaver could not lock it"), std::string::npos) << boxes[0];
}

}  // namespace
