// Tables for what the job list shows: filter, categories, sort order and the
// counters line. (Header clicks flipping the order: SortOrderSurvivesARestart.)

#include <gtest/gtest.h>

#include "gui/frame/job_view_logic.h"

namespace {

JobRow Row(int jid, std::uint32_t type, bool enabled, const char* desc, const char* info, int hourOfNext,
           std::uint32_t triggerKinds)
{
    JobRow row;
    row.jid = jid, row.type = type, row.enabled = enabled, row.description = desc, row.info = info;
    row.firstTid = 100 - jid, row.triggerKinds = triggerKinds;
    if (hourOfNext >= 0)
        row.nextRun = wxDateTime(1, wxDateTime::Mar, 2026, hourOfNext);
    return row;
}

const std::vector<JobRow> kRows = {Row(3, 0, true, "Tea", "Drink $ 1", 9, 1u << 2),
                                   Row(10, 10, false, "ping", "127.0.0.1 $ 9", -1, 1u << 11),
                                   Row(1, 0, true, "backup", "/home $ /mnt", 7, (1u << 2) | (1u << 11)),
                                   Row(30, 21, true, "Tea break", "", 9, 0)};

TEST(JobViewLogic, FilterMatchesDescriptionParametersOrJidPrefix)
{
    const struct {
        const char* text;
        std::vector<int> jids;
    } cases[] = {{"", {3, 10, 1, 30}}, {"  ", {3, 10, 1, 30}}, {"tea", {3, 30}}, {"TEA B", {30}},
                 {"127.0", {10}},      {"1", {3, 10, 1}},      {"3", {3, 30}},   {"/mnt", {1}},
                 {"nothing", {}}};
    for (const auto& c : cases) {
        std::vector<int> jids;
        for (const JobRow& row : kRows)
            if (MatchesFilter(row, c.text))
                jids.push_back(row.jid);
        EXPECT_EQ(jids, c.jids) << "'" << c.text << "'";
    }
}

TEST(JobViewLogic, CategoriesAndOrder)
{
    using K = Category::Kind;
    const struct {
        Category category;
        const char* filter;
        int column;
        long dir;
        std::vector<std::size_t> order;
    } cases[] = {
        // JID: file order, ascending, descending; description case-blind; never-run last and stable; TID
        {{K::All, 0, false}, "", JColJID, kSortDefault, {0, 1, 2, 3}},
        {{K::All, 0, false}, "", JColJID, kSortAscending, {2, 0, 1, 3}},
        {{K::All, 0, false}, "", JColJID, kSortDescending, {3, 1, 0, 2}},
        {{K::All, 0, false}, "", JColDesc, kSortAscending, {2, 1, 0, 3}},
        {{K::All, 0, false}, "", JColNextTime, kSortAscending, {2, 0, 3, 1}},
        {{K::All, 0, false}, "", JColNextTime, kSortDescending, {1, 0, 3, 2}},
        {{K::All, 0, false}, "", JColTID, kSortAscending, {3, 1, 0, 2}},
        // categories, the grouping item itself showing all
        {{K::Status, 0, false}, "", JColJID, kSortAscending, {1}}, {{K::Status, 1, false}, "tea", JColJID, kSortDescending, {3, 0}},
        {{K::Status, 0, true}, "", JColJID, kSortDefault, {0, 1, 2, 3}}, {{K::JobType, 0, false}, "", JColJID, kSortAscending, {2, 0}},
        {{K::TriggerType, 2, false}, "", JColJID, kSortDefault, {0, 2}}, {{K::TriggerType, 11, false}, "", JColJID, kSortDefault, {1, 2}},
        {{K::TriggerType, 40, false}, "", JColJID, kSortDefault, {}},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i)
        EXPECT_EQ(VisibleJobOrder(kRows, cases[i].category, cases[i].filter, cases[i].column, cases[i].dir),
                  cases[i].order)
            << "case " << i;
}

TEST(JobViewLogic, CountersLine)
{
    const struct {
        std::vector<std::int64_t> tids;
        std::size_t threads;
        const char* text;
    } cases[] = {
        {{}, 0, "JobCount: 7|5, TriggerCount: 9|4, ThreadCount: 0, Triggers/Thread: 0|0|6"},
        {{0, 1, 2, 3, 4, 5, 6, 7, 8}, 4, "JobCount: 7|5, TriggerCount: 9|4, ThreadCount: 4, Triggers/Thread: 2|3|6"},
        {{0, 4, 8, 12}, 4, "JobCount: 7|5, TriggerCount: 9|4, ThreadCount: 4, Triggers/Thread: 0|4|6"},
    };
    for (const auto& c : cases) {
        Counters counters{7, 5, 9, 4, 0, 0, 0, 6};
        ShareTriggers(c.tids, c.threads, counters);
        EXPECT_EQ(CountersText(counters), c.text);
    }
}

}  // namespace

namespace {

// A trigger list time is written out unless it only stands for "none".
TEST(JobViewLogic, TriggerListTimes)
{
    const wxDateTime moment(24, wxDateTime::Nov, 2026, 8, 30, 5);
    EXPECT_EQ(FormatTriggerListTime(moment, false), "2026-11-24 08:30:05");
    EXPECT_EQ(FormatTriggerListTime(moment, true), wxString(L"\u2014"));
    EXPECT_EQ(FormatTriggerListTime(wxDateTime(), false), wxString(L"\u2014"));
}

}  // namespace
