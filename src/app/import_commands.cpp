#include "app/import_commands.h"

#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

#include <wx/filefn.h>
#include <wx/log.h>
#include <wx/utils.h>

#include "core/data/scheduler_data.h"
#include "core/data/atomic_file.h"
#include "core/import/crontab_import.h"
#include "core/import/job_transfer.h"
#include "core/import/systemd_timer_import.h"
#include "core/scheduler.h"
#include "core/session/session_context.h"
#include "core/text_number.h"
#include "desktop/single_instance.h"

namespace {

// The crontab's text; false with the reason on `err`.
bool ReadCrontab(const std::string& file, std::istream& in, std::string& text, std::ostream& err)
{
    if (file == "-") {
        text.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
        return true;
    }
    if (!file.empty()) {
        std::ifstream stream(file, std::ios::binary);
        if (!stream) {
            err << "cadrelle: " << Utf8(wxString::Format(_("cannot read %s"), wxString::FromUTF8(file))) << "\n";
            return false;
        }
        text.assign(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
        return true;
    }
    wxArrayString output, errors;
    const long status = wxExecute("crontab -l", output, errors, wxEXEC_SYNC | wxEXEC_NODISABLE);
    if (status != 0) {
        err << "cadrelle: " << Utf8(_("\"crontab -l\" did not give a crontab:"));
        for (const wxString& line : errors)
            err << " " << Utf8(line);
        err << "\n";
        return false;
    }
    for (const wxString& line : output)
        text += line.utf8_string() + "\n";
    return true;
}

// Runs `change` on the user's data file and saves it; refuses while a
// scheduler runs or when the file did not load as written. `change` returns
// the new JIDs as text (empty: nothing to save).
template <typename Change>
int WithDataFileForWriting(const wxString& appDir, std::ostream& err, Change change, std::ostream& out)
{
    // Only one scheduler writes the data file: holding the instance lock
    // also keeps one from starting while the jobs are added.
    SingleInstanceGuard guard;
    if (guard.IsAnotherRunning()) {
        err << "cadrelle: "
            << Utf8(_("Cadrelle is running and owns the data file: import from its window (File menu) or quit it "
                      "first. Nothing was changed."))
            << "\n";
        return 3;
    }
    if (!guard.IsHeld()) {
        err << "cadrelle: " << guard.Problem() << "\n";
        return 1;
    }
    const SessionContext context;
    Scheduler scheduler(context, appDir);
    DataLoadReport report;
    {
        wxLogNull quiet;
        report = LoadSchedulerData(scheduler);
    }
    const wxString problems = report.Describe();
    const bool unreadable = report.source == DataLoadReport::Source::None && wxFileExists(scheduler.Paths().working);
    if (!problems.empty() || unreadable) {
        err << "cadrelle: "
            << Utf8(wxString::Format(_("the data file did not load completely (%s); nothing was imported"),
                                     problems.empty() ? report.workingProblem : problems))
            << "\n";
        return 1;
    }
    const wxString added = change(scheduler);
    if (added.empty())
        return 0;
    if (SaveSchedulerData(scheduler, false) == DataSaveResult::Failed) {
        err << "cadrelle: "
            << Utf8(wxString::Format(_("cannot write %s; nothing was imported"), scheduler.Paths().working)) << "\n";
        return 1;
    }
    out << Utf8(wxString::Format(_("Added jobs (JID): %s"), added)) << "\n";
    return 0;
}

}  // namespace

int RunImportCrontabCommand(const wxString& appDir, const std::string& file, bool dryRun, std::istream& in,
                            std::ostream& out, std::ostream& err)
{
    std::string text;
    // Without a crontab of their own, the user's systemd timers may still
    // come over: the reason is said and the preview goes on.
    if (!ReadCrontab(file, in, text, err) && !file.empty())
        return 1;
    std::vector<CrontabLine> lines = TranslateCrontab(text);
    // The user's own crontab comes with the user's systemd timers.
    if (file.empty()) {
        const std::vector<CrontabLine> timers = ReadSystemdTimers(UserSystemdTimerFolder());
        lines.insert(lines.end(), timers.begin(), timers.end());
    }
    int jobs = 0, refused = 0;
    for (const CrontabLine& line : lines) {
        out << Utf8(DescribeCrontabLine(line)) << "\n";
        jobs += line.fate == CrontabLine::Fate::Job;
        refused += line.fate == CrontabLine::Fate::Refused;
    }
    out << Utf8(wxString::Format(_("%d lines: %d become jobs, %d cannot be imported."),
                                 static_cast<int>(lines.size()), jobs, refused))
        << "\n";
    if (dryRun || jobs == 0)
        return 0;

    return WithDataFileForWriting(appDir, err, [&](Scheduler& scheduler) {
        wxString added;
        for (const JobEdit& edit : CrontabJobEdits(lines, scheduler)) {
            scheduler.ApplyJobEdit(edit);
            added += wxString::Format(added.empty() ? "%d" : ", %d", edit.job.id);
        }
        return added;
    }, out);
}

int RunExportCommand(const wxString& appDir, const std::string& file, const std::vector<std::int32_t>& jids,
                     std::ostream& out, std::ostream& err)
{
    const SessionContext context;
    Scheduler scheduler(context, appDir);
    DataLoadReport report;
    {
        wxLogNull quiet;
        report = LoadSchedulerData(scheduler, false);
    }
    if (!report.Describe().empty())
        err << "warning: " << Utf8(report.Describe()) << "\n";
    wxString problem;
    const std::string text = ExportJobs(scheduler, jids, problem);
    if (!problem.empty()) {
        err << "cadrelle: " << Utf8(problem) << "\n";
        return 2;
    }
    wxString error;
    if (!WriteFileAtomically(wxString::FromUTF8(file), text, &error)) {
        err << "cadrelle: " << Utf8(wxString::Format(_("cannot write %s: %s"), wxString::FromUTF8(file), error))
            << "\n";
        return 1;
    }
    const auto lock = scheduler.ReadLock();
    const std::size_t count = jids.empty() ? scheduler.Jobs().size() : jids.size();
    out << Utf8(wxString::Format(wxPLURAL("Exported %zu job to %s", "Exported %zu jobs to %s", count), count,
                                 wxString::FromUTF8(file)))
        << "\n";
    return 0;
}

int RunImportJobsCommand(const wxString& appDir, const std::string& file, std::ostream& out, std::ostream& err)
{
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        err << "cadrelle: " << Utf8(wxString::Format(_("cannot read %s"), wxString::FromUTF8(file))) << "\n";
        return 1;
    }
    const std::string bytes((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
    bool refused = false;
    const int status = WithDataFileForWriting(appDir, err, [&](Scheduler& scheduler) {
        const JobImport plan = PlanJobImport(bytes, scheduler);
        if (!plan.problem.empty()) {
            err << "cadrelle: "
                << Utf8(wxString::Format(_("%s cannot be imported: %s"), wxString::FromUTF8(file), plan.problem))
                << "\n";
            refused = true;
            return wxString();
        }
        for (const wxString& note : plan.notes)
            err << "note: " << Utf8(note) << "\n";
        ApplyJobImport(plan, scheduler);
        wxString added;
        for (const auto& [from, to] : plan.jidMap)
            added += wxString::Format(added.empty() ? "%d (was %d)" : ", %d (was %d)", to, from);
        return added;
    }, out);
    return refused ? 1 : status;
}
