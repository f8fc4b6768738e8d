// Loading and saving the scheduler's data file (data/data1.xml with the
// fallback copy data/data2.xml).

#include <string>

#include <wx/filename.h>
#include <wx/log.h>
#include <wx/xml/xml.h>

#include "core/clock.h"
#include "core/core_log.h"
#include "core/data/atomic_file.h"
#include "core/data/xml_check.h"
#include "core/data/xml_writer.h"
#include "core/memory_trim.h"
#include "core/scheduler.h"
#include "core/text_number.h"

namespace {


// Moves a file we could not use out of the way before anything overwrites
// it: data1.xml -> data1.xml.bad-20261122-143000.
wxString KeepUnreadableCopy(const wxString& path)
{
    const wxString stamp = GetClock().Now().Format("%Y%m%d-%H%M%S");
    wxString kept = path + ".bad-" + stamp;
    for (int n = 2; wxFileName::Exists(kept); ++n)
        kept = wxString::Format("%s.bad-%s-%d", path, stamp, n);
    if (!wxRenameFile(path, kept, false))
        return wxString();
    wxLogMessage("%d ### %s could not be used; kept it as %s", LogMs(), path, kept);
    return kept;
}

// The texts of an element's children, by name (compared without case).
template <std::size_t N>
void CollectTexts(const wxXmlNode* element, const wxString (&names)[N], wxString (&texts)[N])
{
    for (const wxXmlNode* child = element->GetChildren(); child; child = child->GetNext()) {
        if (child->GetType() != wxXML_ELEMENT_NODE)
            continue;
        for (std::size_t i = 0; i < N; ++i) {
            if (child->GetName().IsSameAs(names[i], false)) {
                texts[i] = child->GetNodeContent();
                break;
            }
        }
    }
}

// wxString, not char*: a conversion per comparison would dominate loading.
const wxString kTriggerFields[] = {"ID", "TYPE", "CONDITION", "PREVFIRE", "NEXTFIRE", "START", "END"};
enum { TrId, TrType, TrCondition, TrPrevFire, TrNextFire, TrStart, TrEnd, TrCount };
const wxString kJobFields[] = {"ID", "TYPE", "DESC", "ENABLE", "JINTERVAL", "TID", "JID", "INFO"};
const wxString kTriggerElement = "TRIGGER";
const wxString kJobElement = "JOB";
enum { JbId, JbType, JbDesc, JbEnable, JbInterval, JbTid, JbJid, JbInfo, JbCount };

}  // namespace

DataLoadReport Scheduler::LoadSchedulerData(bool keepUnreadableCopies)
{
    auto lock = EditLock();
    DataLoadReport report;
    auto keep = [&](const wxString& path) {
        const wxString kept = keepUnreadableCopies ? KeepUnreadableCopy(path) : wxString();
        if (!kept.empty())
            report.keptCopies.push_back(kept);
    };
    wxString source = m_paths.working;
    const XmlCheckResult working = CheckXmlWellFormed(m_paths.working);
    if (working.ok) {
        report.source = DataLoadReport::Source::Working;
    } else {
        report.workingProblem = working.problem;
        if (working.exists) {
            wxLogMessage("%d ### %s is not readable (%s); loading the fallback copy %s", LogMs(),
                         m_paths.working, working.problem, m_paths.fallback);
            keep(m_paths.working);
        }
        const XmlCheckResult fallback = CheckXmlWellFormed(m_paths.fallback);
        if (!fallback.ok) {
            if (fallback.exists) {
                wxLogMessage("%d ### %s is not readable either (%s); starting with no jobs", LogMs(),
                             m_paths.fallback, fallback.problem);
                keep(m_paths.fallback);
            }
            return report;
        }
        source = m_paths.fallback;
        report.source = DataLoadReport::Source::Fallback;
    }

    auto document = std::make_unique<wxXmlDocument>();
    bool loaded = false;
    {
        wxLogNull quiet;  // the reason is reported below, never in a dialog
        loaded = document->Load(source, "UTF-8");
    }
    const wxXmlNode* root = loaded ? document->GetRoot() : nullptr;
    if (!root || !root->GetName().IsSameAs("SCHEDULER", false)) {
        wxLogMessage("%d ### %s holds no SCHEDULER element; starting with no jobs", LogMs(), source);
        keep(source);
        report.source = DataLoadReport::Source::None;
        return report;
    }

    for (const wxXmlNode* node = root->GetChildren(); node; node = node->GetNext()) {
        if (node->GetType() != wxXML_ELEMENT_NODE)
            continue;
        if (node->GetName().IsSameAs(kTriggerElement, false)) {
            wxString texts[TrCount];
            CollectTexts(node, kTriggerFields, texts);
            const long type = LeadingLong(texts[TrType]);
            std::unique_ptr<Trigger> trigger = type < 0 ? nullptr : CreateTrigger(static_cast<std::uint32_t>(type));
            if (!trigger) {
                ++report.skippedTriggers;
                continue;
            }
            TriggerParam param;
            param.tid = static_cast<std::int32_t>(LeadingLong(texts[TrId]));
            param.type = static_cast<std::uint32_t>(type);
            param.firePending = trigger->IsFirePending();
            param.condition = texts[TrCondition];
            param.prevFire = texts[TrPrevFire];
            param.nextFire = texts[TrNextFire];
            param.start = texts[TrStart];
            param.end = texts[TrEnd];
            trigger->Load(param);
            m_triggers.emplace_back(std::move(trigger));
        } else if (node->GetName().IsSameAs(kJobElement, false)) {
            wxString texts[JbCount];
            CollectTexts(node, kJobFields, texts);
            const long type = LeadingLong(texts[JbType]);
            std::unique_ptr<Job> job = type < 0 ? nullptr : CreateJob(static_cast<std::uint32_t>(type));
            if (!job) {
                ++report.skippedJobs;
                continue;
            }
            JobParam param;
            param.id = static_cast<std::int32_t>(LeadingLong(texts[JbId]));
            param.type = static_cast<std::uint32_t>(type);
            param.description = texts[JbDesc];
            param.enable = texts[JbEnable] == "1";
            param.jobInterval = static_cast<std::int32_t>(LeadingLong(texts[JbInterval]));
            param.triggerIds = SplitIdList(texts[JbTid]);
            param.associatedJids = SplitIdList(texts[JbJid]);
            param.params = SplitJobParams(texts[JbInfo]);
            job->SetParam(param);
            JobPtr loaded(std::move(job));
            for (std::int32_t tid : loaded->GetTriggerIds())
                m_triggerOwners[tid] = loaded;
            m_jobs.push_back(std::move(loaded));
        } else {
            // Anything else ends the walk; later elements are ignored.
            report.stoppedAtUnknownElement = true;
            wxLogMessage("%d ### %s: unknown element <%s>; the rest of the file is ignored", LogMs(), source,
                         node->GetName());
            break;
        }
    }

    RebuildTriggerTids();
    // The tree of a large file is many times the size of what was built
    // from it; give its memory back rather than keep the peak resident.
    document.reset();
    ReturnFreeMemoryToSystem();
    std::unordered_map<std::int64_t, Trigger*> byTid;
    byTid.reserve(m_triggers.size());
    for (const TriggerPtr& trigger : m_triggers)
        byTid.emplace(trigger->GetTid(), trigger.get());
    for (const JobPtr& job : m_jobs) {
        for (std::int32_t tid : job->GetTriggerIds()) {
            auto it = byTid.find(tid);
            if (it == byTid.end())
                continue;
            it->second->SetEnable(job->IsEnabled());
            it->second->SetStatus(job->IsEnabled() ? NTriggerStatusWaiting : NTriggerStatusDisable);
        }
    }
    return report;
}

namespace {

std::string BuildDocument(const std::vector<Scheduler::JobPtr>& jobs, const std::vector<Scheduler::TriggerPtr>& triggers)
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
    return out;
}

void WriteCopy(const wxString& path, const std::string& content)
{
    wxString error;
    if (!WriteFileAtomically(path, content, &error))
        wxLogMessage("%d ### Data file not saved: %s", LogMs(), error);
}

}  // namespace

bool Scheduler::SaveSchedulerData(bool workingOnly)
{
    if (!m_bDataChanged.exchange(false))
        return false;
    std::string content;
    {
        // Checker threads keep running: they only change trigger times,
        // which are read atomically. The writing below happens unlocked.
        auto lock = ReadLock();
        content = BuildDocument(m_jobs, m_triggers);
    }
    WriteCopy(m_paths.working, content);
    if (!workingOnly)
        WriteCopy(m_paths.fallback, content);
    return true;
}
