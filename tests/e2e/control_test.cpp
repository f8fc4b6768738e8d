// The command-line control against a real headless instance; the instance lock under simultaneous starts.

#include <csignal>
#include <regex>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "e2e_support.h"

// The exit status, then what the program printed (stdout, then stderr).
static std::string Cadrelle(const std::string& home, std::vector<std::string> args, std::vector<std::string> prefix = {})
{
    args.insert(args.begin(), CADRELLE_BINARY);
    args.insert(args.begin(), prefix.begin(), prefix.end());
    const ProcessResult result = RunProcess(args, ProgramEnvironment(home), 20000);
    return std::to_string(result.status) + " " + result.out + result.err;
}

TEST(CommandLineControl, SteersTheRunningHeadlessInstanceAndNobodyElses)
{
    TempDir dir;
    const std::string home = dir.File("home").utf8_string();
    WriteFileBytes(dir.File("app/data/data1.xml"),
                   DataFile(Job(0, 0, "Tea", true, 0, "1", "", "Drink tea $ 1") +
                                Job(4, 0, "Off", false, 0, "2", "", "Never $ 1"),
                            IntervalTrigger(1, "0 0 12 * * ?") + IntervalTrigger(2, "0 0 6 * * ?")));
    EXPECT_EQ(Cadrelle(home, {"--status"}), "3 No running Cadrelle instance.\n");

    ChildProcess program;
    ASSERT_TRUE(program.Start({CADRELLE_BINARY, "--headless", "--app-dir", dir.File("app").utf8_string()},
                              home + "/out.txt", ProgramEnvironment(home), home + "/err.txt"));
    // Pause mode can change once the triggers are checked (2 s after start).
    ASSERT_TRUE(WaitUntil([&] { return Cadrelle(home, {"--pause"}) == "0 "; }));
    EXPECT_EQ(Cadrelle(home, {"--status"}).substr(0, 16), "0 state: paused\n");
    EXPECT_EQ(Cadrelle(home, {"--resume"}), "0 ");
    EXPECT_EQ(Cadrelle(home, {"--silent", "on"}), "0 ");
    // The disabled job's earlier trigger is not the next firing.
    const std::string status = Cadrelle(home, {"--status"});
    EXPECT_TRUE(std::regex_match(status, std::regex("0 state: running\nsilent: on\njobs: 2\ntriggers: 2\n"
                                                    "next: \\d{4}-\\d\\d-\\d\\d 12:00:00 JID 0\n")))
        << status;
    EXPECT_EQ(Cadrelle(home, {"--run", "77"}), "2 No job with JID 77.\n");
    EXPECT_EQ(Cadrelle(home, {"--silent", "off"}), "0 ");
    EXPECT_EQ(Cadrelle(home, {"--run", "0"}), "0 ");
    EXPECT_TRUE(WaitUntil([&] { return LogText(dir.File("app")).find("(important): Drink tea") != std::string::npos; }));
    EXPECT_EQ(Cadrelle(home, {"--show"}).substr(0, 2), "4 ");  // no window to show

    if (::geteuid() == 0) {
        // Even with the folders and the socket opened up, another user is told nothing and changes nothing.
        for (const std::string& path : {dir.Path().utf8_string(), home, home + "/cadrelle"})
            ::chmod(path.c_str(), 0711);
        ::chmod((home + "/cadrelle/control.sock").c_str(), 0666);
        EXPECT_EQ(Cadrelle(home, {"--pause"}, {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"}),
                  "4 the running Cadrelle instance gave no answer\n");
        EXPECT_EQ(Cadrelle(home, {"--status"}).substr(0, 17), "0 state: running\n");
    }
    // A folder in the data file's place: the final save fails, says so on stderr and ends with status 1.
    ASSERT_TRUE(wxRemoveFile(dir.File("app/data/data1.xml")) && wxMkdir(dir.File("app/data/data1.xml")));
    EXPECT_EQ(program.Stop(SIGTERM), 1);
    EXPECT_NE(ReadFileBytes(home + "/err.txt").find("could not save its jobs and triggers"), std::string::npos)
        << ReadFileBytes(home + "/err.txt");
    EXPECT_EQ(Cadrelle(home, {"--status"}).substr(0, 2), "3 ");
}

TEST(InstanceLock, SimultaneousStartsNeverRunTwo)
{
    TempDir dir;
    const std::string home = dir.File("home").utf8_string();
    const std::string outs[2] = {home + "/a.txt", home + "/b.txt"};
    for (int pair = 0; pair < 30; ++pair) {
        SCOPED_TRACE(pair);
        ChildProcess programs[2];
        std::string apps[2];
        for (int i = 0; i < 2; ++i) {
            apps[i] = dir.File((i ? "b" : "a") + std::to_string(pair)).utf8_string();
            ASSERT_TRUE(programs[i].Start({CADRELLE_BINARY, "--headless", "--app-dir", apps[i]}, outs[i],
                                          ProgramEnvironment(home)));
        }
        ASSERT_TRUE(WaitUntil([&] { return programs[0].Exited() || programs[1].Exited(); }));
        const int winner = programs[0].Exited() ? 1 : 0;
        EXPECT_NE(ReadFileBytes(outs[1 - winner]).find("Another program instance is already running, aborting."),
                  std::string::npos);
        EXPECT_FALSE(programs[winner].Exited());
        // The winner ends on SIGINT as on SIGTERM, with the end banner.
        EXPECT_EQ(programs[winner].Stop(pair % 2 ? SIGINT : SIGTERM), 0);
        EXPECT_NE(LogText(apps[winner]).find("<<< Cadrelle End <<<"), std::string::npos);
    }
}
