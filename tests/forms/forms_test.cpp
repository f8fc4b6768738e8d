// The trigger form and the job parameter checks, by tables.

#include <gtest/gtest.h>

#include "core/jobs/job.h"
#include "core/triggers/trigger.h"
#include "gui/logic/job_form.h"
#include "gui/logic/trigger_form.h"
#include "core/session/session_context.h"

namespace {

// The session the dialogs and previews work in (the system clock).
SessionContext& TestContext()
{
    static SessionContext context;
    return context;
}


const wxDateTime kNow(23, wxDateTime::Nov, 2026, 10, 0, 0);

TEST(TriggerForm, FoldsValuesIntoRuns)
{
    const std::pair<std::vector<int>, const char*> rows[] = {
        {{}, ""}, {{0, 1, 2, 3, 4, 5, 7, 9, 10, 11}, "0-5,7,9-11"}, {{3, 1, 2}, "1-3"}, {{0, 1, 3, 4, 59}, "0-1,3-4,59"}};
    for (const auto& row : rows)
        EXPECT_EQ(FoldFieldValues(row.first), row.second) << row.second;
    EXPECT_EQ(FieldText(FieldPick{true, {1, 2}}), "*");
}

// Every kind: the text read into a form and built again is the same text.
TEST(TriggerForm, EveryKindRoundTrips)
{
    const std::pair<std::uint32_t, const char*> rows[] = {
        {NTriggerTypeEveryMinute, "0,30 * * * * *"},    {NTriggerTypeEveryHour, "0 15 * * * ?"},
        {NTriggerTypeEveryDay, "0 30 8-10,12 * * ?"},   {NTriggerTypeEveryWeek, "0 30 8 ? * 1-5"},
        {NTriggerTypeEveryMonth, "0 0 0 31 * ?"},       {NTriggerTypeEveryYear, "0 0 0 1 1,12 ?"},
        {NTriggerTypeCron, "0 0 12 ? * 5"},             {NTriggerTypeCron, "* 0,30 0 13 2-4 5"},
        {NTriggerTypeInterval, "0/10 * * * * ?"},       {NTriggerTypeInterval, "0 0/5 * * * ?"},
        {NTriggerTypeInterval, "0 0 0/2 * * ?"},        {NTriggerTypeCountDown, "4 3 12 24 11 2026 1 2 3 4"},
        {NTriggerTypeWithStart, "0 0 5 0 - -"},         {NTriggerTypeIdleTimeout, "30 - - - - -"},
        {NTriggerTypeIdleTimeout, "- - 1 - - -"},       {NTriggerTypeSpecTime, "7 6 5 4 3 ? 2027"},
    };
    for (const auto& [kind, condition] : rows) {
        TriggerForm form;
        wxString error;
        ASSERT_TRUE(ReadTriggerTexts(kind, condition, "0 0 0 23 11 * 2026", "59 59 23 31 12 * 2999", form, error))
            << condition << ": " << error;
        const TriggerTexts texts = BuildTriggerTexts(form, kNow);
        ASSERT_TRUE(texts.ok) << condition << ": " << texts.message;
        EXPECT_EQ(texts.condition, condition);
        EXPECT_EQ(texts.start, "0 0 0 23 11 ? 2026");
        EXPECT_EQ(texts.end, "59 59 23 31 12 ? 2999");
    }
}

struct RejectRow { std::uint32_t kind; void (*change)(TriggerForm&); const char* message; };  // message: its start

const char* const kHint = "\nCron expressions must have six fields.\nPlease select/check listbox item and try again.";

TEST(TriggerForm, RejectsWithItsMessage)
{
    const char* const zero = "Don't set Days/Hours/Minutes/Seconds value to ZERO in the same time.";
    const RejectRow rows[] = {
        {NTriggerTypeCountDown, [](TriggerForm& f) { f.minutes = 0; }, zero},
        {NTriggerTypeWithStart, [](TriggerForm& f) { f.minutes = 0; }, zero},
        {NTriggerTypeCron, [](TriggerForm& f) { f.fields[FieldDays].values.clear(); }, "Please select Days or Weekdays."},
        {NTriggerTypeEveryDay, [](TriggerForm& f) { f.fields[FieldHours].values.clear(); }, "Cron expressions format error: [0 0  * * ?]"},
        {NTriggerTypeInterval, [](TriggerForm& f) { f.amount = 0; }, "Cron expressions format error: [0 0/0 * * * ?]"},
        {NTriggerTypeEveryDay, [](TriggerForm& f) { f.start = f.end + wxTimeSpan::Second(); }, "Start time later than End time, please check."},
    };
    for (const RejectRow& row : rows) {
        TriggerForm form = DefaultTriggerForm(row.kind, kNow);
        form.fields[FieldMinutes].values = {0};
        form.fields[FieldWeekdays].values.clear();
        row.change(form);
        const TriggerTexts texts = BuildTriggerTexts(form, kNow);
        EXPECT_FALSE(texts.ok) << row.message;
        EXPECT_TRUE(texts.message.StartsWith(row.message)) << texts.message;
        EXPECT_TRUE(!wxString(row.message).StartsWith("Cron") || texts.message.EndsWith(kHint)) << texts.message;
    }
    TriggerForm form;
    wxString error;
    EXPECT_FALSE(ReadTriggerTexts(NTriggerTypeInterval, "0 0 * * * ?", "", "", form, error));
    EXPECT_EQ(error, wxString::FromUTF8("NTriggerTypeInterval，Slash not found."));
}

TriggerPreview Preview(std::uint32_t kind, const char* condition, const char* start, const char* end)
{
    TriggerTexts texts;
    texts.ok = true, texts.condition = condition, texts.start = start, texts.end = end;
    return PreviewTrigger(TestContext(), kind, texts, kNow);
}

TEST(TriggerForm, PreviewKeepsToThePeriod)
{
    const TriggerPreview daily = Preview(NTriggerTypeEveryDay, "0 30 8 * * ?", "0 0 0 1 1 ? 2026", "0 0 0 1 1 ? 2999");
    ASSERT_EQ(daily.moments.size(), 5u);
    for (std::size_t i = 0; i < 5; ++i)
        EXPECT_EQ(daily.moments[i], wxDateTime(24 + i, wxDateTime::Nov, 2026, 8, 30, 0)) << i;
    // The weekday by its name in the user's language (here the source's).
    EXPECT_TRUE(FormatPreview(daily).StartsWith("2026-11-24 Tuesday 08:30:00\n2026-11-25 Wednesday 08:30:00\n"))
        << FormatPreview(daily);
    // The period starts later and ends two days after.
    const TriggerPreview bounded =
        Preview(NTriggerTypeEveryDay, "0 30 8 * * ?", "0 0 0 1 12 ? 2026", "0 0 0 3 12 ? 2026");
    ASSERT_EQ(bounded.moments.size(), 2u);
    EXPECT_EQ(bounded.moments[0], wxDateTime(1, wxDateTime::Dec, 2026, 8, 30, 0));
    EXPECT_TRUE(Preview(NTriggerTypeEveryYear, "0 0 0 30 2 ?", "0 0 0 1 1 ? 2026", "0 0 0 1 1 ? 2999")
                    .moments.empty());

    const TriggerPreview countDown =
        Preview(NTriggerTypeCountDown, "4 3 12 24 11 2026 1 2 3 4", "0 0 0 1 1 ? 2026", "0 0 0 1 1 ? 2999");
    ASSERT_EQ(countDown.moments.size(), 1u);
    EXPECT_EQ(countDown.moments[0], wxDateTime(24, wxDateTime::Nov, 2026, 12, 3, 4));
    EXPECT_NE(Preview(NTriggerTypeIdleTimeout, "- 10 - - - -", "", "").note.Find("10 minutes"), wxNOT_FOUND);
}

struct JobRow { std::uint32_t kind; std::size_t index; const char* value; const char* message; };

// A kind's defaults with its empty required values (paths) filled in.
ParamList ValidParams(std::uint32_t kind)
{
    ParamList params = DefaultJobParams(kind);
    const std::vector<JobField> fields = JobFieldsFor(kind);
    for (std::size_t i = 0; i < fields.size(); ++i) {
        params.resize(std::max(params.size(), fields[i].required ? i + 1 : 0));
        if (fields[i].required && params[i].empty())
            params[i] = "/tmp";
    }
    return params;
}

// Every kind's defaults pass; each bad row names its field.
TEST(JobForm, ChecksParametersNamingTheField)
{
    for (std::uint32_t kind = 0; kind < NJobTypeCount; ++kind) {
        wxString message;
        EXPECT_TRUE(ValidateJobParams(kind, ValidParams(kind), message)) << kind << ": " << message;
    }
    const JobRow rows[] = {
        {NJobTypeWakeOnLan, 0, "aa-bb-cc-dd-ee", "MAC Address: \"aa-bb-cc-dd-ee\" is not a MAC address"},
        {NJobTypeWakeOnLan, 1, "70000", "Port:"},      {NJobTypeSendTcpMsg, 3, "0", "Port:"},
        {NJobTypeSendUdpMsg, 3, " ; ", "IP Address List:"}, {NJobTypeOpenFile, 0, "", "File: must not be empty."},
        {NJobTypeBackupFolder, 1, " ", "Destination dir: must not be empty."},
        {NJobTypeExecDosCommand, 0, "", "Command: must not be empty."},
        {NJobTypeSendKey, 0, "CTRLX", "Key 1: \"CTRLX\" is not a key name."},
        {NJobTypeSendKey, 2, "ESCAPE", "Key 2: fill Key 2 before Key 3."},
        {NJobTypeKeyTyping, 2, "200;200", "SET 2: Point:"}, {NJobTypeMouseClick, 0, "1,2;x", "Point List: \"x\""},
        {NJobTypeMouseClick, 2, "Triple", "Click Type:"}, {NJobTypeAutoScreenshot, 4, "0 0 wide 10", "Range Setting:"},
        {NJobTypeReminder, 0, "a $ b", "Message: the sign \"$\""},
        {NJobTypeWakeOnLan, 1, "99999", "Port: \"99999\" is not a whole number from 1 to 65535."},
        {NJobTypeWakeOnLan, 0, "aa:bb:cc:dd:ee:ff", ""}, {NJobTypeWakeOnLan, 0, "AABBCCDDEEFF", ""},
        {NJobTypeWakeOnLan, 0, "aa:bb:cc:dd:ee:fg", "MAC Address:"}, {NJobTypeWakeOnLan, 0, "aabbccddeef", "MAC Address:"},
        {NJobTypeOpenUrl, 0, "not a url at all", "URL: \"not a url at all\" is not a web address"},
        {NJobTypeOpenUrl, 0, "www.example.com", "URL:"}, {NJobTypeRefreshUrl, 0, "https://", "URL:"},
        {NJobTypeOpenUrl, 0, "file:///tmp/a.html", ""}, {NJobTypeRefreshUrl, 0, "http://localhost:8080/x", ""},
    };
    for (const JobRow& row : rows) {
        ParamList params = ValidParams(row.kind);
        params.resize(std::max<std::size_t>(params.size(), row.index + 1));
        params[row.index] = row.value;
        wxString message;
        SCOPED_TRACE(row.value);
        EXPECT_EQ(ValidateJobParams(row.kind, params, message), !*row.message) << row.message;
        EXPECT_TRUE(message.StartsWith(row.message)) << message;
    }
}

// What the job dialog offers to save for an address typed without its scheme.
TEST(JobForm, OffersHttpsForAnAddressWithoutScheme)
{
    const struct { int line; const char* typed; const char* offered; } rows[] = {
        {__LINE__, " www.example.com/news ", "https://www.example.com/news"},
        {__LINE__, "localhost:8080", "https://localhost:8080"},
        {__LINE__, "example.org", "https://example.org"},
        {__LINE__, "http://example.org", ""},
        {__LINE__, "not a url at all", ""},
        {__LINE__, "notes", ""},
        {__LINE__, "", ""},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.line);
        EXPECT_EQ(UrlWithScheme(r.typed), r.offered);
        if (*r.offered)
            EXPECT_TRUE(IsUrl(r.offered));
    }
}

TEST(JobForm, ChecksTheChain)
{
    const auto exists = [](std::int32_t jid) { return jid == 1 || jid == 2; };
    std::int32_t interval = -1;
    IdList jids;
    wxString message;
    ASSERT_TRUE(ValidateChain("250", " 1, 2,", 0, exists, interval, jids, message)) << message;
    EXPECT_EQ(interval, 250);
    EXPECT_EQ(jids, (IdList{1, 2}));
    const struct { const char* interval; const char* jids; const char* message; } bad[] = {
               {"10000", "", "Please set Interval value in 0 ~ 9999."},
               {"0", "1,3", "Associated JID: there is no job 3."},
               {"0", "x", "Associated JID: \"x\" is not a job number."},
               {"0", "0", "Associated JID: 0 is this job itself"}};
    for (const auto& row : bad) {
        EXPECT_FALSE(ValidateChain(row.interval, row.jids, 0, exists, interval, jids, message)) << row.message;
        EXPECT_TRUE(message.StartsWith(row.message)) << message;
    }
}

}  // namespace
