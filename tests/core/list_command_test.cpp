// `cadrelle --list` as a user runs it: the real program, no display.

#include <cstdio>
#include <string>

#include <gtest/gtest.h>

#include "core/scheduler.h"
#include "test_support.h"

namespace {

struct ProgramRun {
    int status = -1;
    std::string out;
};

ProgramRun RunProgram(const std::string& args)
{
    // No DISPLAY: the command must not need one.
    const std::string command = "env -u DISPLAY -u WAYLAND_DISPLAY " CADRELLE_BINARY " " + args + " 2>&1";
    ProgramRun run;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (!pipe)
        return run;
    char buffer[4096];
    std::size_t got = 0;
    while ((got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0)
        run.out.append(buffer, got);
    const int status = ::pclose(pipe);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

}  // namespace

TEST(ListCommand, PrintsJobsAndTriggersOfTheDataFile)
{
    TempDir dir;
    WriteFileBytes(dir.File("data/data1.xml"), ReadFileBytes(CADRELLE_TEST_DATA_DIR "/golden_data1.xml"));
    const ProgramRun run = RunProgram("--list --app-dir " + std::string(dir.Path().utf8_str()));
    EXPECT_EQ(run.status, 0) << run.out;
    EXPECT_NE(run.out.find("Jobs: 2\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("0\tReminder\tyes\tTea <time> & \"biscuits\"\tDrink tea $ 1\t1,2\t\n"), std::string::npos)
        << run.out;
    EXPECT_NE(run.out.find("3\tSend UDP MSG\tno\tPing & pong\thi $ 0 $ 1 $ 127.0.0.1 $ 7788\t\t0\n"), std::string::npos)
        << run.out;
    EXPECT_NE(run.out.find("Triggers: 2\n"), std::string::npos);
    EXPECT_NE(run.out.find("1\tSpecical Time\tWaiting\t0 0 8 23 11 ? 2026\t1999-01-01 00:00:00\t2026-11-23 08:00:00\n"),
              std::string::npos)
        << run.out;
}

TEST(ListCommand, EmptyFolderGivesEmptyListsAndAMalformedFileIsLeftAlone)
{
    TempDir dir;
    const ProgramRun empty = RunProgram("--list --app-dir " + std::string(dir.Path().utf8_str()));
    EXPECT_EQ(empty.status, 0);
    EXPECT_NE(empty.out.find("Jobs: 0\n"), std::string::npos);
    EXPECT_NE(empty.out.find("Triggers: 0\n"), std::string::npos);

    WriteFileBytes(dir.File("data/data1.xml"), "<SCHEDULER><JOB>");
    const ProgramRun broken = RunProgram("--list --app-dir " + std::string(dir.Path().utf8_str()));
    EXPECT_EQ(broken.status, 0);
    EXPECT_NE(broken.out.find("could not be read"), std::string::npos) << broken.out;
    // Listing changes nothing on disk.
    EXPECT_EQ(ReadFileBytes(dir.File("data/data1.xml")), "<SCHEDULER><JOB>");
}

TEST(ListCommand, UnknownOptionIsAUsageError)
{
    const ProgramRun run = RunProgram("--frobnicate");
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.out.find("unknown option: --frobnicate"), std::string::npos);
    EXPECT_NE(run.out.find("Usage:"), std::string::npos);
}
