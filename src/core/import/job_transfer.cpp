#include "core/import/job_transfer.h"

#include <algorithm>
#include <map>
#include <set>

#include "core/data/data_file_reader.h"
#include "core/data/scheduler_data.h"

std::string ExportJobs(const Scheduler& scheduler, const std::vector<std::int32_t>& jids, wxString& problem)
{
    std::vector<Scheduler::JobPtr> jobs;
    std::vector<Scheduler::TriggerPtr> triggers;
    const auto lock = scheduler.ReadLock();
    if (jids.empty()) {
        jobs = scheduler.Jobs();
    } else {
        for (std::int32_t jid : jids) {
            Scheduler::JobPtr job = scheduler.GetJobById(jid);
            if (!job) {
                problem = wxString::Format(_("no job has the JID %d"), jid);
                return std::string();
            }
            if (std::find(jobs.begin(), jobs.end(), job) == jobs.end())
                jobs.push_back(job);
        }
    }
    for (const Scheduler::JobPtr& job : jobs)
        for (std::int64_t tid : job->GetTriggerIds())
            for (const Scheduler::TriggerPtr& trigger : scheduler.Triggers())
                if (trigger->GetTid() == tid)
                    triggers.push_back(trigger);
    return BuildDataDocument(jobs, triggers);
}

JobImport PlanJobImport(const std::string& bytes, const Scheduler& scheduler)
{
    JobImport plan;
    DataFileContent content;
    ReadDataFileBytes(bytes.data(), bytes.size(), content, scheduler.Context());
    if (!content.problem.empty() || !content.wellFormed || !content.schedulerRoot) {
        plan.problem = content.problem.empty() ? wxString("the file is not an export of jobs") : content.problem;
        return plan;
    }
    if (!content.dropped.empty()) {
        // Half a job is worse than none: the file is refused as a whole.
        plan.problem = wxJoin(content.dropped, '\n', '\0');
        return plan;
    }

    std::set<std::int32_t> usedJids;
    std::set<std::int64_t> usedTids;
    {
        const auto lock = scheduler.ReadLock();
        for (const Scheduler::JobPtr& job : scheduler.Jobs())
            usedJids.insert(job->GetId());
    }
    std::map<std::int32_t, std::int32_t> jids;
    std::map<std::int64_t, std::int64_t> tids;
    std::int32_t nextJid = 0;
    for (const auto& job : content.jobs) {
        while (usedJids.count(nextJid))
            ++nextJid;
        usedJids.insert(nextJid);
        jids[job->GetId()] = nextJid;
        plan.jidMap.emplace_back(job->GetId(), nextJid);
    }
    std::map<std::int64_t, const Trigger*> fileTriggers;
    for (const auto& trigger : content.triggers)
        fileTriggers[trigger->GetTid()] = trigger.get();
    std::set<std::int64_t> owned;
    for (const auto& job : content.jobs) {
        JobEdit edit;
        job->GetParam(edit.job);
        edit.job.id = jids[job->GetId()];
        edit.job.triggerIds.clear();
        for (std::int64_t tid : job->GetTriggerIds()) {
            const auto found = fileTriggers.find(tid);
            if (found == fileTriggers.end() || owned.count(tid)) {
                plan.notes.push_back(wxString::Format(_("JID %d: the trigger TID %lld is not in the file (or "
                                                        "belongs to another job there): left out"),
                                                      job->GetId(), static_cast<long long>(tid)));
                continue;
            }
            owned.insert(tid);
            TriggerParam trigger;
            found->second->MakeParam(trigger);
            trigger.tid = scheduler.UnusedTid(usedTids);
            usedTids.insert(trigger.tid);
            tids[tid] = trigger.tid;
            edit.job.triggerIds.push_back(trigger.tid);
            edit.triggers.push_back(trigger);
        }
        edit.job.associatedJids.clear();
        for (std::int32_t chained : job->GetAssociatedJids()) {
            const auto found = jids.find(chained);
            if (found == jids.end())
                plan.notes.push_back(wxString::Format(
                    _("JID %d: the chain to JID %d is left out: that job is not in the file"), job->GetId(), chained));
            else
                edit.job.associatedJids.push_back(found->second);
        }
        plan.edits.push_back(std::move(edit));
    }
    for (const auto& [tid, trigger] : fileTriggers)
        if (!owned.count(tid))
            plan.notes.push_back(wxString::Format(_("the trigger TID %lld belongs to no job in the file: left out"),
                                                  static_cast<long long>(tid)));
    return plan;
}

void ApplyJobImport(const JobImport& plan, Scheduler& scheduler)
{
    for (const JobEdit& edit : plan.edits)
        scheduler.ApplyJobEdit(edit);
}
