// The run history store: a real SQLite file in a temporary folder, read back
// through the same queries the window and the command line use.

#include <algorithm>
#include <csignal>
#include <random>

#include <sys/resource.h>
#include <sys/stat.h>

#include <gtest/gtest.h>
#include <wx/dir.h>

#include "core/history/history_db.h"
#include "core/history/run_history.h"
#include "core/session/session_context.h"
#include "harness.h"

namespace {

constexpr std::int64_t kDay = 86400000;
const std::int64_t kNow = Local(2026, 11, 24, 12, 0, 0).GetValue().GetValue();

RunRecord MakeRun(std::int32_t jid, RunOutcome outcome, std::int64_t atMs, std::string details = {})
{
    RunRecord r;
    r.jid = jid;
    r.jobKind = static_cast<std::uint32_t>(jid % NJobTypeCount);
    r.description = "job " + std::to_string(jid);
    r.dueMs = atMs - 5;
    r.startMs = outcome == RunOutcome::NotRun ? 0 : atMs;
    if (outcome == RunOutcome::NotRun)
        r.dueMs = atMs;
    r.endMs = r.startMs ? atMs + 250 : 0;
    r.origin = static_cast<RunOrigin>(jid % 5);
    r.tid = jid * 10;
    r.triggerKind = jid % 12;
    r.sourceJid = jid + 1;
    r.outcome = outcome;
    r.reason = outcome == RunOutcome::NotRun ? NotRunReason::SilentMode : NotRunReason::None;
    r.details = std::move(details);
    r.output = outcome == RunOutcome::Failed ? "line 1\nline 2\n" : "";
    return r;
}

// A session on a manual clock whose history lives in a fresh folder.
struct HistoryFixture {
    TempDir dir;
    ManualClock clock{kNow};
    SessionContext context{clock};
    RecordedMessages messages{context};
    wxString path = dir.File("history.db");
    RunHistory history{context, path};
};

bool Matches(const RunRecord& r, const HistoryQuery& q)
{
    const bool failed = r.outcome == RunOutcome::Failed || r.outcome == RunOutcome::TimedOut;
    const bool outcome = q.outcome == OutcomeFilter::All || (q.outcome == OutcomeFilter::Failed && failed) ||
                         (q.outcome == OutcomeFilter::NotRun && r.outcome == RunOutcome::NotRun) ||
                         (q.outcome == OutcomeFilter::Succeeded && r.outcome == RunOutcome::Succeeded);
    const auto has = [&](const std::string& s) {
        return std::search(s.begin(), s.end(), q.text.begin(), q.text.end(),
                           [](char a, char b) { return std::tolower(a) == std::tolower(b); }) != s.end();
    };
    return outcome && (!q.jid || r.jid == *q.jid) && (!q.sinceMs || r.AtMs() >= *q.sinceMs) &&
           (q.text.empty() || has(r.description) || has(r.details));
}

std::vector<std::int64_t> Ids(const std::vector<RunRecord>& runs)
{
    std::vector<std::int64_t> ids;
    for (const RunRecord& r : runs)
        ids.push_back(r.id);
    return ids;
}

}  // namespace

TEST(RunHistory, QueriesFilterAndOrderWhatWasRecorded)
{
    HistoryFixture f;
    ASSERT_TRUE(f.history.Start());
    std::vector<RunRecord> recorded;
    std::mt19937 random(18);
    const RunOutcome outcomes[] = {RunOutcome::Succeeded, RunOutcome::Failed, RunOutcome::NotRun, RunOutcome::TimedOut};
    for (int i = 0; i < 300; ++i) {
        // Out of order on purpose: a delayed run is recorded after later ones.
        RunRecord r = MakeRun(static_cast<std::int32_t>(random() % 7), outcomes[random() % 4],
                          kNow - static_cast<std::int64_t>(random() % 1000) * 60000,
                          i % 3 == 0 ? "HTTP 503 from 127.0.0.1" : "copied 5 files 100% done");
        recorded.push_back(r);
        f.history.Record(std::move(r));
    }
    ASSERT_TRUE(f.history.Flush());
    for (std::size_t i = 0; i < recorded.size(); ++i)
        recorded[i].id = static_cast<std::int64_t>(i + 1);  // the store numbers runs in arrival order
    EXPECT_EQ(f.history.Count(), 300);

    const struct {
        int line;
        HistoryQuery query;
    } cases[] = {
        {__LINE__, {std::nullopt, OutcomeFilter::All, std::nullopt, "", -1}},
        {__LINE__, {std::nullopt, OutcomeFilter::All, std::nullopt, "", 10}},
        {__LINE__, {3, OutcomeFilter::All, std::nullopt, "", -1}},
        {__LINE__, {std::nullopt, OutcomeFilter::Failed, std::nullopt, "", -1}},
        {__LINE__, {std::nullopt, OutcomeFilter::NotRun, std::nullopt, "", 5}},
        {__LINE__, {2, OutcomeFilter::Succeeded, kNow - 300 * 60000, "", -1}},
        {__LINE__, {std::nullopt, OutcomeFilter::All, std::nullopt, "http 503", -1}},
        {__LINE__, {std::nullopt, OutcomeFilter::All, std::nullopt, "100%", 20}},  // % is not a wildcard
        {__LINE__, {std::nullopt, OutcomeFilter::All, std::nullopt, "JOB 4", -1}},
        {__LINE__, {99, OutcomeFilter::All, std::nullopt, "", -1}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        std::vector<RunRecord> expected;
        for (const RunRecord& r : recorded)
            if (Matches(r, c.query))
                expected.push_back(r);
        std::stable_sort(expected.begin(), expected.end(), [](const RunRecord& a, const RunRecord& b) {
            return a.AtMs() != b.AtMs() ? a.AtMs() > b.AtMs() : a.id > b.id;
        });
        if (c.query.limit >= 0 && expected.size() > static_cast<std::size_t>(c.query.limit))
            expected.resize(static_cast<std::size_t>(c.query.limit));
        EXPECT_EQ(Ids(f.history.Query(c.query)), Ids(expected));
    }

    // Every field comes back as it went in.
    const RunRecord& sample = recorded[41];
    std::vector<RunRecord> back = f.history.Query({sample.jid, OutcomeFilter::All, sample.AtMs(), "", -1});
    const auto it = std::find_if(back.begin(), back.end(), [&](const RunRecord& r) { return r.id == sample.id; });
    ASSERT_NE(it, back.end());
    EXPECT_EQ(std::tie(it->dueMs, it->startMs, it->endMs, it->jid, it->jobKind, it->description, it->tid,
                       it->triggerKind, it->sourceJid, it->details, it->output),
              std::tie(sample.dueMs, sample.startMs, sample.endMs, sample.jid, sample.jobKind, sample.description,
                       sample.tid, sample.triggerKind, sample.sourceJid, sample.details, sample.output));
    EXPECT_EQ(std::make_tuple(it->origin, it->outcome, it->reason),
              std::make_tuple(sample.origin, sample.outcome, sample.reason));

    // The last result of each job is its newest run, however late it came.
    const auto last = f.history.LastResults();
    for (std::int32_t jid = 0; jid < 7; ++jid) {
        SCOPED_TRACE(jid);
        const std::vector<RunRecord> newest = f.history.Query({jid, OutcomeFilter::All, std::nullopt, "", 1});
        ASSERT_EQ(newest.size(), 1u);
        ASSERT_TRUE(last.count(jid));
        EXPECT_EQ(last.at(jid).atMs, newest[0].AtMs());
    }
    const auto failure = f.history.LastFailure();
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->id, f.history.Query({std::nullopt, OutcomeFilter::Failed, std::nullopt, "", 1}).at(0).id);
}

TEST(RunHistory, FileIsPrivateAndJournaledAhead)
{
    HistoryFixture f;
    ASSERT_TRUE(f.history.Start());
    f.history.Record(MakeRun(1, RunOutcome::Succeeded, kNow));
    ASSERT_TRUE(f.history.Flush());
    for (const char* suffix : {"", "-wal", "-shm"}) {
        SCOPED_TRACE(suffix);
        struct stat info {};
        ASSERT_EQ(::stat((f.path + suffix).fn_str(), &info), 0);
        EXPECT_EQ(info.st_mode & 0777, 0600u);
    }
    HistoryOpenResult reader = OpenHistoryDb(f.path.utf8_string(), true);
    ASSERT_TRUE(reader.db) << reader.error;
    Statement mode(reader.db.get(), "PRAGMA journal_mode");
    ASSERT_EQ(mode.Step(), SQLITE_ROW);
    EXPECT_EQ(mode.Text(0), "wal");
}

TEST(RunHistory, BadDatabasesAreMovedAsideAndANewOneStarted)
{
    // A database of this program with one page overwritten in the middle.
    std::string damaged;
    {
        HistoryFixture f;
        ASSERT_TRUE(f.history.Start());
        for (int i = 0; i < 3000; ++i)
            f.history.Record(MakeRun(i, RunOutcome::Succeeded, kNow, std::string(200, 'x')));
        f.history.Stop();
        damaged = ReadFileBytes(f.path);
        std::fill(damaged.begin() + 8192, damaged.begin() + 12288, '\x5a');
    }
    std::string newer;
    {
        HistoryFixture f;
        ASSERT_TRUE(f.history.Start());
        f.history.Stop();
        HistoryDb db = OpenHistoryDb(f.path.utf8_string(), false).db;
        ASSERT_TRUE(ExecSql(db.get(), "PRAGMA user_version=7; PRAGMA journal_mode=DELETE", nullptr));
        db.reset();
        newer = ReadFileBytes(f.path);
    }
    const struct {
        int line;
        std::string bytes;
        const char* reason;  // in the message
    } cases[] = {
        {__LINE__, "this is not a database, only some text that happens to sit where one should", "not a database"},
        {__LINE__, newer, "newer version"},
        {__LINE__, damaged, "database main"},
        {__LINE__, [] {
             std::string foreign(4096, '\0');
             return foreign;
         }(), ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        HistoryFixture f;
        WriteFileBytes(f.path, c.bytes);
        ASSERT_TRUE(f.history.Start());
        const wxString kept = f.history.MovedAsidePath();
        ASSERT_EQ(kept, f.path + ".bad-20261124-120000");
        EXPECT_EQ(ReadFileBytes(kept), c.bytes);
        const std::vector<std::string> boxes = f.messages.Boxes();
        ASSERT_EQ(boxes.size(), 1u);
        EXPECT_NE(boxes[0].find(kept.utf8_string()), std::string::npos) << boxes[0];
        EXPECT_NE(boxes[0].find(c.reason), std::string::npos) << boxes[0];
        f.history.Record(MakeRun(5, RunOutcome::Failed, kNow));
        ASSERT_TRUE(f.history.Flush());
        EXPECT_EQ(f.history.Count(), 1);
    }
}

TEST(RunHistory, PruningKeepsTheNewestWithinBothLimits)
{
    const struct {
        int line;
        HistoryLimits limits;
        int runs;  // one a day, the newest today
    } cases[] = {
        {__LINE__, {90, 200000}, 120},
        {__LINE__, {90, 30}, 120},
        {__LINE__, {10, 30}, 120},
        {__LINE__, {400, 1000}, 120},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        HistoryFixture f;
        ASSERT_TRUE(f.history.Start());
        for (int age = c.runs - 1; age >= 0; --age)
            f.history.Record(MakeRun(age, RunOutcome::Succeeded, kNow - age * kDay - 1));
        f.history.Prune(kNow, c.limits);
        ASSERT_TRUE(f.history.Flush());
        const std::vector<RunRecord> left = f.history.Query({std::nullopt, OutcomeFilter::All, std::nullopt, "", -1});
        const std::int64_t kept = std::min<std::int64_t>({c.runs, c.limits.keepDays, c.limits.maxRuns});
        ASSERT_EQ(static_cast<std::int64_t>(left.size()), kept);
        EXPECT_GE(left.back().AtMs(), kNow - c.limits.keepDays * kDay);
        EXPECT_EQ(left.back().jid, kept - 1);  // the oldest kept one
    }
}

TEST(RunHistory, SettingsThatAreNotWholeNumbersAreNamed)
{
    const struct {
        int line;
        const char* days;
        const char* runs;
        HistoryLimits expected;
        bool named;
    } cases[] = {
        {__LINE__, "", "", {90, 200000}, false},
        {__LINE__, "30", "5000", {30, 5000}, false},
        {__LINE__, "0", "5000", {90, 5000}, true},
        {__LINE__, "30", "lots", {30, 200000}, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        struct Settings final : SettingsLookup {
            wxString days, runs;
            wxString GetSetting(const wxString& name) const override
            { return name == "historyKeepDays" ? days : name == "historyMaxRuns" ? runs : wxString(); }
        } settings;
        settings.days = c.days;
        settings.runs = c.runs;
        SessionContext context;
        context.SetSettings(&settings);
        wxString problem;
        const HistoryLimits limits = HistoryLimitsFromSettings(context, &problem);
        EXPECT_EQ(std::make_pair(limits.keepDays, limits.maxRuns),
                  std::make_pair(c.expected.keepDays, c.expected.maxRuns));
        EXPECT_EQ(!problem.empty(), c.named) << problem;
        context.SetSettings(nullptr);
    }
}

// Killed while it writes, the store loses at most the last second and never
// the database: what is there is a gapless prefix of what was recorded.
TEST(RunHistory, KilledWriterLosesAtMostTheLastSecond)
{
    TempDir dir;
    std::mt19937 random(20261124);
    for (int round = 0; round < 5; ++round) {
        SCOPED_TRACE(round);
        ChildProcess child;
        // 120,000 runs a minute, twelve times the load the history is built for.
        ASSERT_TRUE(child.Start({CADRELLE_HISTORY_LOOP, dir.Path().utf8_string(), "120000", "3600"}));
        ::usleep(static_cast<useconds_t>(1500000 + random() % 500000));
        const std::int64_t killedAt = TheSystemClock().NowMs();
        EXPECT_EQ(child.Stop(SIGKILL), -1);

        HistoryOpenResult opened = OpenHistoryDb(dir.File("history.db").utf8_string(), false);
        ASSERT_EQ(opened.problem, HistoryOpenProblem::None) << opened.error;
        Statement check(opened.db.get(), "PRAGMA integrity_check");
        ASSERT_EQ(check.Step(), SQLITE_ROW);
        EXPECT_EQ(check.Text(0), "ok");
        // This round's runs: JIDs 0..n-1 each once, the newest within a second of the kill.
        Statement round_(opened.db.get(), "SELECT count(*), max(jid), max(start_ms) FROM runs"
                                          " WHERE id >= (SELECT max(id) FROM runs WHERE jid = 0)");
        ASSERT_EQ(round_.Step(), SQLITE_ROW);
        EXPECT_GT(round_.Int(0), 0);
        EXPECT_EQ(round_.Int(0), round_.Int(1) + 1);
        EXPECT_GE(round_.Int(2), killedAt - 1000);
    }
    wxArrayString moved;
    wxDir::GetAllFiles(dir.Path(), &moved, "*.bad-*");
    EXPECT_TRUE(moved.empty());
}

// A write the file system refuses (here: a file-size limit, as a full disk
// would) is reported once, the runs wait, and they are all written once it
// works again. In a child, since the limit holds for the whole process.
TEST(RunHistory, FailedWritesAreReportedOnceAndRetried)
{
    TempDir dir;
    ChildProcess child;
    ASSERT_TRUE(child.StartCall([&dir]() -> int {
        ManualClock clock(kNow);
        SessionContext context(clock);
        RecordedMessages messages(context);
        RunHistory history(context, dir.File("history.db"));
        if (!history.Start())
            return 10;
        history.Record(MakeRun(1, RunOutcome::Succeeded, kNow));
        if (!history.Flush())
            return 11;
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit limit{};
        ::getrlimit(RLIMIT_FSIZE, &limit);
        const rlimit tight{64 * 1024, limit.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &tight);
        for (int i = 0; i < 3; ++i) {
            for (int n = 0; n < 100; ++n)
                history.Record(MakeRun(2, RunOutcome::Failed, kNow, std::string(2000, 'e')));
            if (history.Flush(300))
                return 20 + i;  // cannot have fitted
        }
        if (messages.Boxes().size() != 1 || messages.Boxes()[0].find("history.db") == std::string::npos)
            return 30;
        ::setrlimit(RLIMIT_FSIZE, &limit);
        if (!history.Flush(15000))
            return 40;
        return history.Count() == 301 && messages.Boxes().size() == 1 ? 0 : 50;
    }));
    EXPECT_EQ(child.Stop(0, 30000), 0);
}
