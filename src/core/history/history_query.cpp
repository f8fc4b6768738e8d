#include "core/history/history_query.h"

#include "core/history/history_db.h"

namespace {

// Failed and timed out both count as failed.
const char* OutcomeClause(OutcomeFilter filter)
{
    switch (filter) {
    case OutcomeFilter::All:
        return "";
    case OutcomeFilter::Failed:
        return " AND outcome IN (1, 3)";
    case OutcomeFilter::NotRun:
        return " AND outcome = 2";
    case OutcomeFilter::Succeeded:
        return " AND outcome = 0";
    }
    return "";
}

std::string LikePattern(const std::string& text)
{
    std::string pattern = "%";
    for (char c : text) {
        if (c == '%' || c == '_' || c == '\\')
            pattern += '\\';
        pattern += c;
    }
    return pattern + "%";
}

}  // namespace

std::vector<RunRecord> QueryRuns(sqlite3* db, const HistoryQuery& query)
{
    std::string sql = std::string("SELECT ") + kRunColumns + " FROM runs WHERE 1";
    if (query.jid)
        sql += " AND jid = ?1";
    sql += OutcomeClause(query.outcome);
    if (query.sinceMs)
        sql += " AND at_ms >= ?2";
    if (!query.text.empty())
        sql += " AND (description LIKE ?3 ESCAPE '\\' OR details LIKE ?3 ESCAPE '\\')";
    sql += " ORDER BY at_ms DESC, id DESC LIMIT ?4";
    Statement statement(db, sql.c_str());
    std::vector<RunRecord> runs;
    if (!statement)
        return runs;
    if (query.jid)
        statement.Bind(1, *query.jid);
    if (query.sinceMs)
        statement.Bind(2, *query.sinceMs);
    if (!query.text.empty())
        statement.Bind(3, LikePattern(query.text));
    statement.Bind(4, query.limit);
    while (statement.Step() == SQLITE_ROW)
        runs.push_back(ReadRunRow(statement));
    return runs;
}

std::map<std::int32_t, LastResult> QueryLastResults(sqlite3* db)
{
    std::map<std::int32_t, LastResult> results;
    Statement statement(db, "SELECT jid, outcome, at_ms FROM last_result");
    while (statement && statement.Step() == SQLITE_ROW)
        results[static_cast<std::int32_t>(statement.Int(0))] = {static_cast<RunOutcome>(statement.Int(1)),
                                                                 statement.Int(2)};
    return results;
}

std::optional<RunRecord> QueryLastFailure(sqlite3* db)
{
    HistoryQuery query;
    query.outcome = OutcomeFilter::Failed;
    query.limit = 1;
    std::vector<RunRecord> runs = QueryRuns(db, query);
    if (runs.empty())
        return std::nullopt;
    return std::move(runs.front());
}

std::int64_t CountRuns(sqlite3* db)
{
    Statement statement(db, "SELECT count(*) FROM runs");
    return statement && statement.Step() == SQLITE_ROW ? statement.Int(0) : 0;
}
