#pragma once
// Reading the run history: newest runs first with filters, the last result
// of every job, the last failure. Works on any connection (the session's own
// reader, or a read-only one for the command line).

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <sqlite3.h>

#include "core/history/run_record.h"

enum class OutcomeFilter { All, Failed, NotRun, Succeeded };

struct HistoryQuery {
    std::optional<std::int32_t> jid;
    OutcomeFilter outcome = OutcomeFilter::All;
    std::optional<std::int64_t> sinceMs;  // runs listed at or after
    std::string text;                     // in the description or the details, any case
    std::int64_t limit = 100;             // < 0: all
};

struct LastResult {
    RunOutcome outcome = RunOutcome::Succeeded;
    std::int64_t atMs = 0;
};

// Newest first (by the moment a run is listed at, then by the order stored).
std::vector<RunRecord> QueryRuns(sqlite3* db, const HistoryQuery& query);
std::map<std::int32_t, LastResult> QueryLastResults(sqlite3* db);
std::optional<RunRecord> QueryLastFailure(sqlite3* db);
std::int64_t CountRuns(sqlite3* db);
