// On the launcher's X display, a job's message reaches the screen as a window of the program.

#include <algorithm>
#include <csignal>
#include <cstdlib>

#include <gtest/gtest.h>

#include "e2e_support.h"

static std::size_t WindowsTitled(const std::string& title)
{
    const std::string ids = RunProcess({"xdotool", "search", "--onlyvisible", "--name", "^" + title + "$"}).out;
    return static_cast<std::size_t>(std::count(ids.begin(), ids.end(), '\n'));
}

TEST(WindowMessages, ReminderAndJobErrorReachTheScreen)
{
    TempDir dir;
    // An important reminder and a Wake-on-LAN job with a wrong MAC address, every two seconds.
    WriteFileBytes(dir.File("app/data/data1.xml"),
                   DataFile(Job(0, 0, "Tea", true, 0, "1", "", "Tea time $ 1") +
                                Job(1, 12, "Wake", true, 0, "2", "", "aa:bb:cc:dd:ee $ 9"),
                            IntervalTrigger(1, "0/2 * * * * ?") + IntervalTrigger(2, "1/2 * * * * ?")));
    const std::string home = dir.File("home").utf8_string();
    ChildProcess program;
    ASSERT_TRUE(program.Start({CADRELLE_BINARY, "--app-dir", dir.File("app").utf8_string()}, home + "/out.txt",
                              ProgramEnvironment(home, {{"DISPLAY", std::getenv("DISPLAY")}})));

    EXPECT_TRUE(WaitUntil([] { return WindowsTitled("Cadrelle - Reminder - Important") > 0; }, 15000))
        << ReadFileBytes(wxString::FromUTF8(home + "/out.txt"));
    // The bad MAC address's box is captioned like the main window: two windows of that title.
    EXPECT_TRUE(WaitUntil([] { return WindowsTitled("Cadrelle") >= 2; }, 15000));
    // Its next firings while the box is open add no second box.
    EXPECT_TRUE(WaitUntil([&] { return LogText(dir.File("app")).find("[JID_1] Its earlier failure is still on screen") !=
                                       std::string::npos; }, 15000));
    EXPECT_EQ(WindowsTitled("Cadrelle"), 2u);
    // The log reaches its file within a second or two of the job.
    EXPECT_TRUE(WaitUntil([&] { return LogText(dir.File("app")).find("Address size is") != std::string::npos; }));
    program.Stop(SIGKILL);
    const std::string log = LogText(dir.File("app"));
    EXPECT_NE(log.find("### [JID_0] Reminder (important): Tea time"), std::string::npos) << log;
    EXPECT_NE(log.find("### [Cadrelle] Mac Address is not correct, Address size is 5\n\nJob: Wake (JID 1)\nTime: "),
              std::string::npos) << log;
}
