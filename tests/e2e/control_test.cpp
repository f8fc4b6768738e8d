// `cadrelle --status/--pause/--resume/--silent/--run/--show` against a real
// headless instance, and the instance lock under simultaneous starts.

#include <csignal>
#include <regex>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <wx/filename.h>

#include "e2e_support.h"

namespace {

ProcessResult Cadrelle(const std::string& home, std::vector<std::string> args, std::vector<std::string> prefix = {})
{
    args.insert(args.begin(), CADRELLE_BINARY);
    args.insert(args.begin(), prefix.begin(), prefix.end());
    return RunProcess(args, ProgramEnvironment(home), 20000);
}

}  // namespace

TEST(CommandLineControl, SteersTheRunningHeadlessInstanceAndNobodyElses)
{
    TempDir dir;
    const std::string app = dir.File("app").utf8_string();
    const std::string home = dir.File("home").utf8_string();
    WriteFileBytes(dir.File("app/data/data1.xml"),
                   DataFile(Job(0, 0, "Tea", true, 0, "1", "", "Drink tea $ 1") +
                                Job(4, 0, "Off", false, 0, "2", "", "Never $ 1"),
                            IntervalTrigger(1, "0 0 12 * * ?") + IntervalTrigger(2, "0 0 6 * * ?")));
    wxFileName::Mkdir(dir.File("home"), 0700, wxPATH_MKDIR_FULL);
    const ProcessResult none = Cadrelle(home, {"--status"});
    EXPECT_EQ(none.status, 3);
    EXPECT_EQ(none.err, "No running Cadrelle instance.\n");

    ChildProcess program;
    ASSERT_TRUE(program.Start({CADRELLE_BINARY, "--headless", "--app-dir", app}, home + "/out.txt",
                              ProgramEnvironment(home)));
    // Pause mode can change once the triggers are checked (2 s after start).
    ASSERT_TRUE(WaitUntil([&] { return Cadrelle(home, {"--pause"}).status == 0; }));
    EXPECT_EQ(Cadrelle(home, {"--status"}).out.substr(0, 14), "state: paused\n");
    EXPECT_EQ(Cadrelle(home, {"--resume"}).status, 0);
    EXPECT_EQ(Cadrelle(home, {"--silent", "on"}).status, 0);
    const ProcessResult status = Cadrelle(home, {"--status"});
    EXPECT_EQ(status.status, 0);
    // The disabled job's earlier trigger is not the next firing.
    EXPECT_TRUE(std::regex_match(status.out, std::regex("state: running\nsilent: on\njobs: 2\ntriggers: 2\n"
                                                        "next: \\d{4}-\\d\\d-\\d\\d 12:00:00 JID 0\n")))
        << status.out;
    EXPECT_EQ(Cadrelle(home, {"--silent", "off"}).status, 0);
    EXPECT_NE(Cadrelle(home, {"--status"}).out.find("silent: off\n"), std::string::npos);

    const ProcessResult unknown = Cadrelle(home, {"--run", "77"});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_EQ(unknown.err, "No job with JID 77.\n");
    EXPECT_EQ(Cadrelle(home, {"--run", "0"}).status, 0);
    EXPECT_TRUE(WaitUntil([&] { return LogText(dir.File("app")).find("Reminder (important): Drink tea") != std::string::npos; }));
    EXPECT_EQ(Cadrelle(home, {"--show"}).status, 4);  // no window to show

    if (::geteuid() == 0) {
        ::chmod(dir.Path().utf8_str(), 0711);
        // Even with the folder and socket opened up, another user is told
        // nothing and changes nothing.
        ::chmod(home.c_str(), 0711);
        ::chmod((home + "/cadrelle").c_str(), 0711);
        ::chmod((home + "/cadrelle/control.sock").c_str(), 0666);
        const ProcessResult stranger =
            Cadrelle(home, {"--pause"}, {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"});
        EXPECT_EQ(stranger.status, 4) << stranger.err;
        EXPECT_EQ(stranger.out, "");
        EXPECT_NE(Cadrelle(home, {"--status"}).out.find("state: running\n"), std::string::npos);
    }
    EXPECT_EQ(program.Stop(SIGTERM), 0);
    EXPECT_EQ(Cadrelle(home, {"--status"}).status, 3);
    const std::string log = LogText(dir.File("app"));
    EXPECT_EQ(log.find("JID_4, ThreadID_"), std::string::npos);
}

TEST(InstanceLock, SimultaneousStartsNeverRunTwo)
{
    TempDir dir;
    const std::string home = dir.File("home").utf8_string();
    wxFileName::Mkdir(dir.File("home"), 0700, wxPATH_MKDIR_FULL);
    const std::string outs[2] = {home + "/a.txt", home + "/b.txt"};
    for (int pair = 0; pair < 30; ++pair) {
        SCOPED_TRACE(pair);
        ChildProcess programs[2];
        for (int i = 0; i < 2; ++i)
            ASSERT_TRUE(programs[i].Start({CADRELLE_BINARY, "--headless", "--app-dir", dir.File(i ? "b" : "a").utf8_string()},
                                          outs[i], ProgramEnvironment(home)));
        ASSERT_TRUE(WaitUntil([&] { return programs[0].Exited() || programs[1].Exited(); }));
        const int loser = programs[0].Exited() ? 0 : 1;
        EXPECT_NE(ReadFileBytes(outs[loser]).find("Another program instance is already running, aborting."),
                  std::string::npos);
        EXPECT_FALSE(programs[1 - loser].Exited());
        EXPECT_EQ(programs[1 - loser].Stop(SIGTERM), 0);
    }
}
