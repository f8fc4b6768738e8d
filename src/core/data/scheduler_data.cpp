// Loading and saving the scheduler's data file (data/data1.xml with the
// fallback copy data/data2.xml).

#include <string>
#include <unordered_map>

#include <wx/filename.h>
#include <wx/log.h>
#include <wx/filefn.h>
#include "core/text_number.h"
#include <ostream>

#include "core/core_log.h"
#include "core/data/atomic_file.h"
#include "core/data/data_file_reader.h"
#include "core/data/scheduler_data.h"
#include "core/data/xml_writer.h"
#include "core/scheduler.h"
#include "core/session/session_context.h"

namespace {

// Moves a file that could not be used at all out of the way.
wxString MoveAside(const wxString& path, const Clock& clock)
{
    const wxString kept = KeptCopyName(path, clock.Now());
    if (!wxRenameFile(path, kept, false))
        return wxString();
    MakePrivate(kept);
    wxLogMessage("%d ### %s could not be used; kept it as %s", LogMs(), path, kept);
    return kept;
}

// Copies a file that loaded only in part: it stays in use, and its original
// stays at hand.
wxString CopyAside(const wxString& path, const Clock& clock)
{
    const wxString kept = KeptCopyName(path, clock.Now());
    wxString error;
    if (!CopyFilePrivately(path, kept, &error)) {
        wxLogMessage("%d ### the original of %s could not be kept: %s", LogMs(), path, error);
        return wxString();
    }
    wxLogMessage("%d ### %s did not load as written; kept the original as %s", LogMs(), path, kept);
    return kept;
}

constexpr std::size_t kMaxDescribedLines = 20;

}  // namespace

wxString DataLoadReport::Describe() const
{
    wxString text;
    if (source == Source::Fallback)
        text << wxString::Format(_("The data file %s could not be read (%s); the fallback copy %s was loaded instead.\n"),
                                 workingPath, workingProblem, sourcePath);
    else if (source == Source::None && !keptCopies.empty())
        text << wxString::Format(_("The data file %s could not be read (%s) and there is no usable fallback copy: "
                                   "Cadrelle starts with no jobs and no triggers.\n"),
                                 workingPath, workingProblem);
    if (!dropped.empty()) {
        text << wxString::Format(_("Some of what %s holds was not loaded as written:\n"), sourcePath);
        for (std::size_t i = 0; i < dropped.size() && i < kMaxDescribedLines; ++i)
            text << "- " << dropped[i] << "\n";
        if (dropped.size() > kMaxDescribedLines)
            text << wxString::Format(_("- and %zu more (see the log)\n"), dropped.size() - kMaxDescribedLines);
    }
    for (const wxString& kept : keptCopies)
        text << wxString::Format(_("The original file is kept as %s.\n"), kept);
    text.Trim();
    return text;
}

DataLoadReport LoadSchedulerData(Scheduler& scheduler, bool keepUnreadableCopies)
{
    auto lock = scheduler.EditLock();
    const DataFilePaths& paths = scheduler.Paths();
    const SessionContext& context = scheduler.Context();
    DataLoadReport report;
    report.workingPath = paths.working;
    auto keep = [&](const wxString& path, bool move) {
        if (!keepUnreadableCopies)
            return;
        const wxString kept = move ? MoveAside(path, context.GetClock()) : CopyAside(path, context.GetClock());
        if (!kept.empty())
            report.keptCopies.push_back(kept);
    };

    DataFileContent content;
    bool exists = false;
    wxString source = paths.working;
    ReadDataFile(source, content, context, &exists);
    report.source = DataLoadReport::Source::Working;
    if (!content.wellFormed) {
        report.workingProblem = content.problem;
        if (exists) {
            wxLogMessage("%d ### %s is not readable (%s); loading the fallback copy %s", LogMs(), paths.working,
                         content.problem, paths.fallback);
            keep(paths.working, true);
        }
        source = paths.fallback;
        ReadDataFile(source, content, context, &exists);
        if (!content.wellFormed) {
            if (exists) {
                wxLogMessage("%d ### %s is not readable either (%s); starting with no jobs", LogMs(), source,
                             content.problem);
                keep(source, true);
            }
            report.source = DataLoadReport::Source::None;
            return report;
        }
        report.source = DataLoadReport::Source::Fallback;
    }
    if (!content.schedulerRoot) {
        wxLogMessage("%d ### %s holds no SCHEDULER element; starting with no jobs", LogMs(), source);
        if (report.workingProblem.empty())
            report.workingProblem = content.problem;
        keep(source, true);
        report.source = DataLoadReport::Source::None;
        return report;
    }

    report.sourcePath = source;
    report.dropped = content.dropped;
    if (!report.dropped.empty()) {
        for (const wxString& line : report.dropped)
            wxLogMessage("%d ### %s: %s", LogMs(), source, line);
        keep(source, false);
    }

    scheduler.Fill(std::move(content.jobs), std::move(content.triggers));
    return report;
}

std::string BuildDataDocument(const std::vector<Scheduler::JobPtr>& jobs,
                              const std::vector<Scheduler::TriggerPtr>& triggers, std::size_t* dropped)
{
    std::string out;
    out.reserve(256 + jobs.size() * 256 + triggers.size() * 256);
    XmlWriter writer(out);
    writer.Declaration("1.0", "UTF-8");
    writer.Open("SCHEDULER", 0);
    JobParam job;
    for (const Scheduler::JobPtr& source : jobs) {
        source->GetParam(job);
        writer.Open("JOB", 1);
        writer.TextElement("ID", std::to_string(job.id).c_str(), 2);
        writer.TextElement("TYPE", std::to_string(job.type).c_str(), 2);
        writer.TextElement("DESC", job.description, 2);
        writer.TextElement("ENABLE", job.enable ? "1" : "0", 2);
        writer.TextElement("JINTERVAL", std::to_string(job.jobInterval).c_str(), 2);
        writer.TextElement("TID", JoinIdList(job.triggerIds), 2);
        writer.TextElement("JID", JoinIdList(job.associatedJids), 2);
        writer.TextElement("INFO", JoinJobParams(job.params), 2);
        writer.Close("JOB", 1);
    }
    TriggerParam trigger;
    for (const Scheduler::TriggerPtr& source : triggers) {
        source->MakeParam(trigger);
        writer.Open("TRIGGER", 1);
        writer.TextElement("ID", std::to_string(trigger.tid).c_str(), 2);
        writer.TextElement("TYPE", std::to_string(trigger.type).c_str(), 2);
        writer.TextElement("CONDITION", trigger.condition, 2);
        writer.TextElement("PREVFIRE", trigger.prevFire, 2);
        writer.TextElement("NEXTFIRE", trigger.nextFire, 2);
        writer.TextElement("START", trigger.start, 2);
        writer.TextElement("END", trigger.end, 2);
        writer.Close("TRIGGER", 1);
    }
    writer.Close("SCHEDULER", 0);
    if (dropped)
        *dropped = writer.Dropped();
    return out;
}

DataSaveResult SaveSchedulerData(Scheduler& scheduler, bool workingOnly)
{
    ChangeTracker& changes = scheduler.Changes();
    if (!changes.IsDataChanged())
        return DataSaveResult::NothingToSave;
    const std::uint64_t count = changes.ChangeCount();
    std::string content;
    std::size_t dropped = 0;
    {
        // Checker threads keep running: they only change trigger times,
        // which are read atomically. The writing below happens unlocked.
        auto lock = scheduler.ReadLock();
        content = BuildDataDocument(scheduler.Jobs(), scheduler.Triggers(), &dropped);
    }
    if (dropped > 0)
        wxLogMessage("%d ### %zu control character(s) in job texts cannot be held by the data file and were left out",
                     LogMs(), dropped);
    const DataFilePaths& paths = scheduler.Paths();
    wxString error;
    const bool saved = WriteFileAtomically(paths.working, content, &error) &&
                       (workingOnly || WriteFileAtomically(paths.fallback, content, &error));
    if (saved) {
        // Only what the file now holds counts as saved: a change made while
        // it was written keeps the flag up.
        changes.SavedUpTo(count);
        return DataSaveResult::Saved;
    }
    wxLogMessage("%d ### Data file not saved: %s", LogMs(), error);
    // The flag stays up; the next attempt comes a full delay later.
    const bool newFailure = changes.SaveFailed(error, scheduler.Context().GetClock().Now());
    // Said once per distinct failure while the program runs, always at exit.
    if (workingOnly || newFailure) {
        const wxString consequence = workingOnly ? "The changes made since the last save are lost."
                                                 : "It will try again in a minute; until then the changes are "
                                                   "kept only in memory.";
        scheduler.Context().Messages().ShowMessage(
            wxString::Format("Cadrelle could not save its jobs and triggers (%s).\n%s", error, consequence),
            "Cadrelle");
    }
    return DataSaveResult::Failed;
}

DataSaveResult SaveWhenDue(Scheduler& scheduler)
{
    const ChangeTracker& changes = scheduler.Changes();
    if (!changes.IsDataChanged())
        return DataSaveResult::NothingToSave;
    const wxDateTime changed = changes.GetDataChangedTime();
    const std::int64_t now = scheduler.Context().GetClock().NowMs();
    if (changed.IsValid() && now - changed.GetValue().GetValue() <= kDelayedSaveMs)
        return DataSaveResult::NothingToSave;
    return SaveSchedulerData(scheduler, false);
}

void LoadForReport(Scheduler& scheduler, std::ostream& err)
{
    DataLoadReport report;
    {
        wxLogNull quiet;  // problems are reported below in plain words
        report = LoadSchedulerData(scheduler, false);
    }
    // What the file held but could not be shown as written; the file itself
    // is left as it is.
    const wxString problems = report.Describe();
    if (!problems.empty())
        err << "warning: " << Utf8(problems) << "\n";
    else if (report.source == DataLoadReport::Source::None && wxFileExists(scheduler.Paths().working))
        err << "warning: " << Utf8(scheduler.Paths().working) << " could not be read (" << Utf8(report.workingProblem)
            << ") and there is no usable fallback copy\n";
}
