#include "desktop/desktop_actions.h"

#include "desktop/jobs/launch_jobs.h"
#include "desktop/jobs/network_jobs.h"
#include "desktop/jobs/reminder_job.h"
#include "desktop/jobs/system_jobs.h"
#include "desktop/jobs/window_input_jobs.h"

void RegisterDesktopJobActions()
{
    RegisterNetworkJobActions();
    RegisterLaunchJobActions();
    RegisterReminderJobAction();
    RegisterSystemJobActions();
    RegisterWindowAndInputJobActions();
}
