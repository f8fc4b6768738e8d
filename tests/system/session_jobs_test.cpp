// Lock Workstation and Logoff act on our own logind session (by process id,
// else XDG_SESSION_ID); the lock falls back to the desktop's screen saver.

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
    // The template has no GetSessionByPID at first: our process is in no session.
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
        const char* says;  // in the log, or in the box when nobody locks
    } rows[] = {
        {false, false, "no screen locker reported the session locked"},
        {false, true, "org.freedesktop.ScreenSaver locked the session"},
        {true, false, "[JID_23] Lock Workstation done: logind locked session c7"},  // stays locked: last
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.says);
        ASSERT_TRUE(logind.AddMethod(ownPath, "org.freedesktop.login1.Session", "Lock", "", "", ""));
        if (row.lockerLocks) {
            ASSERT_TRUE(logind.LockSetsLockedHint("c7"));
        }
        std::unique_ptr<ScreenSaverMock> screenSaver;
        if (row.screenSaver) {
            screenSaver = std::make_unique<ScreenSaverMock>();
            ASSERT_TRUE(screenSaver->IsRunning());
        }
        const std::size_t calls = logind.Calls(ownPath).size();
        const std::size_t boxes = messages.All().size();
        const std::size_t logged = log.Matching(row.says).size();
        RunJob(NJobTypeLockWorkstation, {}, 23, "lock");
        EXPECT_EQ(logind.Calls(ownPath).size(), calls + 1);
        if (screenSaver) {
            EXPECT_EQ(screenSaver->Calls("/org/freedesktop/ScreenSaver"), std::vector<std::string>{"Lock()"});
        }
        const std::vector<RecordedMessage> shown = messages.All();
        if (row.lockerLocks || row.screenSaver) {
            EXPECT_EQ(shown.size(), boxes);
            EXPECT_EQ(log.Matching(row.says).size(), logged + 1);
            continue;
        }
        ASSERT_EQ(shown.size(), boxes + 1);
        EXPECT_EQ(shown.back().text.rfind("LockWorkStation failed! Error code: ", 0), 0u) << shown.back().text;
        EXPECT_NE(shown.back().text.find(row.says), std::string::npos) << shown.back().text;
        EXPECT_NE(shown.back().text.find("org.freedesktop.ScreenSaver could not lock it"), std::string::npos);
    }
}

}  // namespace
