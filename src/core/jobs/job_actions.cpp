#include "core/jobs/job_actions.h"

#include <wx/log.h>

#include "core/core_log.h"

void JobActions::Set(std::uint32_t type, JobAction action)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (type < NJobTypeCount)
        m_actions[type] = std::move(action);
}

void JobActions::Run(const Job& job, SessionContext& context) const
{
    const std::uint32_t type = job.GetType();
    JobAction action;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (type < NJobTypeCount)
            action = m_actions[type];
    }
    if (action) {
        action(job, context);
        return;
    }
    wxLogMessage("%d --- [JID_%d] %s jobs are not available yet; nothing was done", LogMs(), job.GetId(),
                 JobTypeEnglishName(type));
}
