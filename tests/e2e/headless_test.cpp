// The headless scheduler as a user runs it: a real child process, the real
// clock, its own folders.

#include <chrono>
#include <csignal>
#include <thread>

#include <gtest/gtest.h>
#include <wx/dir.h>
#include <wx/filename.h>
#include <wx/init.h>

#include "core/scheduler.h"
#include "headless_process.h"
#include "../core/test_support.h"

namespace {

const char* const kEveryTwoSeconds =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<SCHEDULER>\n"
    " <JOB><ID>0</ID><TYPE>0</TYPE><DESC>Tea</DESC><ENABLE>1</ENABLE><JINTERVAL>0</JINTERVAL>"
    "<TID>1</TID><JID></JID><INFO>Drink tea $ 1</INFO></JOB>\n"
    " <TRIGGER><ID>1</ID><TYPE>2</TYPE><CONDITION>0/2 * * * * ?</CONDITION>"
    "<PREVFIRE>0 0 0 1 1 * 1999</PREVFIRE><NEXTFIRE>0 0 0 1 1 * 1999</NEXTFIRE>"
    "<START>0 0 0 1 1 * 1999</START><END>59 59 23 31 12 * 2999</END></TRIGGER>\n"
    "</SCHEDULER>\n";

std::string Path(const wxString& path)
{
    return std::string(path.utf8_str());
}


}  // namespace

TEST(Headless, RunsUntilSigtermAndSavesTheAdvancedTimes)
{
    TempDir dir;
    WriteFileBytes(dir.File("app/data/data1.xml"), kEveryTwoSeconds);
    wxFileName::Mkdir(dir.File("home"), 0700, wxPATH_MKDIR_FULL);
    HeadlessProcess process(Path(dir.File("app")), Path(dir.File("home")));
    ASSERT_TRUE(process.Start());
    std::this_thread::sleep_for(std::chrono::milliseconds(5500));

    // A second scheduler for the same user is refused.
    std::string second;
    EXPECT_EQ(RunCadrelle(Path(dir.File("home")), {"--headless", "--app-dir", Path(dir.File("other"))}, second), 1);
    EXPECT_NE(second.find("Another program instance is already running, aborting."), std::string::npos) << second;

    EXPECT_EQ(process.Stop(SIGTERM), 0);
    const std::string log = LogText(Path(dir.File("app")));
    EXPECT_NE(log.find(">>> Cadrelle Start >>>"), std::string::npos) << log;
    EXPECT_NE(log.find("->> [JID_0, ThreadID_"), std::string::npos) << log;
    // An important reminder has no window to go to: the job thread writes
    // it to the log, and its line reaches the file through the main thread.
    EXPECT_NE(log.find("### [JID_0] Reminder (important): Drink tea"), std::string::npos) << log;
    EXPECT_NE(log.find("<<- [JID_0, ThreadID_"), std::string::npos) << log;
    EXPECT_NE(log.find("SaveSchedulerData(true) Completed"), std::string::npos) << log;
    EXPECT_NE(log.find("SaveSettingParam() Completed"), std::string::npos) << log;
    // The preferences went to the test's own configuration folder.
    EXPECT_TRUE(wxFileName::FileExists(dir.File("home/.config/Cadrelle/Cadrelle.conf")));
    EXPECT_NE(log.find("<<< Cadrelle End <<<"), std::string::npos) << log;
    // The second start was refused before it opened any log of its own.
    EXPECT_EQ(LogText(Path(dir.File("other"))), "");

    wxInitializer init;
    Scheduler saved(dir.File("app"));
    saved.LoadSchedulerData(false);
    ASSERT_EQ(saved.Triggers().size(), 1u);
    const wxDateTime prev = saved.Triggers()[0]->GetPrevFire();
    EXPECT_GT(prev.GetYear(), 1999);
    EXPECT_EQ(prev.GetSecond() % 2, 0);
    EXPECT_LT((wxDateTime::Now() - prev).GetSeconds().ToLong(), 10);
}

TEST(Headless, SigintEndsItTheSameWay)
{
    TempDir dir;
    wxFileName::Mkdir(dir.File("home"), 0700, wxPATH_MKDIR_FULL);
    HeadlessProcess process(Path(dir.File("app")), Path(dir.File("home")));
    ASSERT_TRUE(process.Start());
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    EXPECT_EQ(process.Stop(SIGINT), 0);
    EXPECT_NE(LogText(Path(dir.File("app"))).find("<<< Cadrelle End <<<"), std::string::npos);
    // An empty scheduler still writes its (empty) working copy on the way out.
    EXPECT_TRUE(wxFileName::FileExists(dir.File("app/data/data1.xml")));
}
