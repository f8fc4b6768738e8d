#include "trigger_builders.h"

std::unique_ptr<Trigger> LoadedTrigger(const SessionContext& context, std::int64_t tid, std::uint32_t type, const wxString& condition,
                                       const wxString& prevFire, const wxString& nextFire, const wxString& start,
                                       const wxString& end)
{
    std::unique_ptr<Trigger> trigger = CreateTrigger(type, context);
    TriggerParam p;
    p.tid = tid;
    p.type = type;
    p.condition = condition;
    p.prevFire = prevFire;
    p.nextFire = nextFire;
    p.start = start;
    p.end = end;
    trigger->Load(p);
    return trigger;
}

std::unique_ptr<Job> TestJob(std::int32_t jid, std::uint32_t kind, decltype(JobParam::triggerIds) tids,
                             IdList associated, std::int32_t interval, bool enable, const wxString& description,
                             ParamList params)
{
    std::unique_ptr<Job> job = CreateJob(kind);
    JobParam p;
    p.id = jid;
    p.type = kind;
    p.triggerIds = std::move(tids);
    p.associatedJids = std::move(associated);
    p.jobInterval = interval;
    p.enable = enable;
    p.description = description;
    p.params = std::move(params);
    job->SetParam(p);
    return job;
}
