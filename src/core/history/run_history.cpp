#include "core/history/run_history.h"

#include <chrono>

#include <wx/filefn.h>
#include <wx/log.h>

#include "core/core_log.h"
#include "core/data/atomic_file.h"
#include "core/session/session_context.h"

namespace {

const char* const kInsertRun =
    "INSERT INTO runs(at_ms, due_ms, start_ms, end_ms, jid, job_kind, description, origin, tid, trigger_kind,"
    " source_jid, outcome, reason, details, output) VALUES(?1,?2,?3,?4,?5,?6,?7,?8,?9,?10,?11,?12,?13,?14,?15)";
// A run recorded late (a made-up or delayed one) never hides a newer result.
const char* const kUpsertLast =
    "INSERT INTO last_result(jid, outcome, at_ms, run_id) VALUES(?1,?2,?3,?4) ON CONFLICT(jid) DO UPDATE SET"
    " outcome = excluded.outcome, at_ms = excluded.at_ms, run_id = excluded.run_id"
    " WHERE excluded.at_ms >= last_result.at_ms";

bool IsCorruption(int code)
{
    code &= 0xff;
    return code == SQLITE_CORRUPT || code == SQLITE_NOTADB;
}

std::int64_t PositiveSetting(const SessionContext& context, const char* name, std::int64_t fallback,
                             wxString* problem)
{
    const wxString text = context.Settings().GetSetting(name);
    long long value = 0;
    if (text.empty())
        return fallback;
    if (text.ToLongLong(&value) && value > 0)
        return value;
    if (problem)
        *problem << wxString::Format(_("The setting %s is \"%s\", not a whole number above 0; %lld is used.\n"), name,
                                     text, static_cast<long long>(fallback));
    return fallback;
}

}  // namespace

HistoryLimits HistoryLimitsFromSettings(const SessionContext& context, wxString* problem)
{
    HistoryLimits limits;
    limits.keepDays = PositiveSetting(context, "historyKeepDays", limits.keepDays, problem);
    limits.maxRuns = PositiveSetting(context, "historyMaxRuns", limits.maxRuns, problem);
    return limits;
}

RunHistory::RunHistory(SessionContext& context, wxString path) : m_context(context), m_path(std::move(path)) {}

RunHistory::~RunHistory()
{
    Stop();
}

bool RunHistory::Start()
{
    const bool opened = EnsureOpen();
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_writer.joinable()) {
        m_stop = false;
        m_writer = std::thread([this] { WriterLoop(); });
    }
    return opened;
}

void RunHistory::Stop()
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_writer.joinable())
            return;
        m_stop = true;
    }
    m_wake.notify_all();
    m_writer.join();
    m_insert = Statement();
    m_last = Statement();
    m_db.reset();
    std::lock_guard<std::mutex> readLock(m_readMutex);
    m_reader.reset();
}

void RunHistory::Record(RunRecord record)
{
    bool wasEmpty = false;
    std::size_t dropped = 0;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        wasEmpty = m_queue.empty();
        m_queue.push_back(std::move(record));
        ++m_recorded;
        if (m_queue.size() > kMaxPendingRuns) {
            m_queue.pop_front();
            ++m_settled;
            dropped = 1;
        }
    }
    if (dropped)
        wxLogMessage("%d --- Run history: more than %zu runs wait to be written; the oldest was dropped", LogMs(),
                     kMaxPendingRuns);
    // The writer only needs waking for the first run of a batch.
    if (wasEmpty)
        m_wake.notify_one();
}

bool RunHistory::Flush(int timeoutMs)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    const std::uint64_t target = m_recorded;
    m_flushWanted = true;
    m_wake.notify_all();
    return m_settledChanged.wait_for(lock, std::chrono::milliseconds(timeoutMs),
                                     [&] { return m_settled >= target && !m_prune && !m_pruning; });
}

void RunHistory::Prune(std::int64_t nowMs, const HistoryLimits& limits)
{
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_prune = std::make_pair(nowMs, limits);
    }
    m_wake.notify_one();
}

wxString RunHistory::MovedAsidePath() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_movedAside;
}

std::uint64_t RunHistory::WrittenCount() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_written;
}

void RunHistory::WriterLoop()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    bool retrying = false;
    for (;;) {
        m_wake.wait(lock, [&] { return m_stop || !m_queue.empty() || m_prune; });
        // Let a burst gather into one transaction.
        const auto hurry = [&] { return m_stop || m_flushWanted; };
        if (!hurry())
            m_wake.wait_for(lock, std::chrono::milliseconds(retrying ? kRetryMs : kGatherMs), hurry);
        m_flushWanted = false;
        std::vector<RunRecord> batch(std::make_move_iterator(m_queue.begin()), std::make_move_iterator(m_queue.end()));
        m_queue.clear();
        auto prune = std::move(m_prune);
        m_prune.reset();
        m_pruning = prune.has_value();
        const bool stopping = m_stop;
        lock.unlock();

        std::string error;
        bool corrupt = false;
        bool written = batch.empty() || (EnsureOpen() && WriteBatch(batch, &error, &corrupt));
        if (!written && corrupt) {
            MoveAside(error);
            written = EnsureOpen() && WriteBatch(batch, &error, &corrupt);
        }
        if (written) {
            if (m_reportedFailure)
                wxLogMessage("%d --- Run history: written again", LogMs());
            m_reportedFailure = false;
            if (prune && m_db)
                DoPrune(prune->first, prune->second);
        } else {
            ReportWriteFailure(error.empty() ? std::string("the database could not be opened") : error);
        }

        lock.lock();
        m_pruning = false;
        retrying = !written;
        if (written) {
            m_written += batch.size();
            m_settled += batch.size();
        } else if (stopping) {
            m_settled += batch.size();
            wxLogMessage("%d --- Run history: %zu runs could not be written before the end", LogMs(), batch.size());
        } else {
            // Back to the front, in their order, ahead of what came meanwhile.
            for (auto it = batch.rbegin(); it != batch.rend(); ++it)
                m_queue.push_front(std::move(*it));
            if (prune)
                m_prune = prune;
        }
        m_settledChanged.notify_all();
        if (m_stop && (m_queue.empty() || stopping)) {
            if (!m_queue.empty()) {
                m_settled += m_queue.size();
                m_queue.clear();
                m_settledChanged.notify_all();
            }
            return;
        }
    }
}

bool RunHistory::EnsureOpen()
{
    if (m_db)
        return true;
    return OpenOrMoveAside();
}

bool RunHistory::OpenOrMoveAside()
{
    const std::string path = m_path.utf8_string();
    for (int attempt = 0; attempt < 2; ++attempt) {
        // Created here, 0600, so that SQLite gives its -wal and -shm the same mode.
        if (FILE* file = OpenPrivateFile(m_path, "a"))
            std::fclose(file);
        HistoryOpenResult opened = OpenHistoryDb(path, false);
        if (opened.problem == HistoryOpenProblem::None) {
            m_db = std::move(opened.db);
            m_insert = Statement(m_db.get(), kInsertRun);
            m_last = Statement(m_db.get(), kUpsertLast);
            return m_insert && m_last;
        }
        // Only a file that is itself the trouble goes aside; a full disk or a
        // busy lock is reported and tried again, the file left where it is.
        const bool fileAtFault = opened.problem != HistoryOpenProblem::CannotOpen ||
                                 ((opened.code & 0xff) == SQLITE_CANTOPEN && wxFileExists(m_path));
        if (!fileAtFault || opened.Transient() || attempt == 1) {
            ReportWriteFailure(opened.error);
            return false;
        }
        MoveAside(opened.problem == HistoryOpenProblem::NewerSchema
                      ? wxString::Format(_("written by a newer version of Cadrelle: %s"),
                                         wxString::FromUTF8(opened.error))
                            .utf8_string()
                      : opened.error);
    }
    return false;
}

bool RunHistory::WriteBatch(const std::vector<RunRecord>& batch, std::string* error, bool* corrupt)
{
    sqlite3* db = m_db.get();
    const auto fail = [&]() {
        const int code = sqlite3_extended_errcode(db);
        *error = sqlite3_errmsg(db);
        *corrupt = IsCorruption(code);
        m_insert.Reset();
        m_last.Reset();
        std::string ignored;
        ExecSql(db, "ROLLBACK", &ignored);
        return false;
    };
    if (!ExecSql(db, "BEGIN IMMEDIATE", error)) {
        *corrupt = IsCorruption(sqlite3_extended_errcode(db));
        return false;
    }
    for (const RunRecord& r : batch) {
        Statement& s = m_insert;
        s.Bind(1, r.AtMs());
        s.Bind(2, r.dueMs);
        s.Bind(3, r.startMs);
        s.Bind(4, r.endMs);
        s.Bind(5, r.jid);
        s.Bind(6, static_cast<std::int64_t>(r.jobKind));
        s.Bind(7, r.description);
        s.Bind(8, static_cast<std::int64_t>(r.origin));
        s.Bind(9, r.tid);
        s.Bind(10, r.triggerKind);
        s.Bind(11, r.sourceJid);
        s.Bind(12, static_cast<std::int64_t>(r.outcome));
        s.Bind(13, static_cast<std::int64_t>(r.reason));
        s.Bind(14, r.details);
        s.Bind(15, r.output);
        if (s.Step() != SQLITE_DONE)
            return fail();
        s.Reset();
        m_last.Bind(1, r.jid);
        m_last.Bind(2, static_cast<std::int64_t>(r.outcome));
        m_last.Bind(3, r.AtMs());
        m_last.Bind(4, sqlite3_last_insert_rowid(db));
        if (m_last.Step() != SQLITE_DONE)
            return fail();
        m_last.Reset();
    }
    if (!ExecSql(db, "COMMIT", error))
        return fail();
    return true;
}

void RunHistory::DoPrune(std::int64_t nowMs, const HistoryLimits& limits)
{
    sqlite3* db = m_db.get();
    Statement old(db, "DELETE FROM runs WHERE at_ms < ?1");
    old.Bind(1, nowMs - limits.keepDays * 86400000LL);
    old.Step();
    const std::int64_t excess = CountRuns(db) - limits.maxRuns;
    if (excess > 0) {
        Statement oldest(db, "DELETE FROM runs WHERE id IN (SELECT id FROM runs ORDER BY at_ms, id LIMIT ?1)");
        oldest.Bind(1, excess);
        oldest.Step();
    }
}

void RunHistory::MoveAside(const std::string& why)
{
    m_insert = Statement();
    m_last = Statement();
    m_db.reset();
    const wxString stamp = m_context.GetClock().Now().Format("%Y%m%d-%H%M%S");
    wxString kept = m_path + ".bad-" + stamp;
    for (int n = 2; wxFileExists(kept); ++n)
        kept = wxString::Format("%s.bad-%s-%d", m_path, stamp, n);
    bool moved = wxRenameFile(m_path, kept, false);
    for (const char* suffix : {"-wal", "-shm"}) {
        if (wxFileExists(m_path + suffix))
            moved = wxRenameFile(m_path + suffix, kept + suffix, false) && moved;
    }
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_movedAside = kept;
        ++m_generation;
    }
    const wxString text =
        moved ? wxString::Format(_("The run history %s could not be used (%s). It was moved aside as %s and a new "
                                   "history was started."),
                                 m_path, wxString::FromUTF8(why), kept)
              : wxString::Format(_("The run history %s could not be used (%s) and could not be moved aside; runs "
                                   "are kept in memory until it can be written."),
                                 m_path, wxString::FromUTF8(why));
    wxLogMessage("%d --- %s", LogMs(), text);
    m_context.Messages().ShowMessage(text, "Cadrelle");
}

void RunHistory::ReportWriteFailure(const std::string& error)
{
    if (m_reportedFailure)
        return;
    m_reportedFailure = true;
    const wxString text = wxString::Format(
        _("The run history %s could not be written (%s). Runs are kept in memory and written when it works again."),
        m_path, wxString::FromUTF8(error));
    wxLogMessage("%d --- %s", LogMs(), text);
    m_context.Messages().ShowMessage(text, "Cadrelle");
}

sqlite3* RunHistory::Reader()
{
    std::uint64_t generation = 0;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        generation = m_generation;
    }
    if (!m_reader || m_readerGeneration != generation) {
        m_reader.reset();
        HistoryOpenResult opened = OpenHistoryDb(m_path.utf8_string(), true);
        m_reader = std::move(opened.db);
        m_readerGeneration = generation;
    }
    return m_reader.get();
}

std::vector<RunRecord> RunHistory::Query(const HistoryQuery& query)
{
    std::lock_guard<std::mutex> lock(m_readMutex);
    sqlite3* db = Reader();
    return db ? QueryRuns(db, query) : std::vector<RunRecord>();
}

std::map<std::int32_t, LastResult> RunHistory::LastResults()
{
    std::lock_guard<std::mutex> lock(m_readMutex);
    sqlite3* db = Reader();
    return db ? QueryLastResults(db) : std::map<std::int32_t, LastResult>();
}

std::optional<RunRecord> RunHistory::LastFailure()
{
    std::lock_guard<std::mutex> lock(m_readMutex);
    sqlite3* db = Reader();
    return db ? QueryLastFailure(db) : std::nullopt;
}

std::int64_t RunHistory::Count()
{
    std::lock_guard<std::mutex> lock(m_readMutex);
    sqlite3* db = Reader();
    return db ? CountRuns(db) : 0;
}
