#include "core/scheduler.h"

#include <algorithm>

#include "core/clock.h"
#include "core/shared_lock.h"
#include "core/triggers/one_shot_triggers.h"

Scheduler::Scheduler(const wxString& appDir) : m_paths(MakeDataFilePaths(appDir)) {}

Scheduler::~Scheduler() = default;

wxCriticalSection& Scheduler::Lock() const
{
    return SharedLock();
}

void Scheduler::NotifyJobs()
{
    if (m_pJobObserver)
        m_pJobObserver->Changed();
}

void Scheduler::NotifyTriggers()
{
    if (m_pTriggerObserver)
        m_pTriggerObserver->Changed();
}

void Scheduler::ClearJobChangedMarks()
{
    for (const JobPtr& job : m_jobs)
        job->SetChanged(false);
}

void Scheduler::ClearTriggerChangedMarks()
{
    for (const TriggerPtr& trigger : m_triggers)
        trigger->SetChanged(false);
}

std::size_t Scheduler::AddJob(std::unique_ptr<Job> job, bool notify)
{
    std::size_t index = 0;
    {
        auto lock = EditLock();
        ClearJobChangedMarks();
        JobPtr added(std::move(job));
        for (std::int64_t tid : added->GetTriggerIds())
            m_triggerOwners[tid] = added;
        added->SetChanged(true);
        m_jobs.push_back(std::move(added));
        index = m_jobs.size() - 1;
        SetDataChanged(true);
    }
    if (notify)
        NotifyJobs();
    return index;
}

void Scheduler::UpdateJob(Job* job, bool notify)
{
    {
        auto lock = EditLock();
        ClearJobChangedMarks();
        job->SetChanged(true);
        // The job's trigger list may have changed in the dialog.
        JobPtr owner;
        for (auto it = m_triggerOwners.begin(); it != m_triggerOwners.end();) {
            if (it->second.get() == job) {
                owner = it->second;
                it = m_triggerOwners.erase(it);
            } else {
                ++it;
            }
        }
        if (!owner)
            owner = GetJobById(job->GetId());
        if (owner.get() == job) {
            for (std::int64_t tid : job->GetTriggerIds())
                m_triggerOwners[tid] = owner;
        }
        SetDataChanged(true);
    }
    if (notify)
        NotifyJobs();
}

void Scheduler::ApplyJobStateToTriggers(Job& job, bool runCheck)
{
    for (std::int64_t tid : job.GetTriggerIds()) {
        Trigger* trigger = GetTriggerById(tid);
        if (!trigger)
            continue;
        trigger->SetEnable(job.IsEnabled());
        trigger->SetStatus(job.IsEnabled() ? NTriggerStatusWaiting : NTriggerStatusDisable);
        if (runCheck)
            trigger->CheckAndAdvance();
    }
}

void Scheduler::SetJobEnableLocked(Job* job, bool enable)
{
    ClearJobChangedMarks();
    job->SetEnable(enable);
    job->SetChanged(true);
    // Runs each trigger's check once so its status and next time are
    // current; the exclusive lock keeps the checker threads out meanwhile.
    ApplyJobStateToTriggers(*job, true);
    SetDataChanged(true);
}

void Scheduler::SetJobEnable(Job* job, bool enable, bool notify)
{
    {
        auto lock = EditLock();
        SetJobEnableLocked(job, enable);
    }
    if (notify)
        NotifyJobs();
}

void Scheduler::EnableAllJobs(bool enable)
{
    for (std::size_t i = 0; i < m_jobs.size(); ++i) {
        Job* job = m_jobs[i].get();
        if (job->IsEnabled() == enable)
            continue;
        {
            auto lock = EditLock();
            SetJobEnableLocked(job, enable);
        }
        NotifyJobs();
    }
    NotifyJobs();
    SetDataChanged(true);
}

void Scheduler::RemoveTrigger(Trigger* trigger)
{
    auto it = std::find_if(m_triggers.begin(), m_triggers.end(),
                           [trigger](const TriggerPtr& t) { return t.get() == trigger; });
    if (it != m_triggers.end())
        m_triggers.erase(it);
    RebuildTriggerTids();
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
    ClearTriggerChangedMarks();
    RemoveTrigger(trigger);
    SetDataChanged(true);
}

void Scheduler::DeleteJob(Job* job, bool notify)
{
    {
        auto lock = EditLock();
        for (std::int64_t tid : job->GetTriggerIds()) {
            auto owner = m_triggerOwners.find(tid);
            if (owner != m_triggerOwners.end() && owner->second.get() == job)
                m_triggerOwners.erase(owner);
            if (Trigger* trigger = GetTriggerById(tid))
                DeleteTriggerLocked(trigger);
        }
        // A job thread running this job works on its own copy, so the job
        // can go at once.
        auto it = std::find_if(m_jobs.begin(), m_jobs.end(), [job](const JobPtr& j) { return j.get() == job; });
        if (it != m_jobs.end())
            m_jobs.erase(it);
        SetDataChanged(true);
    }
    if (notify)
        NotifyJobs();
}

void Scheduler::DeleteTrigger(Trigger* trigger, bool notify)
{
    {
        auto lock = EditLock();
        DeleteTriggerLocked(trigger);
    }
    if (notify)
        NotifyTriggers();
}

void Scheduler::AddTrigger(std::unique_ptr<Trigger> trigger, bool notify)
{
    {
        auto lock = EditLock();
        ClearTriggerChangedMarks();
        TriggerPtr added(std::move(trigger));
        added->SetChanged(true);
        added->SetFinished(false);
        added->SetStatus(NTriggerStatusFired);
        m_triggers.push_back(std::move(added));
        RebuildTriggerTids();
        SetDataChanged(true);
    }
    if (notify)
        NotifyTriggers();
}

void Scheduler::UpdateTrigger(Trigger* trigger, bool notify)
{
    {
        auto lock = EditLock();
        ClearTriggerChangedMarks();
        trigger->SetStatus(NTriggerStatusFired);
        trigger->SetChanged(true);
        trigger->SetFinished(false);
        trigger->SetNoticeGiven(false);
        RebuildTriggerTids();  // the dialog may have given it another TID
        SetDataChanged(true);
    }
    if (notify)
        NotifyTriggers();
}

void Scheduler::CheckTriggerShare(std::size_t count, std::size_t index, TriggerCheckSink& sink)
{
    auto lock = ReadLock();
    const ClockPassScope pass;
    // The TIDs sit side by side, so finding this thread's share does not
    // touch every trigger object.
    for (std::size_t i = 0; i < m_triggerTids.size(); ++i) {
        if (static_cast<std::uint64_t>(m_triggerTids[i]) % count != index)
            continue;
        const TriggerPtr& trigger = m_triggers[i];
        if (!trigger->IsEnabled() || trigger->IsFinished() || trigger->IsEditing())
            continue;
        if (trigger->CheckAndAdvance()) {
            auto owner = m_triggerOwners.find(trigger->GetTid());
            if (owner != m_triggerOwners.end() && owner->second->IsEnabled() && sink.RunJob(owner->second)) {
                // The advanced PREVFIRE must reach the data file.
                MarkChangedByFiring(GetClock().Now());
            }
        } else if (!trigger->IsNoticeGiven() && trigger->IsDue(300)) {
            auto owner = m_triggerOwners.find(trigger->GetTid());
            if (owner != m_triggerOwners.end() && owner->second->IsEnabled() && owner->second->IsWarnBeforeRun())
                sink.AdvanceNotice(owner->second);
            trigger->SetNoticeGiven(true);
        }
    }
}

Job* Scheduler::FindJob(std::int32_t jid) const
{
    if (m_jobs.empty())
        return nullptr;
    for (const JobPtr& job : m_jobs) {
        if (job->GetId() == jid)
            return job.get();
    }
    return m_jobs.back().get();
}

Trigger* Scheduler::FindTrigger(std::int64_t tid) const
{
    if (m_triggers.empty())
        return nullptr;
    for (const TriggerPtr& trigger : m_triggers) {
        if (trigger->GetTid() == tid)
            return trigger.get();
    }
    return m_triggers.back().get();
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

Job* Scheduler::GetTriggerOwner(std::int64_t tid) const
{
    auto it = m_triggerOwners.find(tid);
    return it == m_triggerOwners.end() ? nullptr : it->second.get();
}

std::int32_t Scheduler::NewJID() const
{
    std::int32_t candidate = 0;
    bool clash = true;
    while (clash) {
        clash = false;
        for (const JobPtr& job : m_jobs) {
            if (job->GetId() == candidate) {
                ++candidate;
                clash = true;
                break;
            }
        }
    }
    return candidate;
}

std::int32_t Scheduler::MaxJID() const
{
    std::int32_t maxJid = 0;
    for (const JobPtr& job : m_jobs)
        maxJid = std::max(maxJid, job->GetId());
    return maxJid;
}

std::int64_t Scheduler::MaxTID() const
{
    std::int64_t maxTid = 0;
    for (const TriggerPtr& trigger : m_triggers)
        maxTid = std::max(maxTid, trigger->GetTid());
    return maxTid;
}

bool Scheduler::IsTIDFree(std::int64_t tid) const
{
    return GetTriggerById(tid) == nullptr;
}

void Scheduler::CountTriggers(std::size_t& total, std::size_t& active) const
{
    total = m_triggers.size();
    active = static_cast<std::size_t>(std::count_if(m_triggers.begin(), m_triggers.end(), [](const TriggerPtr& t) {
        return t->IsEnabled() && !t->IsFinished() && t->GetStatus() != NTriggerStatusTimeout;
    }));
}

const std::vector<Job*>& Scheduler::JobsByStatus(bool enable)
{
    m_jobsByStatus.clear();
    for (const JobPtr& job : m_jobs) {
        if (job->IsEnabled() == enable)
            m_jobsByStatus.push_back(job.get());
    }
    return m_jobsByStatus;
}

const std::vector<Job*>& Scheduler::JobsByJobType(std::uint32_t type)
{
    m_jobsByJobType.clear();
    for (const JobPtr& job : m_jobs) {
        if (job->GetType() == type)
            m_jobsByJobType.push_back(job.get());
    }
    return m_jobsByJobType;
}

const std::vector<Job*>& Scheduler::JobsByTriggerType(std::uint32_t type)
{
    m_jobsByTriggerType.clear();
    std::unordered_map<std::int64_t, std::uint32_t> typeByTid;
    typeByTid.reserve(m_triggers.size());
    for (const TriggerPtr& trigger : m_triggers)
        typeByTid.emplace(trigger->GetTid(), trigger->GetType());
    for (const JobPtr& job : m_jobs) {
        const TidList& tids = job->GetTriggerIds();
        const bool hasKind = std::any_of(tids.begin(), tids.end(), [&](std::int64_t tid) {
            auto it = typeByTid.find(tid);
            return it != typeByTid.end() && it->second == type;
        });
        if (hasKind)
            m_jobsByTriggerType.push_back(job.get());
    }
    return m_jobsByTriggerType;
}

std::size_t Scheduler::PrepareWithStartTriggers()
{
    const wxDateTime now = GetClock().Now();
    std::size_t reset = 0;
    for (const TriggerPtr& trigger : m_triggers) {
        if (trigger->GetType() != NTriggerTypeWithStart || trigger->IsFinished())
            continue;
        static_cast<WithStartTrigger&>(*trigger).PrepareFrom(now);
        ++reset;
    }
    return reset;
}

bool Scheduler::RunJobByNumber(std::int32_t jid)
{
    if (jid > 99)
        return false;
    // An exact lookup: a JID that no longer exists runs nothing (FindJob
    // would hand back the last job of the list, which could shut down).
    const JobPtr job = GetJobById(jid);
    if (!job || !m_pRunRequests)
        return false;
    m_pRunRequests->PostJobRun(*job, 128);
    return true;
}

void Scheduler::MarkChangedByFiring(const wxDateTime& now)
{
    wxCriticalSectionLocker lock(Lock());
    if (!IsDataChanged())
        m_dtDataChanged = now;
    m_nChanges.fetch_add(1);
}

wxDateTime Scheduler::GetDataChangedTime() const
{
    wxCriticalSectionLocker lock(Lock());
    return m_dtDataChanged;
}
