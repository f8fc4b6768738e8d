#include "core/jobs/job_actions.h"

#include <array>
#include <mutex>

#include <wx/log.h>

#include "core/core_log.h"
#include "core/jobs/job.h"

namespace {

// The table and its lock are never destroyed: a job thread left running at
// exit may still look an action up during static destruction.
std::array<JobAction, NJobTypeCount>& Actions()
{
    static auto& actions = *new std::array<JobAction, NJobTypeCount>;
    return actions;
}

// Registration normally ends before any job thread starts, but a job thread
// may outlive its engine (a test, a restart): the lock keeps a change of the
// table from meeting a lookup.
std::mutex& ActionsMutex()
{
    static std::mutex& mutex = *new std::mutex;
    return mutex;
}

}  // namespace

void SetJobAction(std::uint32_t type, JobAction action)
{
    std::lock_guard<std::mutex> lock(ActionsMutex());
    if (type < NJobTypeCount)
        Actions()[type] = std::move(action);
}

void ClearJobActions()
{
    std::lock_guard<std::mutex> lock(ActionsMutex());
    for (JobAction& action : Actions())
        action = nullptr;
}

void RunJobAction(Job& job)
{
    const std::uint32_t type = job.GetType();
    JobAction action;
    {
        std::lock_guard<std::mutex> lock(ActionsMutex());
        if (type < NJobTypeCount)
            action = Actions()[type];
    }
    if (action) {
        action(job);
        return;
    }
    wxLogMessage("%d --- [JID_%d] %s jobs are not available yet; nothing was done", LogMs(),
                 job.GetId(), JobTypeEnglishName(type));
}
