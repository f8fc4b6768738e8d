#pragma once
// The history database's file format and a thin layer over SQLite: opening
// with the schema check, statements that finalize themselves.

#include <cstdint>
#include <memory>
#include <string>

#include <sqlite3.h>

#include "core/history/run_record.h"

// PRAGMA user_version of the schema this program writes.
constexpr int kHistorySchemaVersion = 1;

struct SqliteCloser {
    void operator()(sqlite3* db) const { sqlite3_close_v2(db); }
};
using HistoryDb = std::unique_ptr<sqlite3, SqliteCloser>;

class Statement {
public:
    Statement() = default;
    Statement(sqlite3* db, const char* sql);
    ~Statement() { sqlite3_finalize(m_stmt); }
    Statement(Statement&& other) noexcept : m_stmt(other.m_stmt) { other.m_stmt = nullptr; }
    Statement& operator=(Statement&& other) noexcept;
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    explicit operator bool() const { return m_stmt != nullptr; }
    sqlite3_stmt* get() const { return m_stmt; }
    void Bind(int index, std::int64_t value) { sqlite3_bind_int64(m_stmt, index, value); }
    void Bind(int index, const std::string& text)
    { sqlite3_bind_text(m_stmt, index, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT); }
    void BindNull(int index) { sqlite3_bind_null(m_stmt, index); }
    int Step() { return sqlite3_step(m_stmt); }
    void Reset() { sqlite3_reset(m_stmt); sqlite3_clear_bindings(m_stmt); }
    std::int64_t Int(int column) const { return sqlite3_column_int64(m_stmt, column); }
    std::string Text(int column) const;

private:
    sqlite3_stmt* m_stmt = nullptr;
};

enum class HistoryOpenProblem { None, CannotOpen, Corrupt, NewerSchema };

struct HistoryOpenResult {
    HistoryDb db;
    HistoryOpenProblem problem = HistoryOpenProblem::None;
    std::string error;  // SQLite's words, or the schema numbers
    int code = SQLITE_OK;  // SQLite's (extended) result code, when it had one

    // Another connection held a lock for too long: worth a later try, not a
    // reason to move the file aside.
    bool Transient() const { return (code & 0xff) == SQLITE_BUSY || (code & 0xff) == SQLITE_LOCKED; }
};

// Opens (and, unless read-only, creates and sets up: WAL, schema) the
// database at `path` (UTF-8). A read-only open never creates anything.
HistoryOpenResult OpenHistoryDb(const std::string& path, bool readOnly);

// Runs SQL without results; false with SQLite's message in `error`.
bool ExecSql(sqlite3* db, const char* sql, std::string* error);

// The columns a RunRecord is read from, in this order (SELECT lists).
extern const char* const kRunColumns;
RunRecord ReadRunRow(const Statement& statement);
