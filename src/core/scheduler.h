#pragma once
// The single owner of all jobs and triggers. Editing, loading and saving run
// on the main thread; the checker threads read the lists.

#include <atomic>
#include <cstdint>
#include <memory>
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
    wxString workingProblem;  // why data1 was not used (empty when it was)
    wxArrayString keptCopies; // unreadable files moved aside before any save
    std::size_t skippedTriggers = 0;  // kinds above 11
    std::size_t skippedJobs = 0;      // kinds above 23
    bool stoppedAtUnknownElement = false;
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

    // Arms every With Start trigger that has not fired again, counting from
    // now; returns how many it reset. Run once before the checker threads
    // start, and by the reset command.
    std::size_t PrepareWithStartTriggers();

    // Hands job `jid` to execution with value 128; JIDs above 99 are refused.
    bool RunJobByNumber(std::int32_t jid);

    // Fills the empty scheduler from data1 (or data2 when data1 is unusable).
    // With `keepUnreadableCopies`, a file that could not be used is moved to
    // <name>.bad-<timestamp> first, so no later save can overwrite it.
    DataLoadReport LoadSchedulerData(bool keepUnreadableCopies = true);
    // Writes data1 (and data2 unless `workingOnly`) when something changed.
    // Returns true when it wrote.
    bool SaveSchedulerData(bool workingOnly);

    const std::vector<JobPtr>& Jobs() const { return m_jobs; }
    const std::vector<TriggerPtr>& Triggers() const { return m_triggers; }
    const DataFilePaths& Paths() const { return m_paths; }

    void SetJobObserver(JobObserver* observer) { m_pJobObserver = observer; }
    void SetTriggerObserver(TriggerObserver* observer) { m_pTriggerObserver = observer; }
    void SetJobRunRequests(JobRunRequests* requests) { m_pRunRequests = requests; }

    // The scheduler lock (the application's shared lock).
    wxCriticalSection& Lock() const;

    bool IsDataChanged() const { return m_bDataChanged.load(); }
    void SetDataChanged(bool changed) { m_bDataChanged.store(changed); }
    // Marks a change made by a firing: remembers when the flag went up.
    void MarkChangedByFiring(const wxDateTime& now);
    wxDateTime GetDataChangedTime() const;
    int GetStopCheck() const;
    void SetStopCheck(int value);

private:
    void ApplyJobStateToTriggers(Job& job, bool runCheck);
    void ClearJobChangedMarks();
    void ClearTriggerChangedMarks();
    void NotifyJobs();
    void NotifyTriggers();
    void RemoveTrigger(Trigger* trigger);

    DataFilePaths m_paths;
    std::vector<JobPtr> m_jobs;
    std::vector<Job*> m_jobsByTriggerType;
    std::vector<Job*> m_jobsByJobType;
    std::vector<Job*> m_jobsByStatus;
    std::vector<TriggerPtr> m_triggers;
    std::unordered_map<std::int32_t, Job*> m_triggerOwners;
    JobObserver* m_pJobObserver = nullptr;
    TriggerObserver* m_pTriggerObserver = nullptr;
    JobRunRequests* m_pRunRequests = nullptr;

    std::atomic<bool> m_bDataChanged{false};
    wxDateTime m_dtDataChanged;
    int m_nStopCheck = 0;
};
