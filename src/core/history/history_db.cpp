#include "core/history/history_db.h"

#include <wx/string.h>

const char* const kRunColumns =
    "id, due_ms, start_ms, end_ms, jid, job_kind, description, origin, tid, trigger_kind, source_jid, "
    "outcome, reason, details, output";

Statement::Statement(sqlite3* db, const char* sql)
{
    if (sqlite3_prepare_v3(db, sql, -1, SQLITE_PREPARE_PERSISTENT, &m_stmt, nullptr) != SQLITE_OK)
        m_stmt = nullptr;
}

Statement& Statement::operator=(Statement&& other) noexcept
{
    if (this != &other) {
        sqlite3_finalize(m_stmt);
        m_stmt = other.m_stmt;
        other.m_stmt = nullptr;
    }
    return *this;
}

std::string Statement::Text(int column) const
{
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(m_stmt, column));
    return text ? std::string(text, static_cast<std::size_t>(sqlite3_column_bytes(m_stmt, column))) : std::string();
}

bool ExecSql(sqlite3* db, const char* sql, std::string* error)
{
    char* message = nullptr;
    if (sqlite3_exec(db, sql, nullptr, nullptr, &message) == SQLITE_OK)
        return true;
    if (error)
        *error = message ? message : sqlite3_errmsg(db);
    sqlite3_free(message);
    return false;
}

RunRecord ReadRunRow(const Statement& s)
{
    RunRecord r;
    r.id = s.Int(0);
    r.dueMs = s.Int(1);
    r.startMs = s.Int(2);
    r.endMs = s.Int(3);
    r.jid = static_cast<std::int32_t>(s.Int(4));
    r.jobKind = static_cast<std::uint32_t>(s.Int(5));
    r.description = s.Text(6);
    r.origin = static_cast<RunOrigin>(s.Int(7));
    r.tid = static_cast<std::int32_t>(s.Int(8));
    r.triggerKind = static_cast<std::int32_t>(s.Int(9));
    r.sourceJid = static_cast<std::int32_t>(s.Int(10));
    r.outcome = static_cast<RunOutcome>(s.Int(11));
    r.reason = static_cast<NotRunReason>(s.Int(12));
    r.details = s.Text(13);
    r.output = s.Text(14);
    return r;
}

namespace {

const char* const kSchema =
    "CREATE TABLE runs("
    " id INTEGER PRIMARY KEY, at_ms INTEGER NOT NULL, due_ms INTEGER NOT NULL, start_ms INTEGER NOT NULL,"
    " end_ms INTEGER NOT NULL, jid INTEGER NOT NULL, job_kind INTEGER NOT NULL, description TEXT NOT NULL,"
    " origin INTEGER NOT NULL, tid INTEGER NOT NULL, trigger_kind INTEGER NOT NULL, source_jid INTEGER NOT NULL,"
    " outcome INTEGER NOT NULL, reason INTEGER NOT NULL, details TEXT NOT NULL, output TEXT NOT NULL);"
    "CREATE INDEX runs_by_time ON runs(at_ms, id);"
    "CREATE INDEX runs_by_job ON runs(jid, at_ms, id);"
    // The last outcome of each job outlives the pruning of its runs.
    "CREATE TABLE last_result(jid INTEGER PRIMARY KEY, outcome INTEGER NOT NULL, at_ms INTEGER NOT NULL,"
    " run_id INTEGER NOT NULL);"
    "CREATE INDEX runs_by_outcome ON runs(outcome, at_ms, id);";

HistoryOpenResult Problem(HistoryOpenResult result, HistoryOpenProblem problem, std::string error)
{
    if (result.db && result.code == SQLITE_OK)
        result.code = sqlite3_extended_errcode(result.db.get());
    result.db.reset();
    result.problem = problem;
    result.error = std::move(error);
    return result;
}

bool IsCorruption(int code)
{
    code &= 0xff;
    return code == SQLITE_CORRUPT || code == SQLITE_NOTADB;
}

}  // namespace

HistoryOpenResult OpenHistoryDb(const std::string& path, bool readOnly)
{
    HistoryOpenResult result;
    sqlite3* raw = nullptr;
    const int flags = (readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE) |
                      SQLITE_OPEN_NOMUTEX;
    const int rc = sqlite3_open_v2(path.c_str(), &raw, flags, nullptr);
    result.db.reset(raw);
    result.code = rc;
    if (rc != SQLITE_OK)
        return Problem(std::move(result), IsCorruption(rc) ? HistoryOpenProblem::Corrupt : HistoryOpenProblem::CannotOpen,
                       raw ? sqlite3_errmsg(raw) : sqlite3_errstr(rc));
    sqlite3* db = result.db.get();
    sqlite3_extended_result_codes(db, 1);
    // A reader waits briefly for the writer's checkpoint instead of failing.
    sqlite3_busy_timeout(db, 2000);

    Statement version(db, "PRAGMA user_version");
    const int step = version ? version.Step() : sqlite3_errcode(db);
    if (step != SQLITE_ROW)
        return Problem(std::move(result), IsCorruption(step) ? HistoryOpenProblem::Corrupt : HistoryOpenProblem::CannotOpen,
                       sqlite3_errmsg(db));
    const std::int64_t userVersion = version.Int(0);
    version = Statement();
    if (userVersion > kHistorySchemaVersion)
        return Problem(std::move(result), HistoryOpenProblem::NewerSchema,
                       wxString::Format("schema %lld, this version knows %d", static_cast<long long>(userVersion),
                                        kHistorySchemaVersion)
                           .utf8_string());

    // A damaged page anywhere shows here rather than in the middle of a run.
    // Readers skip it: the command line must answer quickly, and a damaged
    // page only costs them the rows it held.
    if (!readOnly) {
        Statement check(db, "PRAGMA quick_check(1)");
        const int checked = check ? check.Step() : sqlite3_errcode(db);
        if (checked != SQLITE_ROW)
            return Problem(std::move(result),
                           IsCorruption(checked) ? HistoryOpenProblem::Corrupt : HistoryOpenProblem::CannotOpen,
                           sqlite3_errmsg(db));
        if (check.Text(0) != "ok")
            return Problem(std::move(result), HistoryOpenProblem::Corrupt, check.Text(0));
    }

    if (userVersion == 0) {
        if (readOnly)
            return Problem(std::move(result), HistoryOpenProblem::CannotOpen, "no run history yet");
        Statement tables(db, "SELECT count(*) FROM sqlite_schema");
        if (!tables || tables.Step() != SQLITE_ROW)
            return Problem(std::move(result), HistoryOpenProblem::Corrupt, sqlite3_errmsg(db));
        if (tables.Int(0) != 0)
            return Problem(std::move(result), HistoryOpenProblem::Corrupt, "tables of an unknown layout");
    }
    if (readOnly)
        return result;

    std::string error;
    // NORMAL in WAL mode: a killed process loses nothing committed; only a
    // power cut may lose the last commits, never the database.
    if (!ExecSql(db, "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL;", &error))
        return Problem(std::move(result), HistoryOpenProblem::CannotOpen, error);
    if (userVersion == 0) {
        const std::string create = std::string("BEGIN;") + kSchema +
                                   wxString::Format("PRAGMA user_version=%d;COMMIT;", kHistorySchemaVersion).utf8_string();
        if (!ExecSql(db, create.c_str(), &error))
            return Problem(std::move(result), HistoryOpenProblem::CannotOpen, error);
    }
    return result;
}
