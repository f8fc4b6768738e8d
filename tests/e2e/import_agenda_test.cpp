// `--import-crontab` and `--agenda` as a user runs them: a crontab of twenty
// lines brought over in one step, the agenda of the result, and the refusal
// while a scheduler of the user runs.

#include <regex>

#include <gtest/gtest.h>

#include "e2e_support.h"

namespace {

const char* const kCrontab =
    "# backups and chores\n"
    "MAILTO=\"\"\n"
    "PATH=/usr/local/bin:/usr/bin:/bin\n"
    "*/30 * * * * sync-notes\n"
    "0 * * * * fetch-mail\n"
    "15 8 * * mon-fri echo standup%at 09:00\n"
    "0 12 1,15 * 5 pay-bills\n"
    "@reboot start-agent\n"
    "@daily tidy-downloads\n"
    "@weekly backup --full\n"
    "@monthly report\n"
    "@yearly renew\n"
    "0 23 * * * shutdown-reminder\n"
    "\n"
    "5 4 * * sun rotate 'logs'\n"
    "0 0 * * 7 weekly2\n"
    "@every 5m nothing\n"
    "0 0 31 2 * never-runs\n"
    "0 9 * * * echo $HOME\n"
    "0 25 * * * broken\n";

ProcessResult Program(const std::string& home, std::vector<std::string> args)
{
    args.insert(args.begin(), CADRELLE_BINARY);
    return RunProcess(args, ProgramEnvironment(home), 30000);
}

}  // namespace

TEST(ImportCrontab, PreviewThenImportThenAgendaAndNothingWhileAnInstanceRuns)
{
    TempDir dir;
    const std::string home = dir.File("home").utf8_string();
    const std::string app = dir.File("app").utf8_string();
    const wxString data = dir.File("app/data/data1.xml");
    WriteFileBytes(dir.File("crontab"), kCrontab);
    const std::string crontab = dir.File("crontab").utf8_string();

    const ProcessResult preview = Program(home, {"--import-crontab", crontab, "--dry-run", "--app-dir", app});
    EXPECT_EQ(preview.status, 0) << preview.err;
    for (const char* line :
         {"line 4: job \"env PATH='/usr/local/bin:/usr/bin:/bin' /bin/sh -c 'sync-notes'\", Every 30 minutes\n",
          "line 7: job \"env PATH='/usr/local/bin:/usr/bin:/bin' /bin/sh -c 'pay-bills'\", "
          "On the 1st and 15th of every month at 12:00, or Every Friday at 12:00\n",
          "line 17: not imported: \"@every\" is not a schedule cron knows\n",
          "line 20: not imported: the schedule \"0 25 * * *\" is not valid: Specified range exceeds maximum\n",
          "20 lines: 13 become jobs, 3 cannot be imported.\n"})
        EXPECT_NE(preview.out.find(line), std::string::npos) << line << " in\n" << preview.out;
    EXPECT_FALSE(wxFileExists(data));

    const ProcessResult imported = Program(home, {"--import-crontab", crontab, "--app-dir", app});
    EXPECT_EQ(imported.status, 0) << imported.err;
    EXPECT_NE(imported.out.find("Added jobs (JID): 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12\n"),
              std::string::npos)
        << imported.out;
    const ProcessResult list = Program(home, {"--list", "--app-dir", app});
    EXPECT_NE(list.out.find("Jobs: 13\n"), std::string::npos) << list.out;
    EXPECT_NE(list.out.find("Triggers: 14\n"), std::string::npos) << list.out;

    // Every half hour and every hour: at least 72 runs in a day, by day.
    const ProcessResult agenda = Program(home, {"--agenda", "--app-dir", app});
    EXPECT_EQ(agenda.status, 0) << agenda.err;
    std::smatch count;
    ASSERT_TRUE(std::regex_search(agenda.out, count, std::regex("^Agenda: .* - .*, runs: (\\d+)\n")));
    EXPECT_GE(std::stoi(count[1]), 72);
    EXPECT_TRUE(std::regex_search(agenda.out, std::regex("\n\\d{4}-\\d\\d-\\d\\d \\w+\n\\d\\d:\\d\\d:00\t")));
    EXPECT_NE(agenda.out.find("\t1\tRun Command: fetch-mail\t2\tEvery hour\t\n"), std::string::npos)
        << agenda.out;
    EXPECT_EQ(agenda.out.find("start-agent"), std::string::npos);  // With Start is not the command's to say

    const ProcessResult days = Program(home, {"--agenda", "--days", "0"});
    EXPECT_EQ(days.status, 2);
    EXPECT_NE(days.err.find("--days needs a number of days from 1 to 366, not \"0\""), std::string::npos) << days.err;

    // A running scheduler owns the data file: nothing changes.
    const std::string before = ReadFileBytes(data);
    ChildProcess program;
    ASSERT_TRUE(program.Start({CADRELLE_BINARY, "--headless", "--app-dir", app}, home + "/out.txt",
                              ProgramEnvironment(home), home + "/err.txt"));
    ASSERT_TRUE(WaitUntil([&] { return Program(home, {"--status"}).status == 0; }));
    const ProcessResult refused = Program(home, {"--import-crontab", crontab, "--app-dir", app});
    EXPECT_EQ(refused.status, 3);
    EXPECT_NE(refused.err.find("Cadrelle is running and owns the data file"), std::string::npos) << refused.err;
    EXPECT_EQ(ReadFileBytes(data), before);
    EXPECT_EQ(program.Stop(SIGTERM), 0);
}

// Without a FILE the user's crontab comes with the user's systemd timers; with
// no crontab at all (here: no crontab program) the timers still come over.
TEST(ImportCrontab, UserTimersJoinThePreview)
{
    TempDir dir;
    const std::string home = dir.File("home").utf8_string();
    const std::string app = dir.File("app").utf8_string();
    WriteFileBytes(dir.File("home/.config/systemd/user/tidy.timer"),
                   "[Unit]\nDescription=Tidy\n[Timer]\nOnCalendar=Mon..Fri 18:00\nOnBootSec=5min\n");
    WriteFileBytes(dir.File("home/.config/systemd/user/tidy.service"), "[Service]\nExecStart=tidy --old\n");
    WriteFileBytes(dir.File("home/.config/systemd/user/poll.timer"), "[Timer]\nOnUnitActiveSec=1h\n");
    WriteFileBytes(dir.File("home/.config/systemd/user/poll.service"), "[Service]\nExecStart=poll\n");
    ChildEnvironment environment = ProgramEnvironment(home, {{"PATH", "/nonexistent"}});
    const ProcessResult preview =
        RunProcess({CADRELLE_BINARY, "--import-crontab", "--dry-run", "--app-dir", app}, environment, 30000);
    EXPECT_EQ(preview.status, 0) << preview.err;
    EXPECT_EQ(preview.out,
              "poll.timer: not imported: line 2: OnUnitActiveSec=1h: no Cadrelle trigger does this\n"
              "tidy.timer: job \"tidy --old\", 5 minutes after Cadrelle starts, or Every weekday at 18:00\n"
              "2 lines: 1 become jobs, 1 cannot be imported.\n");
    EXPECT_NE(preview.err.find("\"crontab -l\" did not give a crontab"), std::string::npos) << preview.err;

    const ProcessResult imported = RunProcess({CADRELLE_BINARY, "--import-crontab", "--app-dir", app}, environment, 30000);
    EXPECT_EQ(imported.status, 0) << imported.err;
    const ProcessResult list = RunProcess({CADRELLE_BINARY, "--list", "--app-dir", app}, environment, 30000);
    EXPECT_NE(list.out.find("0\tRun Command\tyes\tTidy\ttidy --old\t1,2\t\t-\n"), std::string::npos) << list.out;
    EXPECT_NE(list.out.find("\tWith Start\t"), std::string::npos) << list.out;
}
