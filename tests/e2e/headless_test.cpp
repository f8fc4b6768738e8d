// The headless scheduler as a user runs it: a real child process, the real
// clock, its own folders.

#include <chrono>
#include <csignal>
#include <thread>

#include <gtest/gtest.h>
#include <wx/filename.h>

#include "core/scheduler.h"
#include "e2e_support.h"

TEST(Headless, RunsUntilSigtermAndSavesTheAdvancedTimes)
{
    TempDir dir;
    const std::string app = dir.File("app").utf8_string();
    const std::string home = dir.File("home").utf8_string();
    WriteFileBytes(dir.File("app/data/data1.xml"),
                   DataFile(Job(0, 0, "Tea", true, 0, "1", "", "Drink tea $ 1"), IntervalTrigger(1, "0/2 * * * * ?")));
    wxFileName::Mkdir(dir.File("home"), 0700, wxPATH_MKDIR_FULL);
    ChildProcess program;
    ASSERT_TRUE(program.Start({CADRELLE_BINARY, "--headless", "--app-dir", app}, home + "/out.txt",
                              ProgramEnvironment(home)));
    std::this_thread::sleep_for(std::chrono::milliseconds(5500));

    // A second scheduler for the same user is refused.
    const ProcessResult second = RunProcess({CADRELLE_BINARY, "--headless", "--app-dir", dir.File("other").utf8_string()},
                                            ProgramEnvironment(home), 10000);
    EXPECT_EQ(second.status, 1);
    EXPECT_NE((second.out + second.err).find("Another program instance is already running, aborting."),
              std::string::npos);

    EXPECT_EQ(program.Stop(SIGTERM), 0);
    const std::string log = LogText(dir.File("app"));
    for (const char* line : {">>> Cadrelle Start >>>", "->> [JID_0, ThreadID_",
                             // An important reminder has no window to go to: the job thread
                             // writes it to the log, which reaches the file through the main thread.
                             "### [JID_0] Reminder (important): Drink tea", "<<- [JID_0, ThreadID_",
                             "SaveSchedulerData(true) Completed", "SaveSettingParam() Completed",
                             "<<< Cadrelle End <<<"})
        EXPECT_NE(log.find(line), std::string::npos) << line << " in\n" << log;
    // The preferences went to the test's own configuration folder.
    EXPECT_TRUE(wxFileName::FileExists(dir.File("home/.config/Cadrelle/Cadrelle.conf")));
    // The second start was refused before it opened any log of its own.
    EXPECT_EQ(LogText(dir.File("other")), "");

    Scheduler saved(dir.File("app"));
    saved.LoadSchedulerData(false);
    ASSERT_EQ(saved.Triggers().size(), 1u);
    const wxDateTime prev = saved.Triggers()[0]->GetPrevFire();
    EXPECT_GT(prev.GetYear(), 1999);
    EXPECT_EQ(prev.GetSecond() % 2, 0);
    EXPECT_LT((wxDateTime::Now() - prev).GetSeconds().ToLong(), 10);
}

TEST(Headless, SigintEndsItTheSameWayAndAnEmptySchedulerStillSaves)
{
    TempDir dir;
    const std::string home = dir.File("home").utf8_string();
    wxFileName::Mkdir(dir.File("home"), 0700, wxPATH_MKDIR_FULL);
    ChildProcess program;
    ASSERT_TRUE(program.Start({CADRELLE_BINARY, "--headless", "--app-dir", dir.File("app").utf8_string()}, "",
                              ProgramEnvironment(home)));
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    EXPECT_EQ(program.Stop(SIGINT), 0);
    EXPECT_NE(LogText(dir.File("app")).find("<<< Cadrelle End <<<"), std::string::npos);
    EXPECT_TRUE(wxFileName::FileExists(dir.File("app/data/data1.xml")));
}
