#include "core/agenda/agenda_command.h"

#include <wx/filefn.h>
#include <wx/log.h>

#include "core/agenda/agenda.h"
#include "core/data/scheduler_data.h"
#include "core/jobs/job_kinds.h"
#include "core/scheduler.h"
#include "core/session/session_context.h"
#include "core/text_number.h"
#include "core/triggers/trigger_time.h"

namespace {

std::string Moment(std::int64_t ms, const char* format)
{
    return Utf8(FromMs(ms).Format(format));
}

}  // namespace

void PrintAgenda(const Agenda& agenda, std::int64_t fromMs, std::int64_t untilMs, std::ostream& out)
{
    out << "Agenda: " << Moment(fromMs, "%Y-%m-%d %H:%M:%S") << " - " << Moment(untilMs, "%Y-%m-%d %H:%M:%S")
        << ", runs: " << agenda.runs.size() << "\n";
    out << "TIME\tJID\tJOB\tTID\tTRIGGER\tMARKS\n";
    wxString day;
    for (const AgendaRun& run : agenda.runs) {
        const wxDateTime at = FromMs(run.atMs);
        const wxString thisDay = AgendaDayTitle(run.atMs);
        if (thisDay != day) {
            day = thisDay;
            out << Utf8(day) << "\n";
        }
        const AgendaSource& source = agenda.sources[run.source];
        wxString job = JobTypeName(source.jobType);
        if (!source.jobDescription.empty())
            job += ": " + source.jobDescription;
        // A skipped entry shows the wall time that is lost.
        const wxString time = run.skippedWallSec >= 0
                                  ? wxString::Format("%02d:%02d:%02d", run.skippedWallSec / 3600,
                                                     run.skippedWallSec / 60 % 60, run.skippedWallSec % 60)
                                  : at.Format("%H:%M:%S");
        out << Utf8(time) << '\t' << source.jid << '\t' << Utf8(job) << '\t' << source.tid << '\t'
            << Utf8(agenda.Sentence(run.source)) << '\t' << Utf8(AgendaMarkText(run.marks)) << "\n";
    }
    if (agenda.truncated)
        out << Utf8(wxString::Format(_("The list stops after %zu runs."), agenda.runs.size())) << "\n";
}

int RunAgendaCommand(const wxString& appDir, int days, std::int64_t nowMs, std::ostream& out, std::ostream& err)
{
    const SessionContext context;
    Scheduler scheduler(context, appDir);
    LoadForReport(scheduler, err);

    AgendaOptions options = AgendaWindow(nowMs, days);
    // This process is not the scheduler: With Start runs depend on when the
    // scheduler starts, so they are left out.
    options.withStart = false;
    const Agenda agenda = BuildAgenda(scheduler, options);
    PrintAgenda(agenda, options.fromMs, options.untilMs, out);
    return 0;
}
