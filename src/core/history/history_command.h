#pragma once
// `cadrelle --history [--job JID] [--failed] [--since "YYYY-MM-DD HH:MM:SS"]
// [--limit N]`: the newest runs of history.db as a tab-separated table with a
// header, newest first. Opens the database read-only, so it answers beside a
// running instance and changes nothing.

#include <ostream>
#include <string>
#include <vector>

#include <wx/string.h>

#include "core/history/history_query.h"

// The query the arguments ask for; false with the problem (translated) in
// `error`. Without --limit, the newest 100.
bool ParseHistoryArgs(const std::vector<std::string>& args, HistoryQuery& query, std::string& error);

// The table's lines, header first.
std::string FormatHistoryTable(const std::vector<RunRecord>& runs);

// 0 on success (also with no history yet: the header alone), 2 for bad
// arguments, 1 when the database exists but cannot be read.
int RunHistoryCommand(const wxString& appDir, const std::vector<std::string>& args, std::ostream& out,
                      std::ostream& err);

// "Failed 2026-11-24 12:00:00" for a job's LAST column; "-" when it never ran.
std::string LastResultText(const std::map<std::int32_t, LastResult>& results, std::int32_t jid);
// The last failed run in one line ("2026-11-24 12:00:00 JID 3 Backup: reason"),
// or "none".
std::string LastFailureText(const std::optional<RunRecord>& failure);
