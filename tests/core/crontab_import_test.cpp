// Crontab lines as jobs: every line's fate, the environment lines as cron
// applies them, and the new jobs' ids.

#include <gtest/gtest.h>

#include "core/import/crontab_import.h"
#include "core/jobs/job_kinds.h"
#include "harness.h"
#include "trigger_builders.h"

namespace {

using Fate = CrontabLine::Fate;

// A line's fate in one text: "job <command> | <condition> | ...", "env",
// "ignored" or "refused: <reason>".
std::string Summary(const CrontabLine& line)
{
    switch (line.fate) {
    case Fate::Job: {
        std::string text = "job " + line.command.utf8_string();
        if (line.atStart)
            text += " | start";
        for (const wxString& condition : line.conditions)
            text += " | " + condition.utf8_string();
        return text;
    }
    case Fate::Environment:
        return "env";
    case Fate::Ignored:
        return "ignored";
    case Fate::Refused:
        break;
    }
    return "refused: " + line.reason.utf8_string();
}

}  // namespace

TEST(CrontabImport, EveryLineGetsItsFate)
{
    const struct {
        int line;
        const char* text;
        const char* fate;
    } cases[] = {
        {__LINE__, "# m h dom mon dow command", "ignored"},
        {__LINE__, "   ", "ignored"},
        {__LINE__, "*/15 * * * * backup.sh --quick", "job backup.sh --quick | 0 */15 * * * *"},
        {__LINE__, "30 8 * * 1-5   echo hi", "job echo hi | 0 30 8 * * 1-5"},
        {__LINE__, "5 4 * jan-MAR sun tidy", "job tidy | 0 5 4 * 1-3 0"},
        {__LINE__, "0 0 * * 7 a", "job a | 0 0 0 * * 0"},
        {__LINE__, "0 0 * * 5-7 a", "job a | 0 0 0 * * 5-6,0"},
        // Either the day of month or the weekday: two triggers.
        {__LINE__, "0 0 1,15 * 5 r", "job r | 0 0 0 1,15 * ? | 0 0 0 ? * 5"},
        // "*/2" starts with "*": cron then needs both, as a trigger does.
        {__LINE__, "0 0 */2 * 5 r", "job r | 0 0 0 */2 * 5"},
        {__LINE__, "@hourly h", "job h | 0 0 * * * ?"},
        {__LINE__, "@daily d", "job d | 0 0 0 * * ?"},
        {__LINE__, "@midnight d", "job d | 0 0 0 * * ?"},
        {__LINE__, "@weekly w", "job w | 0 0 0 ? * 0"},
        {__LINE__, "@monthly m", "job m | 0 0 0 1 * ?"},
        {__LINE__, "@yearly y", "job y | 0 0 0 1 1 ?"},
        {__LINE__, "@annually y", "job y | 0 0 0 1 1 ?"},
        {__LINE__, "@reboot start.sh", "job start.sh | start"},
        // "%": standard input after the first, line breaks after that; "\%" is kept.
        {__LINE__, "@daily mail -s hi me%Dear me,%bye", "job printf '%s\\n' 'Dear me,' 'bye' | /bin/sh -c 'mail -s hi me' | 0 0 0 * * ?"},
        {__LINE__, "@daily date +\\%d", "job date +%d | 0 0 0 * * ?"},
        {__LINE__, "@daily echo it's", "job echo it's | 0 0 0 * * ?"},
        {__LINE__, "@often x", "refused: \"@often\" is not a schedule cron knows"},
        {__LINE__, "@daily", "refused: a schedule line needs five time fields and a command"},
        {__LINE__, "1 2 3 4", "refused: a schedule line needs five time fields and a command"},
        {__LINE__, "1 2 3 4 5", "refused: a schedule line needs five time fields and a command"},
        {__LINE__, "61 * * * * x", "refused: the schedule \"61 * * * *\" is not valid: Specified range exceeds maximum"},
        {__LINE__, "0 0 L * * x", "refused: the schedule \"0 0 L * *\" is not valid: Value must be a number"},
        {__LINE__, "0 0 ? * * x", "refused: the time field \"?\" uses a form cron does not have"},
        {__LINE__, "0 0 * * 1-7/2 x", "refused: the weekday field \"1-7/2\" steps through 7"},
        {__LINE__, "@daily echo $HOME", "refused: the command holds \"$\", which a job's command cannot keep (the data "
                                        "file divides parameters at \"$\"); put it in a script and import a line that "
                                        "runs the script"},
        {__LINE__, "MAILTO=\"\"", "env"},
        {__LINE__, "MAILTO=me@example.org", "refused: Cadrelle does not mail a job's output: it shows in the job's "
                                            "terminal window"},
        {__LINE__, "HOME=/$x", "refused: the value holds \"$\", which a job's command cannot keep (the data file "
                               "divides parameters at \"$\")"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        const std::vector<CrontabLine> lines = TranslateCrontab(c.text);
        ASSERT_EQ(lines.size(), 1u);
        EXPECT_EQ(lines[0].number, 1);
        EXPECT_EQ(lines[0].text, wxString::FromUTF8(c.text));
        EXPECT_EQ(Summary(lines[0]), c.fate);
    }
}

TEST(CrontabImport, EnvironmentLinesApplyToTheLinesBelowThem)
{
    const std::vector<CrontabLine> lines = TranslateCrontab("@daily a\r\n"
                                                            "PATH = /opt/bin:/usr/bin\n"
                                                            "@daily b\n"
                                                            "SHELL=/bin/bash\n"
                                                            "PATH='/bin'\n"
                                                            "LANG=C\n"
                                                            "@daily c 'q'\n"
                                                            "CRON_TZ=UTC\n"
                                                            "@daily d\n"
                                                            "CRON_TZ=\n"
                                                            "@daily e\n");
    const std::vector<std::string> expected = {
        "job a | 0 0 0 * * ?",
        "env",
        "job env PATH='/opt/bin:/usr/bin' /bin/sh -c 'b' | 0 0 0 * * ?",
        "env",
        "env",
        "env",
        "job env PATH='/bin' LANG='C' /bin/bash -c 'c '\\''q'\\''' | 0 0 0 * * ?",
        "refused: Cadrelle runs jobs in the local time zone only; the schedule lines below it are not imported",
        "refused: CRON_TZ on line 8 asks for another time zone",
        "env",
        "job env PATH='/bin' LANG='C' /bin/bash -c 'e' | 0 0 0 * * ?",
    };
    ASSERT_EQ(lines.size(), expected.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        SCOPED_TRACE(i + 1);
        EXPECT_EQ(lines[i].number, static_cast<int>(i + 1));
        EXPECT_EQ(Summary(lines[i]), expected[i]);
    }
    // Commented out: only the lines that became jobs, the rest byte for byte.
    const std::string again = "@daily a\r\nPATH=/x\n\n@often b\n1 2 3 4 5 c";
    EXPECT_EQ(CommentOutImported(again, TranslateCrontab(again)),
              "#cadrelle: @daily a\r\nPATH=/x\n\n@often b\n#cadrelle: 1 2 3 4 5 c");
    EXPECT_EQ(DescribeCrontabLine(lines[2]).utf8_string(),
              "line 3: job \"env PATH='/opt/bin:/usr/bin' /bin/sh -c 'b'\", Every day at 00:00");
    EXPECT_EQ(DescribeCrontabLine(lines[7]).utf8_string(),
              "line 8: not imported: Cadrelle runs jobs in the local time zone only; the schedule lines below it are "
              "not imported");
}

TEST(CrontabImport, JobsTakeFreeIdsAndStoreAsCronAndWithStartTriggers)
{
    Scheduler scheduler(HarnessContext());
    for (std::int32_t jid : {0, 2})
        scheduler.AddJob(TestJob(jid));
    scheduler.AddTrigger(LoadedTrigger(HarnessContext(), 7, NTriggerTypeSpecTime, "0 0 8 1 1 ? 2030"));
    const std::vector<CrontabLine> lines =
        TranslateCrontab("# two jobs\n0 0 1 * 5 r\nbad line\n@reboot s\n@daily d\n");
    for (const JobEdit& edit : CrontabJobEdits(lines, scheduler))
        ASSERT_TRUE(scheduler.ApplyJobEdit(edit));

    const struct {
        std::int32_t jid;
        const char* command;
        std::vector<std::pair<std::uint32_t, const char*>> triggers;  // kind, condition
    } expected[] = {
        {1, "r", {{NTriggerTypeCron, "0 0 0 1 * ?"}, {NTriggerTypeCron, "0 0 0 ? * 5"}}},
        {3, "s", {{NTriggerTypeWithStart, "0 0 0 0 - -"}}},
        {4, "d", {{NTriggerTypeCron, "0 0 0 * * ?"}}},
    };
    ASSERT_EQ(scheduler.Jobs().size(), 5u);
    std::int64_t tid = 7;
    for (const auto& e : expected) {
        SCOPED_TRACE(e.jid);
        const Scheduler::JobPtr job = scheduler.GetJobById(e.jid);
        ASSERT_TRUE(job);
        EXPECT_EQ(job->GetType(), static_cast<std::uint32_t>(NJobTypeExecDosCommand));
        EXPECT_EQ(job->GetParamText(), e.command);
        EXPECT_EQ(job->GetDescription(), e.command);
        EXPECT_TRUE(job->IsEnabled());
        ASSERT_EQ(job->GetTriggerIds().size(), e.triggers.size());
        for (std::size_t i = 0; i < e.triggers.size(); ++i) {
            EXPECT_EQ(job->GetTriggerIds()[i], ++tid);  // above every TID in use
            const Trigger* trigger = scheduler.GetTriggerById(tid);
            ASSERT_TRUE(trigger);
            EXPECT_EQ(trigger->GetType(), e.triggers[i].first);
            EXPECT_EQ(trigger->GetCondition(), e.triggers[i].second);
            EXPECT_NE(trigger->GetStatus(), static_cast<std::uint32_t>(NTriggerStatusInvalid));
        }
    }
}
