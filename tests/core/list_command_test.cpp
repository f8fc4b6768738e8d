// `cadrelle --list` and `--cron-next` as a user runs them: the real program,
// no display.

#include <map>
#include <sstream>
#include <algorithm>

#include <gtest/gtest.h>

#include <wx/datetime.h>

#include "core/data/scheduler_data.h"
#include "core/scheduler.h"
#include "harness.h"
#include "core/history/history_command.h"
#include "core/history/run_history.h"
#include "trigger_builders.h"

namespace {

ProcessResult Cadrelle(std::vector<std::string> args)
{
    args.insert(args.begin(), CADRELLE_BINARY);
    return RunProcess(args, {{"DISPLAY", std::nullopt}, {"WAYLAND_DISPLAY", std::nullopt}});
}

}  // namespace

TEST(ListCommand, PrintsJobsAndTriggersOfTheDataFile)
{
    TempDir dir;
    WriteFileBytes(dir.File("data/data1.xml"), ReadFileBytes(CADRELLE_TEST_DATA_DIR "/golden_data1.xml"));
    {
        // Job 0 failed last; job 3 never ran.
        RunHistory history(HarnessContext(), dir.File("history.db"));
        ASSERT_TRUE(history.Start());
        RunRecord run;
        run.jid = 0;
        run.startMs = run.endMs = Local(2026, 11, 24, 9, 30, 0).GetValue().GetValue();
        run.outcome = RunOutcome::Failed;
        history.Record(run);
    }
    const ProcessResult run = Cadrelle({"--list", "--app-dir", dir.Path().utf8_string()});
    EXPECT_EQ(run.status, 0) << run.out;
    for (const char* line : {"Jobs: 2\n",
                             "0\tReminder\tyes\tTea <time> & \"biscuits\"\tDrink tea $ 1\t1,2\t\tFailed 2026-11-24 09:30:00\n",
                             "3\tSend UDP MSG\tno\tPing & pong\thi $ 0 $ 1 $ 127.0.0.1 $ 7788\t\t0\t-\n", "Triggers: 2\n",
                             "1\tSpecical Time\tWaiting\t0 0 8 23 11 ? 2026\t1999-01-01 00:00:00\t2026-11-23 08:00:00\t"
                             "Once, on 2026-11-23 at 08:00\n"})
        EXPECT_NE(run.out.find(line), std::string::npos) << line << " in\n" << run.out;
}

// Texts cannot forge cells or rows; NEXT is the moment of firing, to the
// second; a malformed condition is named on standard error.
TEST(ListCommand, EscapesTextsShowsTheSecondOfFiringAndNamesABadCondition)
{
    TempDir dir;
    {
        Scheduler s(HarnessContext(), dir.Path());
        s.AddJob(TestJob(4, NJobTypeReminder, {7, 8, 9}, {}, 0, true, "a\tb\nc\\d\r", {"x\ty", "1"}));
        s.AddTrigger(LoadedTrigger(HarnessContext(), 7, NTriggerTypeCron, "37 * * * * ?"));
        s.AddTrigger(LoadedTrigger(HarnessContext(), 8, NTriggerTypeEveryMinute, "* * * * * ?"));
        s.AddTrigger(LoadedTrigger(HarnessContext(), 9, NTriggerTypeCron, "0 0 25 * * ?"));
        ASSERT_EQ(SaveSchedulerData(s, true), DataSaveResult::Saved);
    }
    const std::string before = wxDateTime::Now().Format("%Y-%m-%d %H:%M:%S").utf8_string();
    const ProcessResult run = Cadrelle({"--list", "--app-dir", dir.Path().utf8_string()});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("\n4\tReminder\tyes\ta\\tb\\nc\\\\d\\r\tx\\ty $ 1\t7,8,9\t\t-\n"), std::string::npos) << run.out;
    EXPECT_NE(run.err.find("TID_9, condition \"0 0 25 * * ?\": Hours \"25\": Specified range exceeds maximum (0-23)"), std::string::npos)
        << run.err;
    std::map<std::string, std::string> next;  // TID -> NEXT
    std::istringstream rows(run.out.substr(run.out.find("Triggers:")));
    for (std::string row; std::getline(rows, row);) {
        // NEXT is the column before the last (DESCRIPTION).
        const std::size_t last = row.rfind('\t');
        const std::size_t cut = last == std::string::npos || last == 0 ? std::string::npos : row.rfind('\t', last - 1);
        if (cut != std::string::npos)
            next[row.substr(0, row.find('\t'))] = row.substr(cut + 1, last - cut - 1);
    }
    EXPECT_EQ(next["7"].substr(17), "37") << next["7"];
    EXPECT_GT(next["8"], before);
    EXPECT_EQ(next["9"], "-");
}

TEST(CommandLine, CronNextAndUsageErrors)
{
    const struct {
        std::vector<std::string> args;
        int status;
        const char* out;  // the whole of stdout, or a part of it after "~"
        const char* err;  // the whole of stderr, or a part of it after "~"
    } cases[] = {
        {{"--cron-next", "0 30 8 ? * MON-FRI", "--count", "3", "--from", "2026-11-21 12:00:00"}, 0,
         "2026-11-23 08:30:00\n2026-11-24 08:30:00\n2026-11-25 08:30:00\n", ""},
        {{"--cron-next", "0 0 0 30 2 ?", "--from", "2026-01-01 00:00:00"}, 0, "", ""},
        // The parser's message alone.
        {{"--cron-next", "0 0 0 5-3 * ?"}, 2, "", "Day of month \"5-3\": Specified range start exceeds range end (1-31).\n"},
        {{"--cron-next", "0 61 * * * ?"}, 2, "", "Minutes \"61\": Specified range exceeds maximum (0-59).\n"},
        {{"--cron-next", "0 0 0 ? JAN-DEC/0 ?"}, 2, "", "Month \"JAN-DEC/0\": Incrementer must be a positive value (1-12).\n"},
        {{"--frobnicate"}, 2, "", "~unknown option: --frobnicate"},
        // The sentence of the trigger list; a malformed expression says so on stderr.
        {{"--describe", "0 30 8 ? * MON-FRI"}, 0, "Every weekday at 08:30\n", ""},
        {{"--describe", "0 0 0 5-3 * ?"}, 2, "", "Malformed condition: Specified range start exceeds range end\n"},
        {{"--describe"}, 2, "", "cadrelle --describe: usage: cadrelle --describe \"EXPR\"\n"},
        {{"--help"}, 0, "~--describe \"EXPR\"          say in words when a cron expression fires\n       cadrelle --agenda", ""},
        {{"--help"}, 0, "~add the jobs of an exported FILE under new ids\n       cadrelle --history", ""},
        {{"--agenda", "--days", "367"}, 2, "", "~--days needs a number of days from 1 to 366, not \"367\""},
        {{"--export"}, 2, "", "~--export needs a file"},
        {{"--export", "x.xml", "3", "z"}, 2, "", "~not a job id (JID): z"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.args[0] + (c.args.size() > 1 ? " " + c.args[1] : ""));
        const ProcessResult run = Cadrelle(c.args);
        EXPECT_EQ(run.status, c.status);
        if (c.out[0] == '~')
            EXPECT_NE(run.out.find(c.out + 1), std::string::npos) << run.out;
        else
            EXPECT_EQ(run.out, c.out);
        if (c.err[0] == '~') {
            EXPECT_NE(run.err.find(c.err + 1), std::string::npos) << run.err;
            EXPECT_NE(run.err.find("Usage:"), std::string::npos) << run.err;
        } else {
            EXPECT_EQ(run.err, c.err);
        }
    }
}

// --history through the program: the same rows the store's query gives,
// read-only beside the writer, and bad arguments named.
TEST(HistoryCommand, PrintsTheNewestRunsAsATable)
{
    TempDir dir;
    RunHistory history(HarnessContext(), dir.File("history.db"));
    ASSERT_TRUE(history.Start());
    const std::int64_t base = Local(2026, 11, 24, 8, 0, 0).GetValue().GetValue();
    for (int i = 0; i < 30; ++i) {
        RunRecord run;
        run.jid = i % 3;
        run.description = "job\twith a tab";
        run.startMs = base + i * 60000;
        run.endMs = run.startMs + 1500;
        run.outcome = i % 4 == 0 ? RunOutcome::Failed : RunOutcome::Succeeded;
        run.details = i % 4 == 0 ? "exit status 3" : "";
        history.Record(run);
    }
    ASSERT_TRUE(history.Flush());
    const std::string app = dir.Path().utf8_string();
    const struct {
        int line;
        std::vector<std::string> args;
        HistoryQuery query;
    } cases[] = {
        {__LINE__, {}, {std::nullopt, OutcomeFilter::All, std::nullopt, "", 100}},
        {__LINE__, {"--limit", "5"}, {std::nullopt, OutcomeFilter::All, std::nullopt, "", 5}},
        {__LINE__, {"--job", "2", "--failed"}, {2, OutcomeFilter::Failed, std::nullopt, "", 100}},
        {__LINE__, {"--since", "2026-11-24 08:20:00", "--limit", "3"}, {std::nullopt, OutcomeFilter::All, base + 20 * 60000, "", 3}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        std::vector<std::string> argv = {"--history", "--app-dir", app};
        argv.insert(argv.end(), c.args.begin(), c.args.end());
        const ProcessResult run = Cadrelle(argv);
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.out, FormatHistoryTable(history.Query(c.query)));
        EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'),
                  static_cast<long>(history.Query(c.query).size() + 1));
    }
    EXPECT_NE(Cadrelle({"--history", "--app-dir", app, "--limit", "1"}).out.find("\tjob with a tab\t"), std::string::npos);
    const struct {
        int line;
        std::vector<std::string> args;
        const char* named;
    } bad[] = {
        {__LINE__, {"--limit", "0"}, "\"0\""},
        {__LINE__, {"--job", "x"}, "\"x\""},
        {__LINE__, {"--since", "2026-02-30 08:00:00"}, "2026-02-30"},
        {__LINE__, {"--since"}, "--since"},
        {__LINE__, {"--verbose"}, "--verbose"},
    };
    for (const auto& c : bad) {
        SCOPED_TRACE(c.line);
        std::vector<std::string> argv = {"--history", "--app-dir", app};
        argv.insert(argv.end(), c.args.begin(), c.args.end());
        const ProcessResult run = Cadrelle(argv);
        EXPECT_EQ(run.status, 2);
        EXPECT_NE(run.err.find(c.named), std::string::npos) << run.err;
    }
}
