// A child process for the crash-safety test: fills a scheduler with many
// jobs and saves it over and over until it is killed.
//   data_save_loop APPDIR JOBS [--once]

#include <cstdio>
#include <cstdlib>
#include <string>

#include <wx/init.h>

#include "core/data/scheduler_data.h"
#include "core/scheduler.h"
#include "core/session/session_context.h"

int main(int argc, char** argv)
{
    if (argc < 3)
        return 2;
    wxInitializer init;
    const SessionContext context;
    Scheduler scheduler(context, wxString::FromUTF8(argv[1]));
    const int jobs = std::atoi(argv[2]);
    for (int i = 0; i < jobs; ++i) {
        std::unique_ptr<Job> job = CreateJob(static_cast<std::uint32_t>(i % NJobTypeCount));
        JobParam param;
        param.id = i;
        param.type = job->GetType();
        param.description = wxString::Format("job %d with a fairly long description to make saves slower", i);
        param.params = {"first parameter", "second", "third parameter value"};
        job->SetParam(param);
        scheduler.AddJob(std::move(job));
    }
    const bool once = argc > 3 && std::string(argv[3]) == "--once";
    for (long round = 0;; ++round) {
        scheduler.Jobs()[static_cast<std::size_t>(round) % scheduler.Jobs().size()]->SetDescription(
            wxString::Format("round %ld", round));
        scheduler.Changes().MarkChanged();
        SaveSchedulerData(scheduler, false);
        if (once)
            return 0;
    }
}
