#include "core/jobs/job_actions.h"

#include <array>

#include <wx/log.h>

#include "core/core_log.h"
#include "core/jobs/job.h"

namespace {

std::array<JobAction, NJobTypeCount>& Actions()
{
    static std::array<JobAction, NJobTypeCount> actions;
    return actions;
}

}  // namespace

void SetJobAction(std::uint32_t type, JobAction action)
{
    if (type < NJobTypeCount)
        Actions()[type] = std::move(action);
}

void ClearJobActions()
{
    for (JobAction& action : Actions())
        action = nullptr;
}

void RunJobAction(Job& job)
{
    const std::uint32_t type = job.GetType();
    if (type < NJobTypeCount && Actions()[type]) {
        Actions()[type](job);
        return;
    }
    wxLogMessage("%d --- [JID_%d] %s jobs are not available yet; nothing was done", LogMs(),
                 job.GetId(), JobTypeName(type));
}
