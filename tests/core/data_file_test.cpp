// The data file: byte-exact layout, round trips, the fallback copy, what
// loading drops (kept and told), and failed saves (saving through links:
// data_file_links_test_posix.cpp).

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <wx/dir.h>
#include <wx/filename.h>

#include "core/data/data_file_reader.h"
#include "core/data/scheduler_data.h"
#include "core/scheduler.h"
#include "golden_content.h"
#include "harness.h"
#include "test_support.h"
#include "trigger_builders.h"

TEST(DataFileLayout, GoldenFileLoadsAndSavesBackUnchanged)
{
    TempDir dir;
    WriteFileBytes(dir.File("data/data1.xml"), Golden());
    Scheduler s(HarnessContext(), dir.Path());
    const DataLoadReport report = LoadSchedulerData(s);
    EXPECT_EQ(report.source, DataLoadReport::Source::Working);
    ASSERT_EQ(s.Jobs().size(), 2u);
    ASSERT_EQ(s.Triggers().size(), 2u);
    EXPECT_EQ(s.Jobs()[0]->GetDescription(), "Tea <time> & \"biscuits\"");
    EXPECT_EQ(s.Jobs()[1]->GetDescription(), "Ping & pong");
    EXPECT_FALSE(s.Jobs()[1]->IsEnabled());
    EXPECT_EQ(s.Jobs()[1]->GetAssociatedJids(), (IdList{0}));
    EXPECT_EQ(s.Jobs()[0]->GetTriggerIds(), (TidList{1, 2}));
    EXPECT_EQ(s.GetTriggerOwner(2)->GetId(), 0);
    EXPECT_FALSE(s.Changes().IsDataChanged());

    s.Changes().MarkChanged();
    ASSERT_EQ(SaveSchedulerData(s, true), DataSaveResult::Saved);
    EXPECT_EQ(ReadFileBytes(s.Paths().working), Golden());
}

TEST(DataFileLayout, EscapingKeepsTheFileWellFormedWhateverTheText)
{
    TempDir dir;
    Scheduler s(HarnessContext(), dir.Path());
    const wxString nasty = wxString::FromUTF8("a<b>c&d&amp;e \x01\x1f tab\there ü €");
    s.AddJob(TestJob(0, NJobTypeReminder, {}, {}, 0, true, nasty, {"<x>", "&"}));
    ASSERT_EQ(SaveSchedulerData(s, true), DataSaveResult::Saved);
    const std::string bytes = ReadFileBytes(s.Paths().working);
    EXPECT_NE(bytes.find("<DESC>a&lt;b&gt;c&amp;d&amp;amp;e  tab\there \xC3\xBC \xE2\x82\xAC</DESC>"), std::string::npos)
        << bytes;
    EXPECT_NE(bytes.find("<INFO>&lt;x&gt; $ &amp;</INFO>"), std::string::npos);

    Scheduler back(HarnessContext(), dir.Path());
    LoadSchedulerData(back);
    ASSERT_EQ(back.Jobs().size(), 1u);
    EXPECT_EQ(back.Jobs()[0]->GetDescription(), wxString::FromUTF8("a<b>c&d&amp;e  tab\there ü €"));
    EXPECT_EQ(back.Jobs()[0]->GetParams(), (ParamList{"<x>", "&"}));
}

// Whatever a job's texts hold reads back identical and saves to the same
// bytes again, also where the file is read in pieces: each text is placed
// once so that a 1 KiB piece of the reader ends right after its first byte.
TEST(DataFileRoundTrip, NastyTextsReadBackIdenticalAndSaveByteForByte)
{
    const struct { const char* description; std::vector<const char*> params; } cases[] = {
        {"&amp;amp; stays &amp;amp;", {"curl 'http://h/?a=1&amp;b=2'", "&lt;"}},
        {"crlf\r\nand cr\ronly\n", {"a\r\nb", "c\rd"}},
        {" one leading blank", {"x"}},
        {"\n\nleading line feeds", {"y"}},
        {"\tleading tab\t", {"z"}},
        {"   ", {}},
        {"\r", {"1\r\r2"}},
        {" \r\n mixed start", {"<![CDATA[x]]>", "]]>"}},
        {"&#13; &#32; &lt; written as text", {"&#10;"}},
        {"trailing blanks \t \n", {"\"q\" 'a'"}},
        {"\xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x98\x80 &", {"\xE2\x82\xAC"}},
    };
    for (const auto& c : cases) {
        const wxString text = wxString::FromUTF8(c.description);
        ParamList params;
        for (const char* p : c.params)
            params.push_back(wxString::FromUTF8(p));
        SCOPED_TRACE(c.description);
        TempDir dir;
        auto save = [&](std::size_t pad) {
            Scheduler s(HarnessContext(), dir.Path());
            s.AddJob(TestJob(0, NJobTypeReminder, {}, {}, 0, true, wxString(pad, 'x'), {"1"}));
            s.AddJob(TestJob(1, NJobTypeExecDosCommand, {}, {}, 0, true, text, params));
            EXPECT_EQ(SaveSchedulerData(s, true), DataSaveResult::Saved);
            return ReadFileBytes(s.Paths().working);
        };
        const std::size_t at = save(0).find("<DESC>", save(0).find("<ID>1</ID>")) + 6;
        const std::string first = save(1023 - at % 1024);
        ASSERT_EQ((first.find("<DESC>", first.find("<ID>1</ID>")) + 6) % 1024, 1023u);

        Scheduler back(HarnessContext(), dir.Path());
        EXPECT_TRUE(LoadSchedulerData(back).dropped.empty());
        ASSERT_EQ(back.Jobs().size(), 2u);
        EXPECT_EQ(back.Jobs()[1]->GetDescription(), text);
        EXPECT_EQ(back.Jobs()[1]->GetParams(), params);
        back.Changes().MarkChanged();
        ASSERT_EQ(SaveSchedulerData(back, true), DataSaveResult::Saved);
        EXPECT_EQ(ReadFileBytes(back.Paths().working), first);
    }
}

TEST(DataFileRoundTrip, AllJobKindsAndTriggerKindsSurviveSaveAndLoad)
{
    TempDir dir;
    const std::int64_t wide = (std::int64_t{1} << 32) + 100;  // TIDs past 32 bits
    Scheduler s(HarnessContext(), dir.Path());
    for (std::uint32_t type = 0; type < NJobTypeCount; ++type) {
        ParamList params;
        for (std::uint32_t i = 0; i <= type % 6; ++i)
            params.push_back(wxString::Format("p%u-%u", type, i));
        s.AddJob(TestJob(static_cast<std::int32_t>(type), type, {wide + type % 12},
                         {static_cast<std::int32_t>((type + 1) % 24)}, static_cast<std::int32_t>(type * 10),
                         type % 3 != 0, wxString::Format("job of kind %u", type), params));
    }
    const char* const conditions[] = {"0 0 9 24 11 2026 0 1 0 0", "0 0 5 0 - -", "0/45 * * * * ?", "- 10 - - - -",
                                      "0 0 8 23 11 ? 2026", "0,30 * * * * *", "30 15 * * * ?", "0 0 8 * * ?",
                                      "0 30 8 ? * 1-5", "0 0 0 31 * ?", "0 0 0 1 1 ?", "0 0 12 ? * MON-FRI"};
    for (std::uint32_t type = 0; type < NTriggerTypeCount; ++type)
        s.AddTrigger(LoadedTrigger(HarnessContext(), wide + type, type, conditions[type], "0 0 9 20 11 * 2026",
                                 "0 0 9 24 11 * 2026", "0 0 0 1 11 * 2026", "59 59 23 31 12 * 2030"));
    ASSERT_EQ(SaveSchedulerData(s, false), DataSaveResult::Saved);

    Scheduler back(HarnessContext(), dir.Path());
    LoadSchedulerData(back);
    ASSERT_EQ(back.Jobs().size(), s.Jobs().size());
    ASSERT_EQ(back.Triggers().size(), s.Triggers().size());
    auto job = [](const Job& j) {
        JobParam p;
        j.GetParam(p);
        return wxString::Format("%d %u %s %d %d %s %s %s %d", p.id, p.type, p.description, int(p.enable), p.jobInterval,
                                JoinJobParams(p.params), JoinIdList(p.triggerIds), JoinIdList(p.associatedJids),
                                int(j.IsWarnBeforeRun()));
    };
    auto trigger = [](const Trigger& t, TriggerParam& p) {
        t.MakeParam(p);
        return wxString::Format("%lld %u %s %s %s %s", static_cast<long long>(p.tid), p.type, p.condition,
                                p.prevFire, p.start, p.end);
    };
    for (std::size_t i = 0; i < s.Jobs().size(); ++i)
        EXPECT_EQ(job(*back.Jobs()[i]), job(*s.Jobs()[i]));
    for (std::size_t i = 0; i < s.Triggers().size(); ++i) {
        TriggerParam a, b;
        EXPECT_EQ(trigger(*back.Triggers()[i], b), trigger(*s.Triggers()[i], a));
        // ENABLE follows the owning job after loading.
        const auto& owner = back.GetTriggerOwner(b.tid);
        ASSERT_NE(owner, nullptr);
        EXPECT_EQ(back.Triggers()[i]->IsEnabled(), owner->IsEnabled());
        EXPECT_EQ(back.Triggers()[i]->GetStatus(),
                  owner->IsEnabled() ? NTriggerStatusWaiting : NTriggerStatusDisable);
    }
}

// A working copy that is not well-formed: the fallback copy loads, the
// unreadable one is kept aside (0600) and the user is told. With both copies
// unreadable the start is empty and both are kept.
class DataFileUnreadable : public ::testing::TestWithParam<int> {};

TEST_P(DataFileUnreadable, LoadsTheFallbackAndKeepsTheUnreadableCopy)
{
    TempDir dir;
    {
        Scheduler s(HarnessContext(), dir.Path());
        FillGoldenContent(s);
        SaveSchedulerData(s, false);
    }
    const wxString working = dir.File("data/data1.xml");
    std::string damaged = ReadFileBytes(working).substr(0, 300);  // cut off in the middle
    std::string open, close;  // well-formed, but nested deep enough to exhaust a recursive reader
    for (int i = 0; GetParam() == 1 && i < 200000; ++i)
        open += "<a>", close += "</a>";
    if (GetParam() == 1)
        damaged = "<SCHEDULER>" + open + close + "</SCHEDULER>";
    WriteFileBytes(working, damaged);
    MakeReadableByAll(working);
    if (GetParam() == 2)
        WriteFileBytes(dir.File("data/data2.xml"), damaged);

    Scheduler s(HarnessContext(), dir.Path());
    const DataLoadReport report = LoadSchedulerData(s);
    const bool both = GetParam() == 2;
    EXPECT_EQ(report.source, both ? DataLoadReport::Source::None : DataLoadReport::Source::Fallback);
    EXPECT_EQ(s.Jobs().size(), both ? 0u : 2u);
    ASSERT_EQ(report.keptCopies.size(), both ? 2u : 1u);
    EXPECT_TRUE(report.keptCopies[0].StartsWith(working + ".bad-"));
    EXPECT_EQ(ReadFileBytes(report.keptCopies[0]), damaged);
    EXPECT_TRUE(IsPrivateFile(report.keptCopies[0]));
    EXPECT_TRUE(report.Describe().Contains(GetParam() == 1 ? "nested more than" : "could not be read")) << report.Describe();
    EXPECT_TRUE(report.Describe().Contains(report.keptCopies[0]));
}
INSTANTIATE_TEST_SUITE_P(TruncatedTooDeepOrBoth, DataFileUnreadable, ::testing::Values(0, 1, 2));

// Files that load only in part: what was dropped is told, the original is
// kept (0600) before any save, and what did load saves and reloads alike.
struct DamagedFile {
    const char* name;
    std::size_t jobs, triggers;
    const char* told;  // phrases of the report, separated by '|'
};

class DataFileDamaged : public ::testing::TestWithParam<DamagedFile> {};

TEST_P(DataFileDamaged, LoadsWhatItCanKeepsTheOriginalAndSaysWhatWasDropped)
{
    const DamagedFile& row = GetParam();
    TempDir dir;
    const wxString working = dir.File("data/data1.xml");
    const std::string original = ReadFileBytes(wxString(CADRELLE_TEST_DATA_DIR "/damaged/") + row.name);
    WriteFileBytes(working, original);
    Scheduler s(HarnessContext(), dir.Path());
    const DataLoadReport report = LoadSchedulerData(s);
    EXPECT_EQ(s.Jobs().size(), row.jobs);
    EXPECT_EQ(s.Triggers().size(), row.triggers);
    const wxString told = report.Describe();
    for (const wxString& phrase : wxSplit(row.told, '|'))
        EXPECT_TRUE(told.Contains(phrase)) << phrase << "\n" << told;
    ASSERT_EQ(report.keptCopies.size(), 1u);
    EXPECT_TRUE(told.Contains(report.keptCopies[0]));
    EXPECT_TRUE(IsPrivateFile(report.keptCopies[0]));

    s.Changes().MarkChanged();
    ASSERT_EQ(SaveSchedulerData(s, true), DataSaveResult::Saved);
    EXPECT_EQ(ReadFileBytes(report.keptCopies[0]), original);
    Scheduler back(HarnessContext(), dir.Path());
    LoadSchedulerData(back);
    EXPECT_EQ(back.Jobs().size(), row.jobs);
    EXPECT_EQ(back.Triggers().size(), row.triggers);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, DataFileDamaged,
    ::testing::Values(
        DamagedFile{"note_before_jobs.xml", 0, 0, "<NOTE> is neither a job nor a trigger|the 2 element(s) after it"},
        DamagedFile{"unknown_kinds.xml", 1, 0, "job 1: unknown kind 24|trigger 4: unknown kind 12|kind 4294967300"},
        DamagedFile{"bad_ids.xml", 5, 0,
                    "has no ID; loaded with ID 0|ID \"abc\" is not a number|job -3 has a negative ID|job 7: another"},
        DamagedFile{"numbers_too_big.xml", 1, 0,
                    "ID 9223372036854775808 does not fit|ID 2147483648 does not fit|interval 4294967296 does not fit|"
                    "trigger ID 99999999999999999999 does not fit|job ID 2147483648 does not fit and was left out|"
                    "2147483648 in its condition does not fit"},
        DamagedFile{"entity_and_unknown_field.xml", 1, 0, "entity &who; in job 1|<COLOUR> is not a field of a job"},
        DamagedFile{"lower_case_walk.xml", 1, 1, "trigger 7: unknown kind 12|job 5: unknown kind 24|<NOTE> is neither"},
        DamagedFile{"foreign_root.xml", 0, 0, "could not be read (the root element is not SCHEDULER)"},
        DamagedFile{"fields_twice.xml", 1, 1, "a second <DESC> replaced the first|ENABLE \"yes\" read as disabled"}),
    [](const ::testing::TestParamInfo<DamagedFile>& info) {
        std::string name = info.param.name;
        return name.substr(0, name.find('.'));
    });

// A save that fails (a folder where the file belongs) is told once, keeps the
// data marked changed, and the next attempt after the cause is gone writes it.
TEST(DataFileSave, FailureIsToldKeepsTheFlagAndSucceedsOnceTheCauseIsGone)
{
    TempDir dir;
    RecordedMessages messages;
    Scheduler s(HarnessContext(), dir.Path());
    FillGoldenContent(s);
    ASSERT_TRUE(wxFileName::Mkdir(s.Paths().working, 0700, wxPATH_MKDIR_FULL));
    EXPECT_EQ(SaveSchedulerData(s, false), DataSaveResult::Failed);
    EXPECT_TRUE(s.Changes().IsDataChanged());
    EXPECT_EQ(SaveSchedulerData(s, false), DataSaveResult::Failed);
    ASSERT_EQ(messages.Boxes().size(), 1u);
    EXPECT_NE(messages.Boxes()[0].find("could not save its jobs and triggers"), std::string::npos);
    EXPECT_EQ(SaveSchedulerData(s, true), DataSaveResult::Failed);
    ASSERT_EQ(messages.Boxes().size(), 2u);  // the save at exit always tells
    EXPECT_NE(messages.Boxes()[1].find("are lost"), std::string::npos);

    ASSERT_TRUE(wxFileName::Rmdir(s.Paths().working));
    EXPECT_EQ(SaveSchedulerData(s, false), DataSaveResult::Saved);
    EXPECT_FALSE(s.Changes().IsDataChanged());
    EXPECT_EQ(ReadFileBytes(s.Paths().working), Golden());
}

// A disk that stays full fails every attempt through a temporary file of
// another name: told once all the same. (A file size limit stands in for the
// full disk: the write of the temporary file fails in the same place.)
TEST(DataFileSave, AFailureThatRepeatsWithAnotherTemporaryFileIsToldOnce)
{
    TempDir dir;
    ChildProcess child;
    ASSERT_TRUE(child.StartCall([&] {
        RecordedMessages messages;
        Scheduler s(HarnessContext(), dir.Path());
        FillGoldenContent(s);
        ::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{200, 200};
        if (::setrlimit(RLIMIT_FSIZE, &limit) != 0)
            return 100;
        for (int attempt = 0; attempt < 3; ++attempt)
            if (SaveSchedulerData(s, false) != DataSaveResult::Failed)
                return 101;
        const std::vector<std::string> boxes = messages.Boxes();
        return boxes.size() == 1 && boxes[0].find(".tmp-") != std::string::npos ? 0 : 102 + int(boxes.size());
    }));
    EXPECT_EQ(child.Stop(0, 20000), 0);
}
