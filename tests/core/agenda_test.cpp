// The agenda: which runs a window holds, in which order, with which marks;
// and that it lists exactly what the triggers fire (Europe/Berlin).

#include <random>

#include "core/agenda/agenda.h"
#include "core/jobs/job_kinds.h"
#include "core/scheduler.h"
#include "trigger_fixture.h"

namespace {

struct PlannedTrigger {
    std::int32_t jid;
    std::uint32_t jobKind;
    bool jobEnabled;
    std::uint32_t kind;
    const char* condition;
    const char* start = "0 0 0 1 1 * 1999";
    const char* end = "59 59 23 31 12 * 2999";
};

class AgendaTest : public TriggerTest {
protected:
    // One job per row (rows of the same JID share it); TIDs count from 1.
    void Fill(const std::vector<PlannedTrigger>& rows)
    {
        std::map<std::int32_t, std::pair<const PlannedTrigger*, TidList>> jobs;
        std::int64_t tid = 0;
        for (const PlannedTrigger& row : rows) {
            ++tid;
            scheduler.AddTrigger(LoadedTrigger(context, tid, row.kind, row.condition, "0 0 0 1 1 * 1999",
                                               "0 0 0 1 1 * 1999", row.start, row.end));
            jobs[row.jid].first = &row;
            jobs[row.jid].second.push_back(tid);
        }
        for (const auto& [jid, job] : jobs)
            scheduler.AddJob(TestJob(jid, job.first->jobKind, job.second, {}, 0, job.first->jobEnabled));
    }

    // "MM-DD HH:MM:SS JID TID marks" per run; a skipped entry adds the lost
    // wall time.
    std::vector<std::string> Lines(const Agenda& agenda) const
    {
        std::vector<std::string> lines;
        for (const AgendaRun& run : agenda.runs) {
            const AgendaSource& s = agenda.sources[run.source];
            std::string line = FromMs(run.atMs).Format("%m-%d %H:%M:%S ").utf8_string() + std::to_string(s.jid) +
                               " " + std::to_string(s.tid);
            if (run.marks)
                line += " " + AgendaMarkText(run.marks).utf8_string();
            if (run.skippedWallSec >= 0)
                line += " @" + std::to_string(run.skippedWallSec / 60);
            lines.push_back(line);
        }
        return lines;
    }

    Scheduler scheduler{context};
};

}  // namespace

TEST_F(AgendaTest, WindowKindsStatesAndMarksAcrossTheAutumnChange)
{
    At(Local(2026, 10, 24, 12, 0, 0));
    context.SetStartTime(Local(2026, 10, 24, 11, 45, 0));
    Fill({
        {1, NJobTypeShutdown, true, NTriggerTypeEveryDay, "0 0 23 * * ?"},
        {2, NJobTypeReboot, true, NTriggerTypeCron, "0 5 23 24 10 ?"},
        // 02:30 occurs twice on 25 October: one run, at the first.
        {3, NJobTypeReminder, true, NTriggerTypeCron, "0 30 2 * * ?"},
        {4, NJobTypeReminder, false, NTriggerTypeEveryHour, "0 0 * * * ?"},
        {5, NJobTypeLockWorkstation, true, NTriggerTypeSpecTime, "0 0 9 25 10 ? 2026"},
        // Active only on the 25th; 12:00 of the 24th is "now", not after it.
        {6, NJobTypeReminder, true, NTriggerTypeEveryDay, "0 0 12 * * ?", "0 0 0 25 10 * 2026",
         "59 59 23 25 10 * 2026"},
        {7, NJobTypeReminder, true, NTriggerTypeIdleTimeout, "- 5 - - - -"},
        {8, NJobTypeReminder, true, NTriggerTypeCron, "0 0 0 31 2 ?"},  // never
        {9, NJobTypeReminder, true, NTriggerTypeCron, "0 0 0 5-3 * ?"},  // malformed: never fires
        {10, NJobTypeLogoff, true, NTriggerTypeWithStart, "0 0 30 0 - -"},
    });
    const std::vector<std::string> expected = {
        "10-24 12:15:00 10 10 session",
        "10-24 23:00:00 1 1 power, another power job within 10 minutes",
        "10-24 23:05:00 2 2 power, another power job within 10 minutes",
        "10-25 02:30:00 3 3 hour repeated by the clock change: runs once",
        "10-25 09:00:00 5 5 session",
        "10-25 12:00:00 6 6",
        "10-25 23:00:00 1 1 power",
        "10-26 02:30:00 3 3",
    };
    AgendaOptions options = AgendaWindow(clock.NowMs(), 2);
    EXPECT_EQ(Lines(BuildAgenda(scheduler, options)), expected);

    // --agenda leaves With Start out; a shorter window ends inclusively.
    options.withStart = false;
    options.untilMs = ToMs(Local(2026, 10, 25, 9, 0, 0));
    const Agenda shorter = BuildAgenda(scheduler, options);
    EXPECT_EQ(Lines(shorter), std::vector<std::string>(expected.begin() + 1, expected.begin() + 5));
    EXPECT_EQ(shorter.Sentence(shorter.runs[0].source), "Every day at 23:00");
}

TEST_F(AgendaTest, SpringGapGivesAnEntryForTheLostTimeAndTheListStopsAtItsLimit)
{
    At(Local(2026, 3, 28, 12, 0, 0));
    Fill({
        {1, NJobTypeReminder, true, NTriggerTypeCron, "0 30 2 * * ?"},
        {2, NJobTypeSuspend, true, NTriggerTypeCron, "0 */20 1-3 29 3 ?"},
        {3, NJobTypeReminder, true, NTriggerTypeCron, "0 0 4 * * ?"},
    });
    // The clock jumps at 02:00 CET = 03:00 CEST on 29 March.
    EXPECT_EQ(Lines(BuildAgenda(scheduler, AgendaWindow(clock.NowMs(), 2))),
              (std::vector<std::string>{
                  "03-29 01:00:00 2 2 power",
                  "03-29 01:20:00 2 2 power",
                  "03-29 01:40:00 2 2 power",
                  "03-29 03:00:00 1 1 hour skipped by the clock change: does not run @150",
                  "03-29 03:00:00 2 2 power",
                  "03-29 03:00:00 2 2 power, hour skipped by the clock change: does not run @120",
                  "03-29 03:20:00 2 2 power",
                  "03-29 03:40:00 2 2 power",
                  "03-29 04:00:00 3 3",
                  "03-30 02:30:00 1 1",
                  "03-30 04:00:00 3 3",
              }));

    // An every-second trigger: the earliest runs of all triggers, in order.
    scheduler.AddTrigger(EverySecondTrigger(context, 9));
    scheduler.AddJob(TestJob(0, NJobTypeReminder, {9}));
    At(Local(2026, 3, 28, 23, 59, 58));
    AgendaOptions options = AgendaWindow(clock.NowMs(), 1);
    options.maxRuns = 5;
    const Agenda agenda = BuildAgenda(scheduler, options);
    EXPECT_TRUE(agenda.truncated);
    EXPECT_EQ(Lines(agenda), (std::vector<std::string>{"03-28 23:59:59 0 9", "03-29 00:00:00 0 9",
                                                        "03-29 00:00:01 0 9", "03-29 00:00:02 0 9",
                                                        "03-29 00:00:03 0 9"}));
}

// What the agenda lists is what the triggers fire: each trigger is driven
// from firing to firing by its own check (as a checker thread would, at the
// moment it names), over random expressions, windows and active periods
// around both daylight saving changes.
TEST_F(AgendaTest, ListsExactlyWhatTheTriggersFire)
{
    std::mt19937 random(20261124);
    const char* fields[][6] = {
        {"0", "*/7", "*/5", "30", "*/13", "0"},           // seconds
        {"0", "30", "*/20", "0-59/15", "5,35", "*"},      // minutes
        {"*", "2", "1-3", "*/6", "23", "0,12"},           // hours
        {"*", "?", "25", "29,30", "1-7", "*"},            // day of month
        {"*", "3", "10", "3,10", "*", "*"},               // month
        {"?", "*", "0", "1-5", "6", "?"},                 // weekday
    };
    const wxDateTime starts[] = {Local(2026, 3, 28, 6, 0, 0), Local(2026, 10, 24, 21, 0, 0)};
    for (int round = 0; round < 60; ++round) {
        std::string condition;
        for (int f = 0; f < 6; ++f)
            condition += std::string(f ? " " : "") + fields[f][random() % 6];
        if (condition.find("* ?") == std::string::npos && condition.find("? ") == std::string::npos)
            condition.replace(condition.rfind(' ') + 1, std::string::npos, "?");
        const wxDateTime from = starts[round % 2] + wxTimeSpan::Minutes(static_cast<long>(random() % 600));
        const wxDateTime periodEnd = from + wxTimeSpan::Hours(static_cast<long>(12 + random() % 60));
        SCOPED_TRACE(condition + " from " + from.FormatISOCombined(' ').utf8_string());
        At(from);
        auto trigger = LoadedTrigger(context, 1, NTriggerTypeCron, condition, "0 0 0 1 1 * 1999",
                                     "0 0 0 1 1 * 1999", "0 0 0 1 1 * 1999",
                                     periodEnd.Format("%S %M %H %d %m * %Y"));
        if (trigger->GetStatus() == NTriggerStatusInvalid)
            continue;
        std::vector<std::int64_t> fired;
        const AgendaOptions window = AgendaWindow(clock.NowMs(), 3);
        trigger->CheckAndAdvance();
        while (trigger->GetNextFire().IsValid() && ToMs(trigger->GetNextFire()) <= window.untilMs) {
            // Checks come every 50 ms; one lands within the 200 ms before
            // the match.
            clock.Set(ToMs(trigger->GetNextFire()) - 100);
            if (!trigger->CheckAndAdvance())
                break;  // past the active period
            fired.push_back(ToMs(trigger->GetPrevFire()));
        }
        At(from);
        Scheduler s(context);
        s.AddTrigger(std::move(trigger));
        s.AddJob(TestJob(0, NJobTypeReminder, {1}));
        std::vector<std::int64_t> listed;
        for (const AgendaRun& run : BuildAgenda(s, window).runs)
            if (!(run.marks & AgendaMarkSkipped))
                listed.push_back(run.atMs);
        EXPECT_EQ(listed, fired);
    }
}
