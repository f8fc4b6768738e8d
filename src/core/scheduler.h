#pragma once
// The single owner of all jobs and triggers: the two lists in file order,
// the map from TID to the owning job, id allocation, the list lock, the
// change count, and every edit as one operation (the dialogs call them).
// The firing pass is engine/trigger_checker.*, the data file
// data/scheduler_data.*.

#include <atomic>
#include <cstdint>
#include <memory>
#include <set>
#include <shared_mutex>
#include <unordered_map>
#include <vector>

#include <wx/string.h>

#include "core/data/data_file_paths.h"
#include "core/jobs/job.h"
#include "core/store/change_tracker.h"
#include "core/triggers/trigger.h"

class SessionContext;

// A whole-job edit from the job dialog: the job's values and its triggers as
// the dialog left them.
struct JobEdit {
    JobParam job;
    // The JID of the job being edited; -1 for a new job or a copy.
    std::int32_t editedJid = -1;
    std::vector<TriggerParam> triggers;
    // Triggers of the job changed in the dialog; the others keep their times.
    std::set<std::int64_t> changedTids;
};

class Scheduler {
public:
    using JobPtr = std::shared_ptr<Job>;
    using TriggerPtr = std::shared_ptr<Trigger>;

    // Triggers are made in `context` (which must outlive the scheduler); the
    // data file lives under `appDir`.
    explicit Scheduler(const SessionContext& context, const wxString& appDir = wxString());
    Scheduler(const Scheduler&) = delete;
    Scheduler& operator=(const Scheduler&) = delete;

    // Edits (main thread). Each takes the edit lock itself and counts a
    // change.
    void AddJob(std::unique_ptr<Job> job);
    void AddTrigger(std::unique_ptr<Trigger> trigger);
    // Enabling or disabling a job applies to its triggers at once (status
    // and next time).
    void SetJobEnable(Job* job, bool enable);
    void EnableAllJobs(bool enable);
    // The job and its triggers.
    void DeleteJob(Job* job);
    void DeleteTrigger(Trigger* trigger);
    // Stores a job dialog's result: a new job, or the edited one with its
    // triggers (a job or trigger that changed kind is replaced under the
    // same id; triggers no longer in its list go). False only for a kind
    // that does not exist.
    bool ApplyJobEdit(const JobEdit& edit);
    // Stores a trigger dialog's result for trigger `tid`; the trigger starts
    // afresh. False when it no longer exists.
    bool ApplyTriggerEdit(std::int64_t tid, const TriggerParam& param);

    // Exact lookups: null when no element has the id. Under a lock.
    JobPtr GetJobById(std::int32_t jid) const;
    Trigger* GetTriggerById(std::int64_t tid) const;
    // The job that owns the trigger, or null.
    const JobPtr& GetTriggerOwner(std::int64_t tid) const;

    // The smallest JID no job has.
    std::int32_t NewJID() const;
    // A TID above every trigger's that none of `taken` is (a dialog's
    // triggers not yet stored).
    std::int64_t UnusedTid(const std::set<std::int64_t>& taken) const;
    // total = all triggers; active = enabled, not finished, not in "Timeout".
    void CountTriggers(std::size_t& total, std::size_t& active) const;

    // Held exclusively by every change of the lists, the owner map and a
    // trigger's or job's own settings; checker passes hold it shared.
    // Taking it counts an edit (EditGeneration), so the checkers look at
    // every trigger again once it is released.
    std::unique_lock<std::shared_mutex> EditLock() const
    {
        std::unique_lock<std::shared_mutex> lock(m_listMutex);
        m_editGeneration.fetch_add(1, std::memory_order_relaxed);
        return lock;
    }
    std::uint64_t EditGeneration() const { return m_editGeneration.load(std::memory_order_relaxed); }
    std::shared_lock<std::shared_mutex> ReadLock() const { return std::shared_lock<std::shared_mutex>(m_listMutex); }

    const std::vector<JobPtr>& Jobs() const { return m_jobs; }
    const std::vector<TriggerPtr>& Triggers() const { return m_triggers; }
    // The TIDs of Triggers(), same order: a checker finds its share without
    // touching every trigger object.
    const std::vector<std::int64_t>& TriggerTids() const { return m_triggerTids; }
    const DataFilePaths& Paths() const { return m_paths; }
    const SessionContext& Context() const { return m_context; }
    ChangeTracker& Changes() { return m_changes; }
    const ChangeTracker& Changes() const { return m_changes; }

    // Fills an empty scheduler (the loader, under the edit lock): the job
    // and trigger states follow the jobs' ENABLE.
    void Fill(std::vector<std::unique_ptr<Job>> jobs, std::vector<std::unique_ptr<Trigger>> triggers);

private:
    void AddJobLocked(JobPtr job);
    void AddTriggerLocked(TriggerPtr trigger);
    void SetJobEnableLocked(Job& job, bool enable);
    void DeleteTriggerLocked(Trigger* trigger);
    void DeleteJobLocked(Job* job);
    void StoreTriggerLocked(TriggerParam param, bool isNew);
    void RebuildTriggerTids();

    const SessionContext& m_context;
    DataFilePaths m_paths;
    std::vector<JobPtr> m_jobs;
    std::vector<TriggerPtr> m_triggers;
    std::vector<std::int64_t> m_triggerTids;
    std::unordered_map<std::int64_t, JobPtr> m_triggerOwners;
    mutable std::shared_mutex m_listMutex;
    mutable std::atomic<std::uint64_t> m_editGeneration{0};
    ChangeTracker m_changes;
};
