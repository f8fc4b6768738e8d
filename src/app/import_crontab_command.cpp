#include "app/import_crontab_command.h"

#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

#include <wx/filefn.h>
#include <wx/log.h>
#include <wx/utils.h>

#include "core/data/scheduler_data.h"
#include "core/import/crontab_import.h"
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

}  // namespace

int RunImportCrontabCommand(const wxString& appDir, const std::string& file, bool dryRun, std::istream& in,
                            std::ostream& out, std::ostream& err)
{
    std::string text;
    if (!ReadCrontab(file, in, text, err))
        return 1;
    const std::vector<CrontabLine> lines = TranslateCrontab(text);
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

    // Only one scheduler writes the data file: holding the instance lock
    // also keeps one from starting while the jobs are added.
    SingleInstanceGuard guard;
    if (guard.IsAnotherRunning()) {
        err << "cadrelle: "
            << Utf8(_("Cadrelle is running and owns the data file: import from its window (File > Import "
                      "crontab...) or quit it first. Nothing was changed."))
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
    wxString added;
    for (const JobEdit& edit : CrontabJobEdits(lines, scheduler)) {
        scheduler.ApplyJobEdit(edit);
        added += wxString::Format(added.empty() ? "%d" : ", %d", edit.job.id);
    }
    if (SaveSchedulerData(scheduler, false) == DataSaveResult::Failed) {
        err << "cadrelle: " << Utf8(wxString::Format(_("cannot write %s; nothing was imported"),
                                                    scheduler.Paths().working))
            << "\n";
        return 1;
    }
    out << Utf8(wxString::Format(_("Added jobs (JID): %s"), added)) << "\n";
    return 0;
}
