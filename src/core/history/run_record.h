#pragma once
// One run of a job as the history keeps it: when it was due, started and
// ended, which job it was (as it was then), what asked for it, and how it
// went. Texts are UTF-8; a not-run reason is kept as a code and put into
// words when shown, so the history reads in the language of the day.

#include <cstdint>
#include <string>

#include <wx/string.h>

// The numbers are stored: never renumber.
enum class RunOutcome : int { Succeeded = 0, Failed = 1, NotRun = 2, TimedOut = 3 };

enum class RunOrigin : int { Trigger = 0, Chain = 1, ExecuteCommand = 2, HotKey = 3, CommandLine = 4 };

enum class NotRunReason : int {
    None = 0,
    Paused = 1,          // pause mode was on when it was due
    SilentMode = 2,      // silent mode holds back this kind
    MissedSkipped = 3,   // missed while Cadrelle was not running or the computer slept; skipped
    MissedMadeUp = 4,    // missed likewise; made up once (the made-up run is its own record)
    StillRunning = 5,    // the previous run had not ended and the job skips overlaps
    ChainedJobGone = 6,  // the chained JID no longer exists
    ProgramEnded = 7,    // the program ended before a delayed or chained run was due
};

struct RunRecord {
    std::int64_t id = 0;  // given by the store
    std::int64_t dueMs = 0;
    std::int64_t startMs = 0;  // 0: never started
    std::int64_t endMs = 0;
    std::int32_t jid = 0;
    std::uint32_t jobKind = 0;
    std::string description;
    RunOrigin origin = RunOrigin::Trigger;
    std::int32_t tid = 0;           // Trigger
    std::int32_t triggerKind = -1;  // Trigger
    std::int32_t sourceJid = 0;     // Chain: the job that chained this one
    RunOutcome outcome = RunOutcome::Succeeded;
    NotRunReason reason = NotRunReason::None;
    std::string details;  // what the kind can tell, or why it failed
    std::string output;   // a background command's kept output

    // The moment the run is listed at: its start, or when it was due.
    std::int64_t AtMs() const { return startMs != 0 ? startMs : dueMs; }
};

// Words for the user (translated).
wxString OutcomeWord(RunOutcome outcome);
wxString NotRunReasonText(NotRunReason reason);
// "Trigger TID_3 (Daily)", "Chained by JID_2", "Execute command", ...
wxString OriginText(const RunRecord& record);
// The reason (not run) or the details, whichever the record has.
wxString RunSummary(const RunRecord& record);

// What asked for a run, carried with the request to the job's thread.
struct RunCause {
    RunOrigin origin = RunOrigin::ExecuteCommand;
    std::int32_t tid = 0;
    std::int32_t triggerKind = -1;
    std::int32_t sourceJid = 0;
    std::int64_t dueMs = 0;  // 0: the moment it was asked for
};

// A record of `cause` for the job `jid` of `kind`, before its outcome.
RunRecord RecordFor(const RunCause& cause, std::int32_t jid, std::uint32_t kind, const wxString& description);
