// Lock Workstation and Logoff act on the caller's own logind session: found
// by process id, else by XDG_SESSION_ID; the lock falls back to the
// desktop's screen saver when no locker reports the session locked.

#include <unistd.h>

#include <gtest/gtest.h>

#include "core/jobs/job.h"
#include "recorded_messages.h"
#include "system_test_support.h"

namespace {

class SessionJobTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(logind.IsRunning()) << "python3-dbusmock's logind template did not start";
        ASSERT_TRUE(monitor.IsRunning()) << "dbus-monitor did not start";
        ownPath = logind.AddSession("c7");
        otherPath = logind.AddSession("c9");
    }

    std::vector<SeenCall> CallsTo(const std::string& member)
    {
        std::vector<SeenCall> found;
        for (const SeenCall& call : monitor.Calls())
            if (call.member == member)
                found.push_back(call);
        return found;
    }

    LogindMock logind;
    BusMonitor monitor{{"org.freedesktop.login1", "org.freedesktop.ScreenSaver"}};
    RecordedMessages messages;
    CapturedLines log;
    std::string ownPath;
    std::string otherPath;
};

TEST_F(SessionJobTest, LogoffEndsTheSessionOfOurProcessNotTheOneInTheEnvironment)
{
    ASSERT_TRUE(logind.AnswerSessionByPid("c7"));
    const ScopedEnv sessionId("XDG_SESSION_ID", "c9");
    RunSystemJob(NJobTypeLogoff, 21, "bye");
    const std::vector<SeenCall> byPid = CallsTo("GetSessionByPID");
    ASSERT_EQ(byPid.size(), 1u);
    EXPECT_EQ(byPid[0].signature, "u");
    EXPECT_EQ(byPid[0].values, std::vector<std::string>{std::to_string(::getpid())});
    const std::vector<SeenCall> terminate = CallsTo("TerminateSession");
    ASSERT_EQ(terminate.size(), 1u);
    EXPECT_EQ(terminate[0].path, "/org/freedesktop/login1");
    EXPECT_EQ(terminate[0].interface, "org.freedesktop.login1.Manager");
    EXPECT_EQ(terminate[0].signature, "s");
    EXPECT_EQ(terminate[0].values, std::vector<std::string>{"\"c7\""});
    EXPECT_TRUE(messages.All().empty());
    EXPECT_EQ(log.Matching("[JID_21] Logoff done").size(), 1u);
}

TEST_F(SessionJobTest, WithoutASessionForOurProcessTheEnvironmentNamesIt)
{
    // The template has no GetSessionByPID: as for a process that logind
    // does not count to any session.
    {
        const ScopedEnv sessionId("XDG_SESSION_ID", "c9");
        RunSystemJob(NJobTypeLogoff, 22, "bye");
        const std::vector<SeenCall> byId = CallsTo("GetSession");
        ASSERT_EQ(byId.size(), 1u);
        EXPECT_EQ(byId[0].values, std::vector<std::string>{"\"c9\""});
        const std::vector<SeenCall> terminate = CallsTo("TerminateSession");
        ASSERT_EQ(terminate.size(), 1u);
        EXPECT_EQ(terminate[0].values, std::vector<std::string>{"\"c9\""});
        EXPECT_TRUE(messages.All().empty());
    }
    // Neither: nothing is ended and the user is told why.
    const ScopedEnv noSession("XDG_SESSION_ID", nullptr);
    RunSystemJob(NJobTypeLogoff, 22, "bye");
    EXPECT_EQ(CallsTo("TerminateSession").size(), 1u);
    const std::vector<std::string> boxes = messages.Texts(RecordedMessage::Kind::Box);
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].rfind("Logoff failed! Error code: ", 0), 0u) << boxes[0];
    EXPECT_NE(boxes[0].find("\nthis program runs in no logind session"), std::string::npos) << boxes[0];
    EXPECT_NE(boxes[0].find("XDG_SESSION_ID is not set"), std::string::npos) << boxes[0];
}

TEST_F(SessionJobTest, LockIsAskedOfOurOwnSessionAndDoneWhenTheLockerReportsIt)
{
    ASSERT_TRUE(logind.AnswerSessionByPid("c7"));
    ASSERT_TRUE(logind.LockSetsLockedHint("c7"));
    RunSystemJob(NJobTypeLockWorkstation, 23, "lock");
    const std::vector<SeenCall> locks = CallsTo("Lock");
    ASSERT_EQ(locks.size(), 1u);
    EXPECT_EQ(locks[0].path, ownPath);
    EXPECT_EQ(locks[0].interface, "org.freedesktop.login1.Session");
    EXPECT_EQ(locks[0].signature, "");
    EXPECT_TRUE(messages.All().empty());
    EXPECT_EQ(log.Matching("[JID_23] Lock Workstation done: logind locked session c7").size(), 1u);
}

TEST_F(SessionJobTest, LockFallsBackToTheScreenSaverWhenTheSessionStaysUnlocked)
{
    ASSERT_TRUE(logind.AnswerSessionByPid("c7"));
    const ScreenSaverMock screenSaver;
    ASSERT_TRUE(screenSaver.IsRunning());
    RunSystemJob(NJobTypeLockWorkstation, 24, "lock");
    const std::vector<SeenCall> locks = CallsTo("Lock");
    ASSERT_EQ(locks.size(), 2u);
    EXPECT_EQ(locks[0].path, ownPath);
    EXPECT_EQ(locks[1].path, "/org/freedesktop/ScreenSaver");
    EXPECT_EQ(locks[1].interface, "org.freedesktop.ScreenSaver");
    EXPECT_EQ(locks[1].signature, "");
    EXPECT_TRUE(messages.All().empty());
    EXPECT_EQ(log.Matching("org.freedesktop.ScreenSaver locked the session").size(), 1u);
}

TEST_F(SessionJobTest, LockThatNobodyCarriesOutIsReported)
{
    ASSERT_TRUE(logind.AnswerSessionByPid("c7"));
    RunSystemJob(NJobTypeLockWorkstation, 25, "lock");
    // logind first, then the screen saver (not on the bus here).
    const std::vector<SeenCall> locks = CallsTo("Lock");
    ASSERT_EQ(locks.size(), 2u);
    EXPECT_EQ(locks[0].path, ownPath);
    EXPECT_EQ(locks[1].interface, "org.freedesktop.ScreenSaver");
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
        RunSystemJob(NJobTypeLockWorkstation, 26, "lock");
        EXPECT_TRUE(messages.All().empty());
    }
    RunSystemJob(NJobTypeLockWorkstation, 26, "lock");
    const std::vector<std::string> boxes = messages.Texts(RecordedMessage::Kind::Box);
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_NE(boxes[0].find("\nlogind is not reachable on the system bus: "), std::string::npos) << boxes[0];
    EXPECT_NE(boxes[0].find("org.freedesktop.ScreenSaver could not lock it"), std::string::npos) << boxes[0];
}

}  // namespace
