#pragma once
// Loading and saving the scheduler's data file (data/data1.xml with the
// fallback copy data/data2.xml).

#include <memory>
#include <string>
#include <vector>

#include <iosfwd>

#include <wx/arrstr.h>
#include <wx/string.h>

class Scheduler;
class Job;
class Trigger;

// What loading the data file found, for the log and the caller.
struct DataLoadReport {
    enum class Source { None, Working, Fallback };
    Source source = Source::None;
    wxString workingPath;
    wxString sourcePath;      // the file loaded (empty when none was)
    wxString workingProblem;  // why data1 was not used (empty when it was)
    // Originals kept before any save could overwrite them: files that could
    // not be used are moved aside, files that loaded only in part copied.
    wxArrayString keptCopies;
    wxArrayString dropped;    // what the file holds but was not loaded as written

    // What the user should be told, in plain words: empty when the file
    // loaded as written or there was none.
    wxString Describe() const;
};

enum class DataSaveResult {
    NothingToSave,  // nothing changed since the last save
    Saved,
    Failed,         // reported to the user; the changed flag stays up
};

// Fills the empty scheduler from data1 (or data2 when data1 is unusable).
// With `keepUnreadableCopies`, a file that could not be used is moved to
// <name>.bad-<timestamp> first, so no later save can overwrite it.
DataLoadReport LoadSchedulerData(Scheduler& scheduler, bool keepUnreadableCopies = true);
// Loads for a report (--list, --agenda): nothing is kept aside or written;
// what could not be read is said on `err` in plain words.
void LoadForReport(Scheduler& scheduler, std::ostream& err);
// Writes data1 (and data2 unless `workingOnly`) when something changed. A
// failure is shown to the user (once per distinct failure, always when
// `workingOnly`, the save at exit) and leaves the data marked changed.
DataSaveResult SaveSchedulerData(Scheduler& scheduler, bool workingOnly);

// The data file's text for these jobs and triggers (the caller holds the
// read lock); also the layout of an export file. `dropped` counts the
// characters an XML file cannot hold, left out.
std::string BuildDataDocument(const std::vector<std::shared_ptr<Job>>& jobs,
                              const std::vector<std::shared_ptr<Trigger>>& triggers, std::size_t* dropped = nullptr);

// The delayed save waits this long after a firing changed the data.
constexpr long kDelayedSaveMs = 55000;
// Saves both files once the first unsaved change is more than
// kDelayedSaveMs old (or has no time: an edit). Main thread, every second.
DataSaveResult SaveWhenDue(Scheduler& scheduler);
