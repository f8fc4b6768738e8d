// `cadrelle --list` and `--cron-next` as a user runs them: the real program,
// no display.

#include <gtest/gtest.h>

#include "core/scheduler.h"
#include "program_run.h"
#include "test_support.h"


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
    EXPECT_NE(broken.err.find("could not be read"), std::string::npos) << broken.err;
    // Listing changes nothing on disk.
    EXPECT_EQ(ReadFileBytes(dir.File("data/data1.xml")), "<SCHEDULER><JOB>");
}

TEST(ListCommand, UnknownOptionIsAUsageError)
{
    const ProgramRun run = RunProgram("--frobnicate");
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.err.find("unknown option: --frobnicate"), std::string::npos);
    EXPECT_NE(run.err.find("Usage:"), std::string::npos);
}

TEST(CronNextCommand, PrintsTheNextMomentsInLocalTime)
{
    const ProgramRun run = RunProgram("--cron-next '0 30 8 ? * MON-FRI' --count 3 --from '2026-11-21 12:00:00'");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "2026-11-23 08:30:00\n2026-11-24 08:30:00\n2026-11-25 08:30:00\n");
    EXPECT_EQ(run.err, "");
}

TEST(CronNextCommand, MalformedExpressionGivesTheParserMessageAloneOnStderr)
{
    const ProgramRun run = RunProgram("--cron-next '0 0 0 5-3 * ?'");
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "Specified range start exceeds range end\n");

    const ProgramRun never = RunProgram("--cron-next '0 0 0 30 2 ?' --from '2026-01-01 00:00:00'");
    EXPECT_EQ(never.status, 0);
    EXPECT_EQ(never.out, "");
}
