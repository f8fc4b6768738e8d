// The one-pass reader against the document reader it replaced: for every
// file of a corpus (test inputs, a generated large file, the fuzz corpus) the
// same jobs and triggers, or the same refusal.

#include <algorithm>
#include <memory>

#include <expat.h>
#include <gtest/gtest.h>
#include <wx/dir.h>
#include <wx/log.h>
#include <wx/mstream.h>
#include <wx/xml/xml.h>

#include "core/data/data_file_reader.h"
#include "core/scheduler.h"
#include "core/text_number.h"
#include "test_support.h"

namespace {

struct Loaded {
    std::vector<std::unique_ptr<Job>> jobs;
    std::vector<std::unique_ptr<Trigger>> triggers;
};

// The document reader as it was: an expat check, then wxXmlDocument.
bool DomRead(const std::string& bytes, Loaded& out)
{
    std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> check(XML_ParserCreate(nullptr), &XML_ParserFree);
    if (XML_Parse(check.get(), bytes.data(), static_cast<int>(bytes.size()), 1) == XML_STATUS_ERROR)
        return false;
    wxXmlDocument document;
    wxMemoryInputStream stream(bytes.data(), bytes.size());
    wxLogNull quiet;
    if (!document.Load(stream, "UTF-8") || !document.GetRoot() ||
        !document.GetRoot()->GetName().IsSameAs("SCHEDULER", false))
        return false;
    auto text = [](const wxXmlNode* element, const char* name) {
        wxString found;
        for (const wxXmlNode* child = element->GetChildren(); child; child = child->GetNext())
            if (child->GetType() == wxXML_ELEMENT_NODE && child->GetName().IsSameAs(name, false))
                found = child->GetNodeContent();
        return found;
    };
    for (const wxXmlNode* node = document.GetRoot()->GetChildren(); node; node = node->GetNext()) {
        if (node->GetType() != wxXML_ELEMENT_NODE)
            continue;
        const long type = LeadingLong(text(node, "TYPE"));
        if (node->GetName().IsSameAs("TRIGGER", false)) {
            std::unique_ptr<Trigger> trigger = type < 0 ? nullptr : CreateTrigger(static_cast<std::uint32_t>(type));
            if (!trigger)
                continue;
            TriggerParam p;
            p.tid = static_cast<std::int32_t>(LeadingLong(text(node, "ID")));
            p.type = static_cast<std::uint32_t>(type);
            p.firePending = trigger->IsFirePending();
            p.condition = text(node, "CONDITION");
            p.prevFire = text(node, "PREVFIRE");
            p.nextFire = text(node, "NEXTFIRE");
            p.start = text(node, "START");
            p.end = text(node, "END");
            trigger->Load(p);
            out.triggers.push_back(std::move(trigger));
        } else if (node->GetName().IsSameAs("JOB", false)) {
            std::unique_ptr<Job> job = type < 0 ? nullptr : CreateJob(static_cast<std::uint32_t>(type));
            if (!job)
                continue;
            JobParam p;
            p.id = static_cast<std::int32_t>(LeadingLong(text(node, "ID")));
            p.type = static_cast<std::uint32_t>(type);
            p.description = text(node, "DESC");
            p.enable = text(node, "ENABLE") == "1";
            p.jobInterval = static_cast<std::int32_t>(LeadingLong(text(node, "JINTERVAL")));
            for (std::int32_t tid : SplitIdList(text(node, "TID")))
                p.triggerIds.push_back(tid);
            p.associatedJids = SplitIdList(text(node, "JID"));
            p.params = SplitJobParams(text(node, "INFO"));
            job->SetParam(p);
            out.jobs.push_back(std::move(job));
        } else {
            break;
        }
    }
    return true;
}

std::string Dump(const std::vector<std::unique_ptr<Job>>& jobs, const std::vector<std::unique_ptr<Trigger>>& triggers)
{
    wxString out;
    JobParam j;
    for (const auto& job : jobs) {
        job->GetParam(j);
        out << "J " << j.id << " " << j.type << " [" << j.description << "] " << j.enable << " " << j.jobInterval
            << " " << JoinIdList(j.triggerIds) << " " << JoinIdList(j.associatedJids) << " [" << JoinJobParams(j.params)
            << "]\n";
    }
    TriggerParam t;
    for (const auto& trigger : triggers) {
        trigger->MakeParam(t);
        out << "T " << t.tid << " " << t.type << " [" << t.condition << "] " << t.prevFire << "|" << t.nextFire << "|"
            << t.start << "|" << t.end << "\n";
    }
    return std::string(out.utf8_str());
}

}  // namespace

TEST(DataFileReaderEquivalence, SameJobsAndTriggersOrTheSameRefusalAsTheDocumentReader)
{
    TempDir dir;
    {
        Scheduler large(dir.Path());
        for (int i = 0; i < 3000; ++i) {
            std::unique_ptr<Job> job = CreateJob(static_cast<std::uint32_t>(i % NJobTypeCount));
            JobParam p;
            p.id = i;
            p.type = job->GetType();
            p.description = wxString::Format("  job %d <&> \"%d\"  ", i, i * 7);
            p.params = {"/home/user", wxString::Format("%d", i)};
            p.triggerIds = {i};
            job->SetParam(p);
            large.AddJob(std::move(job), false);
            large.AddTrigger(CreateTrigger(static_cast<std::uint32_t>(4 + i % 8)), false);
        }
        ASSERT_EQ(large.SaveSchedulerData(true), DataSaveResult::Saved);
    }
    wxArrayString files;
    wxDir::GetAllFiles(CADRELLE_TEST_DATA_DIR, &files, "*.xml");
    wxDir::GetAllFiles(CADRELLE_TEST_DATA_DIR "/../../fuzz/corpus/loader", &files, "", wxDIR_FILES);
    files.push_back(dir.File("data/data1.xml"));
    ASSERT_GT(files.size(), 10u);
    std::size_t compared = 0;
    for (const wxString& file : files) {
        SCOPED_TRACE(file);
        const std::string bytes = ReadFileBytes(file);
        DataFileContent fresh;
        ReadDataFileBytes(bytes.data(), bytes.size(), fresh);
        // Refusing numbers that do not fit, and nesting past the limit, are
        // deliberate changes; such files are checked by the data file tests.
        if (fresh.refused > 0 || fresh.problem.Contains("nested"))
            continue;
        Loaded dom;
        const bool domUsable = DomRead(bytes, dom);
        ASSERT_EQ(fresh.wellFormed && fresh.schedulerRoot, domUsable) << fresh.problem;
        const std::string expected = Dump(dom.jobs, dom.triggers);
        if (expected.find(" 4294967") != std::string::npos || file.Contains("wide_tid"))
            continue;  // trigger ids wider than 32 bits were cut by the old reader
        const std::string got = Dump(fresh.jobs, fresh.triggers);
        const std::size_t at = std::mismatch(got.begin(), got.end(), expected.begin(), expected.end()).first - got.begin();
        EXPECT_EQ(got.size() == expected.size() && at == got.size(), true)
            << "from byte " << at << ":\n" << got.substr(at > 80 ? at - 80 : 0, 200) << "\nexpected:\n"
            << expected.substr(at > 80 ? at - 80 : 0, 200);
        ++compared;
    }
    EXPECT_GT(compared, files.size() / 2);
}
