// The data file: byte-exact layout, round trips, fallback to the copy with
// the unreadable file kept, the early end of the walk, and saving rules.

#include <sys/stat.h>

#include <gtest/gtest.h>
#include <wx/dir.h>
#include <wx/filename.h>

#include "core/data/xml_check.h"
#include "core/scheduler.h"
#include "test_support.h"
#include "trigger_builders.h"

namespace {

std::unique_ptr<Job> MakeJob(std::int32_t id, std::uint32_t type, const wxString& desc, ParamList params,
                             IdList tids = {}, IdList jids = {}, bool enable = true, std::int32_t interval = 0)
{
    std::unique_ptr<Job> job = CreateJob(type);
    JobParam p;
    p.id = id;
    p.type = type;
    p.description = desc;
    p.enable = enable;
    p.jobInterval = interval;
    p.params = std::move(params);
    p.triggerIds = std::move(tids);
    p.associatedJids = std::move(jids);
    job->SetParam(p);
    return job;
}

// The content of tests/data/golden_data1.xml, built through the API.
void FillGoldenContent(Scheduler& s)
{
    s.AddJob(MakeJob(0, NJobTypeReminder, "Tea <time> & \"biscuits\"", {"Drink tea", "1"}, {1, 2}), false);
    s.AddJob(MakeJob(3, NJobTypeSendUdpMsg, "Ping &amp; pong", {"hi", "0", "1", "127.0.0.1", "7788"}, {}, {0}, false, 500),
             false);
    s.AddTrigger(LoadedTrigger(1, NTriggerTypeSpecTime, "0 0 8 23 11 ? 2026", "0 0 0 1 1 * 1999", "0 0 8 23 11 * 2026"),
                 false);
    s.AddTrigger(LoadedTrigger(2, NTriggerTypeCountDown, "0 0 9 24 11 2026 0 1 0 0", "0 0 9 20 11 * 2026",
                             "0 0 9 24 11 * 2026", "0 0 0 1 11 * 2026", "59 59 23 31 12 * 2027"),
                 false);
}

std::string Golden()
{
    return ReadFileBytes(CADRELLE_TEST_DATA_DIR "/golden_data1.xml");
}

wxArrayString FilesIn(const wxString& dir, const wxString& pattern)
{
    wxArrayString files;
    wxDir::GetAllFiles(dir, &files, pattern, wxDIR_FILES);
    return files;
}

}  // namespace

TEST(DataFileLayout, WriterMatchesTheGoldenFileByteForByte)
{
    TempDir dir;
    Scheduler s(dir.Path());
    FillGoldenContent(s);
    ASSERT_TRUE(s.SaveSchedulerData(false));
    EXPECT_EQ(ReadFileBytes(s.Paths().working), Golden());
    EXPECT_EQ(ReadFileBytes(s.Paths().fallback), Golden());
}

TEST(DataFileLayout, GoldenFileLoadsAndSavesBackUnchanged)
{
    TempDir dir;
    WriteFileBytes(dir.File("data/data1.xml"), Golden());
    Scheduler s(dir.Path());
    const DataLoadReport report = s.LoadSchedulerData();
    EXPECT_EQ(report.source, DataLoadReport::Source::Working);
    ASSERT_EQ(s.Jobs().size(), 2u);
    ASSERT_EQ(s.Triggers().size(), 2u);
    EXPECT_EQ(s.Jobs()[0]->GetDescription(), "Tea <time> & \"biscuits\"");
    // "&amp;" was written as it stood, so it reads back as a plain "&":
    // the deliberate exception loses the text's own "&amp;".
    EXPECT_EQ(s.Jobs()[1]->GetDescription(), "Ping & pong");
    EXPECT_FALSE(s.Jobs()[1]->IsEnabled());
    EXPECT_EQ(s.Jobs()[1]->GetAssociatedJids(), (IdList{0}));
    EXPECT_EQ(s.Jobs()[0]->GetTriggerIds(), (IdList{1, 2}));
    EXPECT_EQ(s.GetTriggerOwner(2)->GetId(), 0);
    EXPECT_FALSE(s.IsDataChanged());

    s.SetDataChanged(true);
    ASSERT_TRUE(s.SaveSchedulerData(true));
    EXPECT_EQ(ReadFileBytes(s.Paths().working), Golden());
}

TEST(DataFileLayout, EscapingKeepsTheFileWellFormedWhateverTheText)
{
    TempDir dir;
    Scheduler s(dir.Path());
    const wxString nasty = wxString::FromUTF8("a<b>c&d&amp;e \x01\x1f tab\there ü €");
    s.AddJob(MakeJob(0, NJobTypeReminder, nasty, {"<x>", "&"}), false);
    ASSERT_TRUE(s.SaveSchedulerData(true));
    const std::string bytes = ReadFileBytes(s.Paths().working);
    EXPECT_NE(bytes.find("<DESC>a&lt;b&gt;c&amp;d&amp;e  tab\there \xC3\xBC \xE2\x82\xAC</DESC>"), std::string::npos)
        << bytes;
    EXPECT_NE(bytes.find("<INFO>&lt;x&gt; $ &amp;</INFO>"), std::string::npos);
    EXPECT_TRUE(CheckXmlWellFormed(s.Paths().working).ok);

    Scheduler back(dir.Path());
    back.LoadSchedulerData();
    ASSERT_EQ(back.Jobs().size(), 1u);
    EXPECT_EQ(back.Jobs()[0]->GetDescription(), wxString::FromUTF8("a<b>c&d&e  tab\there ü €"));
    EXPECT_EQ(back.Jobs()[0]->GetParams(), (ParamList{"<x>", "&"}));
}

TEST(DataFileRoundTrip, AllJobKindsAndTriggerKindsSurviveSaveAndLoad)
{
    TempDir dir;
    Scheduler s(dir.Path());
    for (std::uint32_t type = 0; type < NJobTypeCount; ++type) {
        ParamList params;
        for (std::uint32_t i = 0; i <= type % 6; ++i)
            params.push_back(wxString::Format("p%u-%u", type, i));
        s.AddJob(MakeJob(static_cast<std::int32_t>(type), type, wxString::Format("job of kind %u", type), params,
                         {static_cast<std::int32_t>(type % 12) + 100}, {static_cast<std::int32_t>((type + 1) % 24)},
                         type % 3 != 0, static_cast<std::int32_t>(type * 10)),
                 false);
    }
    const char* const conditions[] = {"0 0 9 24 11 2026 0 1 0 0", "0 0 5 0 - -", "0/45 * * * * ?", "- 10 - - - -",
                                      "0 0 8 23 11 ? 2026", "0,30 * * * * *", "30 15 * * * ?", "0 0 8 * * ?",
                                      "0 30 8 ? * 1-5", "0 0 0 31 * ?", "0 0 0 1 1 ?", "0 0 12 ? * MON-FRI"};
    for (std::uint32_t type = 0; type < NTriggerTypeCount; ++type)
        s.AddTrigger(LoadedTrigger(static_cast<std::int32_t>(type) + 100, type, conditions[type], "0 0 9 20 11 * 2026",
                                 "0 0 9 24 11 * 2026", "0 0 0 1 11 * 2026", "59 59 23 31 12 * 2030"),
                     false);
    ASSERT_TRUE(s.SaveSchedulerData(false));

    Scheduler back(dir.Path());
    back.LoadSchedulerData();
    ASSERT_EQ(back.Jobs().size(), s.Jobs().size());
    ASSERT_EQ(back.Triggers().size(), s.Triggers().size());
    for (std::size_t i = 0; i < s.Jobs().size(); ++i) {
        SCOPED_TRACE(i);
        JobParam a, b;
        s.Jobs()[i]->GetParam(a);
        back.Jobs()[i]->GetParam(b);
        EXPECT_EQ(a.id, b.id);
        EXPECT_EQ(a.type, b.type);
        EXPECT_EQ(a.description, b.description);
        EXPECT_EQ(a.enable, b.enable);
        EXPECT_EQ(a.jobInterval, b.jobInterval);
        EXPECT_EQ(a.params, b.params);
        EXPECT_EQ(a.triggerIds, b.triggerIds);
        EXPECT_EQ(a.associatedJids, b.associatedJids);
        EXPECT_EQ(back.Jobs()[i]->IsWarnBeforeRun(), s.Jobs()[i]->IsWarnBeforeRun());
    }
    for (std::size_t i = 0; i < s.Triggers().size(); ++i) {
        SCOPED_TRACE(i);
        TriggerParam a, b;
        s.Triggers()[i]->MakeParam(a);
        back.Triggers()[i]->MakeParam(b);
        EXPECT_EQ(a.tid, b.tid);
        EXPECT_EQ(a.type, b.type);
        EXPECT_EQ(a.condition, b.condition);
        EXPECT_EQ(a.prevFire, b.prevFire);
        EXPECT_EQ(a.start, b.start);
        EXPECT_EQ(a.end, b.end);
        // ENABLE follows the owning job after loading.
        const Job* owner = back.GetTriggerOwner(b.tid);
        ASSERT_NE(owner, nullptr);
        EXPECT_EQ(back.Triggers()[i]->IsEnabled(), owner->IsEnabled());
        EXPECT_EQ(back.Triggers()[i]->GetStatus(),
                  owner->IsEnabled() ? NTriggerStatusWaiting : NTriggerStatusDisable);
    }
}

TEST(DataFileFallback, TruncatedWorkingCopyLoadsTheFallbackAndIsKept)
{
    TempDir dir;
    {
        Scheduler s(dir.Path());
        FillGoldenContent(s);
        s.SaveSchedulerData(false);
    }
    const wxString working = dir.File("data/data1.xml");
    std::string bytes = ReadFileBytes(working);
    const std::string truncated = bytes.substr(0, bytes.size() / 2);
    WriteFileBytes(working, truncated);

    Scheduler s(dir.Path());
    const DataLoadReport report = s.LoadSchedulerData();
    EXPECT_EQ(report.source, DataLoadReport::Source::Fallback);
    EXPECT_FALSE(report.workingProblem.empty());
    EXPECT_EQ(s.Jobs().size(), 2u);
    EXPECT_EQ(s.Triggers().size(), 2u);
    ASSERT_EQ(report.keptCopies.size(), 1u);
    EXPECT_TRUE(report.keptCopies[0].StartsWith(working + ".bad-"));
    EXPECT_EQ(ReadFileBytes(report.keptCopies[0]), truncated);

    // The next save writes a good working copy; the kept one stays.
    s.SetDataChanged(true);
    s.SaveSchedulerData(true);
    EXPECT_EQ(ReadFileBytes(working), Golden());
    EXPECT_EQ(ReadFileBytes(report.keptCopies[0]), truncated);
}

TEST(DataFileFallback, BothCopiesUnreadableStartEmptyAndKeepBoth)
{
    TempDir dir;
    WriteFileBytes(dir.File("data/data1.xml"), "<SCHEDULER><JOB>");
    WriteFileBytes(dir.File("data/data2.xml"), "not xml at all");
    Scheduler s(dir.Path());
    const DataLoadReport report = s.LoadSchedulerData();
    EXPECT_EQ(report.source, DataLoadReport::Source::None);
    EXPECT_TRUE(s.Jobs().empty());
    EXPECT_EQ(report.keptCopies.size(), 2u);
    EXPECT_EQ(FilesIn(dir.File("data"), "data1.xml.bad-*").size(), 1u);
    EXPECT_EQ(FilesIn(dir.File("data"), "data2.xml.bad-*").size(), 1u);
}

TEST(DataFileFallback, NoFilesAtAllIsAQuietEmptyStart)
{
    TempDir dir;
    Scheduler s(dir.Path());
    const DataLoadReport report = s.LoadSchedulerData();
    EXPECT_EQ(report.source, DataLoadReport::Source::None);
    EXPECT_TRUE(report.keptCopies.empty());
    EXPECT_FALSE(s.IsDataChanged());
}

TEST(DataFileFallback, ForeignRootLoadsNothingAndKeepsTheFile)
{
    TempDir dir;
    WriteFileBytes(dir.File("data/data1.xml"), "<?xml version=\"1.0\"?>\n<PLAYLIST><JOB><ID>1</ID></JOB></PLAYLIST>\n");
    Scheduler s(dir.Path());
    const DataLoadReport report = s.LoadSchedulerData();
    EXPECT_TRUE(s.Jobs().empty());
    EXPECT_EQ(report.keptCopies.size(), 1u);
    EXPECT_FALSE(wxFileName::FileExists(dir.File("data/data1.xml")));
}

TEST(DataFileWalk, NamesIgnoreCaseAndAnUnknownElementEndsTheWalk)
{
    TempDir dir;
    WriteFileBytes(dir.File("data/data1.xml"),
                   "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                   "<scheduler>\n"
                   " <job><id>4</id><Type>21</Type><DESC>first</DESC><ENABLE>1</ENABLE><tid>7</tid></job>\n"
                   " <!-- a comment is not an element -->\n"
                   " <TRIGGER><ID>7</ID><TYPE>12</TYPE><CONDITION>x</CONDITION></TRIGGER>\n"
                   " <JOB><ID>5</ID><TYPE>24</TYPE></JOB>\n"
                   " <TRIGGER><ID>8</ID><TYPE>4</TYPE><CONDITION>0 0 8 1 1 ? 2030</CONDITION></TRIGGER>\n"
                   " <NOTE>stop here</NOTE>\n"
                   " <JOB><ID>6</ID><TYPE>0</TYPE></JOB>\n"
                   " <TRIGGER><ID>9</ID><TYPE>4</TYPE></TRIGGER>\n"
                   "</scheduler>\n");
    Scheduler s(dir.Path());
    const DataLoadReport report = s.LoadSchedulerData();
    EXPECT_TRUE(report.stoppedAtUnknownElement);
    EXPECT_EQ(report.skippedTriggers, 1u);
    EXPECT_EQ(report.skippedJobs, 1u);
    ASSERT_EQ(s.Jobs().size(), 1u);
    EXPECT_EQ(s.Jobs()[0]->GetId(), 4);
    EXPECT_EQ(s.Jobs()[0]->GetType(), NJobTypeShutdown);
    EXPECT_TRUE(s.Jobs()[0]->IsWarnBeforeRun());
    ASSERT_EQ(s.Triggers().size(), 1u);
    EXPECT_EQ(s.Triggers()[0]->GetTid(), 8);
    // The job's TID 7 has no trigger: it stays in the list.
    EXPECT_EQ(s.Jobs()[0]->GetTriggerIds(), (IdList{7}));
}

TEST(DataFileSave, NothingIsWrittenWithoutAChange)
{
    TempDir dir;
    Scheduler s(dir.Path());
    FillGoldenContent(s);
    ASSERT_TRUE(s.SaveSchedulerData(false));
    EXPECT_FALSE(s.IsDataChanged());
    ASSERT_TRUE(wxRemoveFile(s.Paths().working));
    ASSERT_TRUE(wxRemoveFile(s.Paths().fallback));
    EXPECT_FALSE(s.SaveSchedulerData(false));
    EXPECT_FALSE(wxFileName::FileExists(s.Paths().working));
    EXPECT_FALSE(wxFileName::FileExists(s.Paths().fallback));
}

TEST(DataFileSave, WorkingOnlySaveLeavesTheFallbackAloneAndFilesArePrivate)
{
    TempDir dir;
    Scheduler s(dir.Path());
    FillGoldenContent(s);
    s.SaveSchedulerData(false);
    const std::string before = ReadFileBytes(s.Paths().fallback);
    s.Jobs()[0]->SetDescription("changed");
    s.SetDataChanged(true);
    ASSERT_TRUE(s.SaveSchedulerData(true));
    EXPECT_NE(ReadFileBytes(s.Paths().working).find("<DESC>changed</DESC>"), std::string::npos);
    EXPECT_EQ(ReadFileBytes(s.Paths().fallback), before);
    for (const wxString& path : {s.Paths().working, s.Paths().fallback}) {
        struct stat st {};
        ASSERT_EQ(::stat(path.fn_str(), &st), 0);
        EXPECT_EQ(st.st_mode & 0777, 0600u) << path;
    }
    EXPECT_TRUE(FilesIn(dir.File("data"), "*.tmp").empty());
}

TEST(DataFileSave, AFailedWriteKeepsTheOldFile)
{
    TempDir dir;
    Scheduler s(dir.Path());
    FillGoldenContent(s);
    s.SaveSchedulerData(true);
    // A folder where the temporary file must go makes the write fail.
    ASSERT_TRUE(wxFileName::Mkdir(s.Paths().working + ".tmp"));
    s.Jobs()[0]->SetDescription("lost");
    s.SetDataChanged(true);
    s.SaveSchedulerData(true);
    EXPECT_EQ(ReadFileBytes(s.Paths().working), Golden());
}
