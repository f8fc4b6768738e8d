#pragma once
// The single owner of all jobs and triggers. Editing, loading and saving run
// on the main thread; the checker threads read the lists.

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>
#include <vector>

#include <wx/datetime.h>
#include <wx/string.h>
#include <wx/arrstr.h>
#include <wx/thread.h>

#include "core/data/data_file_paths.h"
#include "core/jobs/job.h"
#include "core/scheduler_observers.h"
#include "core/triggers/trigger.h"

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

// Where a checker pass sends what it found. Called while the pass holds the
// list lock shared: implementations only queue.
class TriggerCheckSink {
public:
    virtual ~TriggerCheckSink() = default;
    // A firing trigger's enabled job; true when the request was queued.
    virtual bool RunJob(const std::shared_ptr<Job>& job) = 0;
    // The job of a trigger due within the notice period (warn-before-run set).
    virtual void AdvanceNotice(const std::shared_ptr<Job>& job) = 0;
};

class Scheduler {
public:
    using JobPtr = std::shared_ptr<Job>;
    using TriggerPtr = std::shared_ptr<Trigger>;

    explicit Scheduler(const wxString& appDir = wxString());
    virtual ~Scheduler();
    Scheduler(const Scheduler&) = delete;
    Scheduler& operator=(const Scheduler&) = delete;

    std::size_t AddJob(std::unique_ptr<Job> job, bool notify);
    void UpdateJob(Job* job, bool notify);
    void SetJobEnable(Job* job, bool enable, bool notify);
    void EnableAllJobs(bool enable);
    void DeleteJob(Job* job, bool notify);
    void DeleteTrigger(Trigger* trigger, bool notify);
    void AddTrigger(std::unique_ptr<Trigger> trigger, bool notify);
    void UpdateTrigger(Trigger* trigger, bool notify);

    // The first element with the id; the LAST element when none matches (kept
    // on purpose: compare the id of the result); null for an empty list.
    // Never use it to choose a job to run: GetJobById is exact.
    Job* FindJob(std::int32_t jid) const;
    Trigger* FindTrigger(std::int64_t tid) const;
    // Exact lookups: null when no element has the id.
    JobPtr GetJobById(std::int32_t jid) const;
    Trigger* GetTriggerById(std::int64_t tid) const;
    // The job that owns the trigger, or null.
    Job* GetTriggerOwner(std::int64_t tid) const;

    std::int32_t NewJID() const;
    std::int32_t MaxJID() const;
    std::int64_t MaxTID() const;
    bool IsTIDFree(std::int64_t tid) const;
    // total = all triggers; active = enabled, not finished, not in "Timeout".
    void CountTriggers(std::size_t& total, std::size_t& active) const;

    const std::vector<Job*>& JobsByStatus(bool enable);
    const std::vector<Job*>& JobsByJobType(std::uint32_t type);
    const std::vector<Job*>& JobsByTriggerType(std::uint32_t type);

    // One checker pass over the triggers whose TID modulo `count` is
    // `index`: check-and-advance each enabled, unfinished trigger that is not
    // being edited; report firings and advance notices to `sink`.
    void CheckTriggerShare(std::size_t count, std::size_t index, TriggerCheckSink& sink);

    // Held exclusively by every change of the lists, the owner map and a
    // trigger's or job's own settings; checker passes hold it shared. Code
    // that edits a trigger or job in place (a dialog) takes EditLock().
    std::unique_lock<std::shared_mutex> EditLock() const { return std::unique_lock<std::shared_mutex>(m_listMutex); }
    std::shared_lock<std::shared_mutex> ReadLock() const { return std::shared_lock<std::shared_mutex>(m_listMutex); }

    // Arms every With Start trigger that has not fired again, counting from
    // now; returns how many it reset. Run once before the checker threads
    // start, and by the reset command.
    std::size_t PrepareWithStartTriggers();

    // Hands job `jid` to execution with value 128; JIDs above 99 and JIDs of
    // no job are refused (false, nothing runs).
    bool RunJobByNumber(std::int32_t jid);

    // Fills the empty scheduler from data1 (or data2 when data1 is unusable).
    // With `keepUnreadableCopies`, a file that could not be used is moved to
    // <name>.bad-<timestamp> first, so no later save can overwrite it.
    DataLoadReport LoadSchedulerData(bool keepUnreadableCopies = true);
    // Writes data1 (and data2 unless `workingOnly`) when something changed.
    // A failure is shown to the user (once per distinct failure, always when
    // `workingOnly`, the save at exit) and leaves the data marked changed.
    DataSaveResult SaveSchedulerData(bool workingOnly);

    const std::vector<JobPtr>& Jobs() const { return m_jobs; }
    const std::vector<TriggerPtr>& Triggers() const { return m_triggers; }
    const DataFilePaths& Paths() const { return m_paths; }

    void SetJobObserver(JobObserver* observer) { m_pJobObserver = observer; }
    void SetTriggerObserver(TriggerObserver* observer) { m_pTriggerObserver = observer; }
    void SetJobRunRequests(JobRunRequests* requests) { m_pRunRequests = requests; }

    // The scheduler lock (the application's shared lock).
    wxCriticalSection& Lock() const;

    bool IsDataChanged() const { return m_nChanges.load() != m_nSavedChanges.load(); }
    void SetDataChanged(bool changed)
    {
        if (changed)
            m_nChanges.fetch_add(1);
        else
            m_nSavedChanges.store(m_nChanges.load());
    }
    // Marks a change made by a firing: remembers when the flag went up.
    void MarkChangedByFiring(const wxDateTime& now);
    wxDateTime GetDataChangedTime() const;

private:
    void ApplyJobStateToTriggers(Job& job, bool runCheck);
    void SetJobEnableLocked(Job* job, bool enable);
    void DeleteTriggerLocked(Trigger* trigger);
    void ClearJobChangedMarks();
    void ClearTriggerChangedMarks();
    void NotifyJobs();
    void NotifyTriggers();
    void RemoveTrigger(Trigger* trigger);
    // Refreshes m_triggerTids after any change of the trigger list.
    void RebuildTriggerTids();

    DataFilePaths m_paths;
    std::vector<JobPtr> m_jobs;
    std::vector<Job*> m_jobsByTriggerType;
    std::vector<Job*> m_jobsByJobType;
    std::vector<Job*> m_jobsByStatus;
    std::vector<TriggerPtr> m_triggers;
    std::vector<std::int64_t> m_triggerTids;  // the TIDs of m_triggers, same order
    std::unordered_map<std::int64_t, JobPtr> m_triggerOwners;
    mutable std::shared_mutex m_listMutex;
    JobObserver* m_pJobObserver = nullptr;
    TriggerObserver* m_pTriggerObserver = nullptr;
    JobRunRequests* m_pRunRequests = nullptr;

    // Changes counted, and the count the file last saved holds: a change made
    // while a save writes is never taken as saved.
    std::atomic<std::uint64_t> m_nChanges{0};
    std::atomic<std::uint64_t> m_nSavedChanges{0};
    wxString m_strLastSaveError;
    wxDateTime m_dtDataChanged;
};
