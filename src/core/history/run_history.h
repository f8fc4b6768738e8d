#pragma once
// The run history store: history.db (SQLite, WAL) in the application folder.
// Runs are handed over by Record, which only queues them; one writer thread
// commits what has gathered in one transaction a few times a second, so no
// checker or job thread ever waits for the disk, and a killed process loses
// at most the runs of the last moment.
//
// A database that cannot be opened, is damaged or was written by a newer
// version is moved aside (history.db.bad-<timestamp>, with its -wal and -shm)
// and a new one started, and the user is told. A failed write is reported
// once and retried; the runs wait in memory meanwhile (the oldest go first
// past kMaxPendingRuns, and the log says how many).

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include <wx/string.h>

#include "core/history/history_db.h"
#include "core/history/history_query.h"
#include "core/history/run_recorder.h"

class SessionContext;

struct HistoryLimits {
    std::int64_t keepDays = 90;
    std::int64_t maxRuns = 200000;
};

// The limits the settings historyKeepDays and historyMaxRuns ask for; a
// value that is not a whole number above 0 keeps the default, and `problem`
// (when given) names it.
HistoryLimits HistoryLimitsFromSettings(const SessionContext& context, wxString* problem = nullptr);

class RunHistory final : public RunRecorder {
public:
    static constexpr std::size_t kMaxPendingRuns = 200000;
    static constexpr int kGatherMs = 100;   // a batch's longest wait for company
    static constexpr int kRetryMs = 5000;   // after a failed write

    // `path` is the database file; messages go to `context`'s user messages.
    RunHistory(SessionContext& context, wxString path);
    ~RunHistory() override;
    RunHistory(const RunHistory&) = delete;
    RunHistory& operator=(const RunHistory&) = delete;

    // Opens the database (moving a bad one aside) and starts the writer.
    // False when no database could be opened now; the writer then tries
    // again with the next batch.
    bool Start();
    // Writes what is queued and stops the writer.
    void Stop();

    // Any thread; returns at once.
    void Record(RunRecord record) override;
    // Waits until everything recorded before the call is written (or given
    // up); false after `timeoutMs`.
    bool Flush(int timeoutMs = 10000);
    // Asks the writer to drop runs older than the limits allow.
    void Prune(std::int64_t nowMs, const HistoryLimits& limits);

    // Reads, on the caller's thread, through a connection of their own.
    std::vector<RunRecord> Query(const HistoryQuery& query);
    std::map<std::int32_t, LastResult> LastResults();
    std::optional<RunRecord> LastFailure();
    std::int64_t Count();

    const wxString& Path() const { return m_path; }
    // The file the last bad database was moved to ("" if none).
    wxString MovedAsidePath() const;
    std::uint64_t WrittenCount() const;

private:
    void WriterLoop();
    bool EnsureOpen();  // writer thread (or Start)
    bool OpenOrMoveAside();
    bool WriteBatch(const std::vector<RunRecord>& batch, std::string* error, bool* corrupt);
    void DoPrune(std::int64_t nowMs, const HistoryLimits& limits);
    void MoveAside(const std::string& why);
    void ReportWriteFailure(const std::string& error);
    sqlite3* Reader();  // with m_readMutex held

    SessionContext& m_context;
    wxString m_path;

    // Writer side (the writer thread, or Start before it runs).
    HistoryDb m_db;
    Statement m_insert;
    Statement m_last;
    bool m_reportedFailure = false;

    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    std::condition_variable m_settledChanged;
    std::deque<RunRecord> m_queue;
    std::uint64_t m_recorded = 0;  // runs handed over
    std::uint64_t m_settled = 0;   // runs written or given up
    std::uint64_t m_written = 0;
    std::uint64_t m_generation = 0;  // bumped when a new database replaces a bad one
    bool m_flushWanted = false;
    bool m_pruning = false;
    bool m_stop = false;
    std::optional<std::pair<std::int64_t, HistoryLimits>> m_prune;
    wxString m_movedAside;
    std::thread m_writer;

    std::mutex m_readMutex;
    HistoryDb m_reader;
    std::uint64_t m_readerGeneration = 0;
};
