#include "core/scheduler.h"

#include <algorithm>

#include "core/session/session_context.h"

Scheduler::Scheduler(const SessionContext& context, const wxString& appDir)
    : m_context(context), m_paths(MakeDataFilePaths(appDir))
{
}

void Scheduler::AddJobLocked(JobPtr job)
{
    for (std::int64_t tid : job->GetTriggerIds())
        m_triggerOwners[tid] = job;
    m_jobs.push_back(std::move(job));
    m_changes.MarkChanged();
}

void Scheduler::AddJob(std::unique_ptr<Job> job)
{
    auto lock = EditLock();
    AddJobLocked(JobPtr(std::move(job)));
}

void Scheduler::AddTriggerLocked(TriggerPtr trigger)
{
    // Shown as "Fired" until its first check says otherwise.
    trigger->SetFinished(false);
    trigger->SetStatus(NTriggerStatusFired);
    m_triggers.push_back(std::move(trigger));
    RebuildTriggerTids();
    m_changes.MarkChanged();
}

void Scheduler::AddTrigger(std::unique_ptr<Trigger> trigger)
{
    auto lock = EditLock();
    AddTriggerLocked(TriggerPtr(std::move(trigger)));
}

void Scheduler::SetJobEnableLocked(Job& job, bool enable)
{
    job.SetEnable(enable);
    for (std::int64_t tid : job.GetTriggerIds()) {
        Trigger* trigger = GetTriggerById(tid);
        if (!trigger)
            continue;
        trigger->SetEnable(enable);
        trigger->SetStatus(enable ? NTriggerStatusWaiting : NTriggerStatusDisable);
        // One check makes its status and next time current; the exclusive
        // lock keeps the checker threads out meanwhile.
        trigger->CheckAndAdvance();
    }
    m_changes.MarkChanged();
}

void Scheduler::SetJobEnable(Job* job, bool enable)
{
    auto lock = EditLock();
    SetJobEnableLocked(*job, enable);
}

void Scheduler::EnableAllJobs(bool enable)
{
    auto lock = EditLock();
    for (const JobPtr& job : m_jobs) {
        if (job->IsEnabled() != enable)
            SetJobEnableLocked(*job, enable);
    }
    m_changes.MarkChanged();
}

void Scheduler::RebuildTriggerTids()
{
    m_triggerTids.resize(m_triggers.size());
    for (std::size_t i = 0; i < m_triggers.size(); ++i)
        m_triggerTids[i] = m_triggers[i]->GetTid();
}

void Scheduler::DeleteTriggerLocked(Trigger* trigger)
{
    trigger->SetEnable(false);
    trigger->SetStatus(NTriggerStatusDisable);
    auto it = std::find_if(m_triggers.begin(), m_triggers.end(),
                           [trigger](const TriggerPtr& t) { return t.get() == trigger; });
    if (it != m_triggers.end())
        m_triggers.erase(it);
    RebuildTriggerTids();
    m_changes.MarkChanged();
}

void Scheduler::DeleteTrigger(Trigger* trigger)
{
    auto lock = EditLock();
    DeleteTriggerLocked(trigger);
}

void Scheduler::DeleteJobLocked(Job* job)
{
    for (std::int64_t tid : job->GetTriggerIds()) {
        auto owner = m_triggerOwners.find(tid);
        if (owner != m_triggerOwners.end() && owner->second.get() == job)
            m_triggerOwners.erase(owner);
        if (Trigger* trigger = GetTriggerById(tid))
            DeleteTriggerLocked(trigger);
    }
    // A job thread running this job works on its own copy, so the job can
    // go at once.
    auto it = std::find_if(m_jobs.begin(), m_jobs.end(), [job](const JobPtr& j) { return j.get() == job; });
    if (it != m_jobs.end())
        m_jobs.erase(it);
    m_changes.MarkChanged();
}

void Scheduler::DeleteJob(Job* job)
{
    auto lock = EditLock();
    DeleteJobLocked(job);
}

void Scheduler::StoreTriggerLocked(TriggerParam param, bool isNew)
{
    Trigger* existing = isNew ? nullptr : GetTriggerById(param.tid);
    if (existing && existing->GetType() == param.type) {
        existing->Load(param);
        existing->SetStatus(NTriggerStatusFired);
        existing->SetFinished(false);
        existing->SetNoticeGiven(false);
        RebuildTriggerTids();
        m_changes.MarkChanged();
        return;
    }
    // Another kind is another class: replaced under the same TID, so its
    // job keeps it.
    std::unique_ptr<Trigger> trigger = CreateTrigger(param.type, m_context);
    if (!trigger)
        return;
    trigger->Load(param);
    if (existing)
        DeleteTriggerLocked(existing);
    AddTriggerLocked(TriggerPtr(std::move(trigger)));
}

bool Scheduler::ApplyJobEdit(const JobEdit& edit)
{
    auto lock = EditLock();
    // An edited job deleted meanwhile comes back as a new one.
    JobPtr edited = edit.editedJid >= 0 ? GetJobById(edit.editedJid) : nullptr;
    const JobParam& param = edit.job;
    const bool keepJob = edited && edited->GetType() == param.type;
    JobPtr job;
    if (keepJob) {
        // Triggers the dialog removed go first, then the job takes its new
        // values and owns its new trigger list.
        for (std::int64_t tid : edited->GetTriggerIds()) {
            if (std::find(param.triggerIds.begin(), param.triggerIds.end(), tid) != param.triggerIds.end())
                continue;
            m_triggerOwners.erase(tid);
            if (Trigger* trigger = GetTriggerById(tid))
                DeleteTriggerLocked(trigger);
        }
        edited->SetParam(param);
        for (std::int64_t tid : param.triggerIds)
            m_triggerOwners[tid] = edited;
        job = edited;
        m_changes.MarkChanged();
    } else {
        // A new job, a copy, or a job that changed kind: the old one goes
        // with its triggers, which come back below under the same TIDs.
        if (edited)
            DeleteJobLocked(edited.get());
        job = CreateJob(param.type);
        if (!job)
            return false;
        job->SetParam(param);
        AddJobLocked(job);
    }
    for (TriggerParam trigger : edit.triggers) {
        trigger.enable = param.enable;
        if (keepJob && GetTriggerById(trigger.tid) && GetTriggerById(trigger.tid)->GetType() == trigger.type &&
            !edit.changedTids.count(trigger.tid))
            continue;  // untouched: keeps its times
        StoreTriggerLocked(trigger, !keepJob);
    }
    SetJobEnableLocked(*job, param.enable);
    return true;
}

bool Scheduler::ApplyTriggerEdit(std::int64_t tid, const TriggerParam& param)
{
    auto lock = EditLock();
    if (!GetTriggerById(tid))
        return false;
    TriggerParam stored = param;
    stored.tid = tid;
    StoreTriggerLocked(stored, false);
    return true;
}

Scheduler::JobPtr Scheduler::GetJobById(std::int32_t jid) const
{
    for (const JobPtr& job : m_jobs) {
        if (job->GetId() == jid)
            return job;
    }
    return nullptr;
}

Trigger* Scheduler::GetTriggerById(std::int64_t tid) const
{
    for (const TriggerPtr& trigger : m_triggers) {
        if (trigger->GetTid() == tid)
            return trigger.get();
    }
    return nullptr;
}

const Scheduler::JobPtr& Scheduler::GetTriggerOwner(std::int64_t tid) const
{
    static const JobPtr none;
    auto it = m_triggerOwners.find(tid);
    return it == m_triggerOwners.end() ? none : it->second;
}

std::int32_t Scheduler::NewJID() const
{
    std::set<std::int32_t> used;
    for (const JobPtr& job : m_jobs)
        used.insert(job->GetId());
    std::int32_t candidate = 0;
    while (used.count(candidate))
        ++candidate;
    return candidate;
}

std::int64_t Scheduler::UnusedTid(const std::set<std::int64_t>& taken) const
{
    std::int64_t tid = 0;
    for (const TriggerPtr& trigger : m_triggers)
        tid = std::max(tid, trigger->GetTid());
    ++tid;
    if (!taken.empty())
        tid = std::max(tid, *taken.rbegin() + 1);
    while (GetTriggerById(tid) || taken.count(tid))
        ++tid;
    return tid;
}

void Scheduler::CountTriggers(std::size_t& total, std::size_t& active) const
{
    total = m_triggers.size();
    active = static_cast<std::size_t>(std::count_if(m_triggers.begin(), m_triggers.end(), [](const TriggerPtr& t) {
        return t->IsEnabled() && !t->IsFinished() && t->GetStatus() != NTriggerStatusTimeout;
    }));
}

void Scheduler::Fill(std::vector<std::unique_ptr<Job>> jobs, std::vector<std::unique_ptr<Trigger>> triggers)
{
    m_jobs.reserve(m_jobs.size() + jobs.size());
    for (std::unique_ptr<Job>& job : jobs) {
        JobPtr loaded(std::move(job));
        for (std::int64_t tid : loaded->GetTriggerIds())
            m_triggerOwners[tid] = loaded;
        m_jobs.push_back(std::move(loaded));
    }
    m_triggers.reserve(m_triggers.size() + triggers.size());
    for (std::unique_ptr<Trigger>& trigger : triggers)
        m_triggers.emplace_back(std::move(trigger));
    RebuildTriggerTids();

    std::unordered_map<std::int64_t, Trigger*> byTid;
    byTid.reserve(m_triggers.size());
    for (const TriggerPtr& trigger : m_triggers)
        byTid.emplace(trigger->GetTid(), trigger.get());
    for (const JobPtr& job : m_jobs) {
        for (std::int64_t tid : job->GetTriggerIds()) {
            auto it = byTid.find(tid);
            if (it == byTid.end())
                continue;
            it->second->SetEnable(job->IsEnabled());
            it->second->SetStatus(job->IsEnabled() ? NTriggerStatusWaiting : NTriggerStatusDisable);
        }
    }
}
