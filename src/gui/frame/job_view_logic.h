#pragma once
// What the job and trigger lists show, without any window: the column tables,
// one row per job taken from the scheduler, category membership, the filter
// field, the sort order and the status bar's counters. Kept apart from the
// frame so that tables of cases reach all of it.

#include <cstddef>
#include <cstdint>
#include <vector>

#include <wx/datetime.h>
#include <wx/string.h>

class Scheduler;

struct ListColumn {
    const char* header;
    const char* widthKey;  // preference holding the width
};

// The job list's and the trigger list's columns, in display order.
const std::vector<ListColumn>& JobColumns();
const std::vector<ListColumn>& TriggerColumns();

enum JobColumn { JColJID, JColType, JColDesc, JColInfo, JColRJID, JColNextTime, JColTID, JColCount };

// "%Y-%m-%d %H:%M:%S", or empty for an invalid moment.
wxString FormatListTime(const wxDateTime& moment);
// A trigger list time: a dash when it is `unset` or invalid.
wxString FormatTriggerListTime(const wxDateTime& moment, bool unset);

// One job as the list shows it, copied under the scheduler's read lock.
struct JobRow {
    std::int32_t jid = 0;
    std::uint32_t type = 0;
    bool enabled = true;
    wxString typeName;
    wxString description;
    wxString info;         // the parameters in one line
    wxString relatedJids;  // "3,7"
    wxDateTime nextRun;    // earliest upcoming fire of the job's triggers
    std::int64_t firstTid = -1;
    wxString tids;         // all TIDs of the job, "4,5"
    std::uint32_t triggerKinds = 0;  // bit per trigger kind of the job
    wxString Cell(int column) const;
};

// Rows of all jobs in file order. Takes the read lock itself.
std::vector<JobRow> BuildJobRows(const Scheduler& scheduler);

// A category of the tree. Keys of the tree items: "ALL", "ByJobStatus",
// "ByJobType", "ByTriggerType"; children carry their grouping's key and a
// value (1 enabled / 0 disabled, or the kind number).
struct Category {
    enum class Kind { All, Status, JobType, TriggerType };
    Kind kind = Kind::All;
    std::uint32_t value = 0;
    // A grouping item itself (no value) shows all jobs.
    bool grouping = false;
};
bool InCategory(const JobRow& row, const Category& category);

// Case-insensitive: the description or the parameters contain `text`, or the
// JID written in decimal starts with it. Blank text matches everything.
bool MatchesFilter(const JobRow& row, const wxString& text);

// The sort direction values kept in colSortDir: the list control's
// ascending and descending styles; anything else (the default 4096) means
// "not sorted yet": file order.
constexpr long kSortAscending = 0x4000;
constexpr long kSortDescending = 0x8000;
constexpr long kSortDefault = 4096;
// A click on column `clicked` when the list is sorted by `column`/`dir`:
// the same column flips the direction, another one sorts it ascending.
void NextSortState(int clicked, int& column, long& dir);

// The rows of `rows` in `category` matching `filter`, as indices, ordered by
// `column` and `dir` (stable; ties and unsorted keep file order).
std::vector<std::size_t> VisibleJobOrder(const std::vector<JobRow>& rows, const Category& category,
                                         const wxString& filter, int column, long dir);

// The status bar's counters line. Jobs: total|enabled; triggers:
// total|active; checker threads; triggers per thread: smallest share|largest
// share|checked in the last pass.
struct Counters {
    std::size_t jobs = 0, enabledJobs = 0, triggers = 0, activeTriggers = 0;
    std::size_t threads = 0, minShare = 0, maxShare = 0, lastPass = 0;
};
// Shares of `tids` over `threads` checker threads (TID modulo the count).
void ShareTriggers(const std::vector<std::int64_t>& tids, std::size_t threads, Counters& counters);
wxString CountersText(const Counters& counters);
