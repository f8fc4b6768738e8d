#pragma once
// Jobs and triggers as the loader and the dialogs make them.

#include <memory>

#include "core/jobs/job.h"
#include "core/triggers/trigger.h"

std::unique_ptr<Job> TestJob(std::int32_t jid, std::uint32_t kind = NJobTypeReminder,
                             decltype(JobParam::triggerIds) tids = {}, IdList associated = {},
                             std::int32_t interval = 0, bool enable = true, const wxString& description = "",
                             ParamList params = {});

class SessionContext;

// Loaded from the texts of a data-file record, in `context` at its clock's time.
std::unique_ptr<Trigger> LoadedTrigger(const SessionContext& context, std::int64_t tid, std::uint32_t type, const wxString& condition,
                                       const wxString& prevFire = "0 0 0 1 1 * 1999",
                                       const wxString& nextFire = "0 0 0 1 1 * 1999",
                                       const wxString& start = "0 0 0 1 1 * 1999",
                                       const wxString& end = "59 59 23 31 12 * 2999");

// An Interval trigger that fires at every second.
inline std::unique_ptr<Trigger> EverySecondTrigger(const SessionContext& context, std::int64_t tid)
{
    return LoadedTrigger(context, tid, NTriggerTypeInterval, "* * * * * ?");
}
