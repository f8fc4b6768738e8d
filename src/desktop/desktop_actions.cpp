#include "desktop/desktop_actions.h"

#include "core/jobs/job_actions.h"
#include "desktop/jobs/launch_jobs.h"
#include "desktop/jobs/network_jobs.h"
#include "desktop/jobs/reminder_job.h"
#include "desktop/jobs/system_jobs.h"
#include "desktop/jobs/web_refresh.h"
#include "desktop/jobs/window_input_jobs.h"

std::unique_ptr<DesktopJobs> RegisterDesktopJobActions(JobActions& actions)
{
    auto jobs = std::make_unique<DesktopJobs>();
    jobs->web = std::make_shared<WebRequests>();
    RegisterNetworkJobActions(actions, jobs->web);
    RegisterLaunchJobActions(actions);
    RegisterReminderJobAction(actions);
    RegisterSystemJobActions(actions);
    RegisterWindowAndInputJobActions(actions);
    return jobs;
}

void CancelDesktopJobs(DesktopJobs& jobs)
{
    jobs.web->CancelAll();
}
