// The job model: the INFO line with its lossy cases, id lists, the
// parameter record and the action table.

#include <gtest/gtest.h>

#include "core/jobs/job.h"
#include "core/jobs/job_actions.h"
#include "core/jobs/job_kinds.h"
#include "harness.h"

TEST(JobParamLine, JoinsWithBlankDollarBlankAndSplitsLossily)
{
    const struct { int line; ParamList stored; const char* joined; ParamList reloaded; } cases[] = {
        {__LINE__, {}, "", {}},
        {__LINE__, {"a", "", "c"}, "a $  $ c", {"a", "c"}},              // an empty middle one vanishes
        {__LINE__, {"  padded  ", "x"}, "  padded   $ x", {"padded", "x"}},  // blanks around are trimmed
        {__LINE__, {"price $5", "1"}, "price $5 $ 1", {"price", "5", "1"}},  // a "$" inside splits
        {__LINE__, {"", ""}, " $ ", {}},
        {__LINE__, {"ping 127.0.0.1 -t"}, "ping 127.0.0.1 -t", {"ping 127.0.0.1 -t"}},
        {__LINE__, {wxString::FromUTF8("日本語"), "1"}, "\xe6\x97\xa5\xe6\x9c\xac\xe8\xaa\x9e $ 1",
         {wxString::FromUTF8("日本語"), "1"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(JoinJobParams(c.stored), wxString::FromUTF8(c.joined));
        EXPECT_EQ(SplitJobParams(JoinJobParams(c.stored)), c.reloaded);
    }
    EXPECT_EQ(SplitJobParams(" $ $a$$ b $"), (ParamList{"a", "b"}));
}

TEST(JobIdList, JoinsWithCommasAndReadsLeniently)
{
    EXPECT_EQ(JoinIdList(IdList{4, 7, 9}), "4,7,9");
    EXPECT_EQ(JoinIdList(IdList{}), "");
    EXPECT_EQ(SplitIdList("4,7,9"), (IdList{4, 7, 9}));
    EXPECT_EQ(SplitIdList(" 4 , ,7,"), (IdList{4, 7}));
    EXPECT_EQ(SplitIdList("12abc,x"), (IdList{12, 0}));
    EXPECT_TRUE(SplitIdList("").empty());
}

TEST(JobParamRecord, SetAndGetCopyEveryField)
{
    std::unique_ptr<Job> job = CreateJob(NJobTypeSendUdpMsg);
    JobParam in;
    in.id = 12;
    in.type = NJobTypeSendUdpMsg;
    in.description = "Ping the lab";
    in.enable = false;
    in.associatedJids = {3, 4};
    in.jobInterval = 2500;
    in.params = {"hello", "0", "1", "127.0.0.1", "7788"};
    in.triggerIds = {8};
    job->SetParam(in);
    in.params[0] = "changed after the copy";
    in.triggerIds.push_back(99);

    JobParam out;
    job->GetParam(out);
    EXPECT_EQ(out.id, 12);
    EXPECT_EQ(out.description, "Ping the lab");
    EXPECT_FALSE(out.enable);
    EXPECT_EQ(out.associatedJids, (IdList{3, 4}));
    EXPECT_EQ(out.jobInterval, 2500);
    EXPECT_EQ(out.triggerIds, decltype(out.triggerIds){8});  // a copy: later edits of `in` stay out
    EXPECT_GE(out.triggerIds.capacity(), 16u);
    EXPECT_EQ(job->GetSummary(), "Ping the lab | hello $ 0 $ 1 $ 127.0.0.1 $ 7788");
    EXPECT_EQ(job->GetParamAt(4), "7788");
    EXPECT_EQ(job->GetParamAt(5), "");
}

TEST(JobExecute, RunsTheRegisteredActionOfItsKind)
{
    std::unique_ptr<Job> udp = CreateJob(NJobTypeSendUdpMsg);
    std::unique_ptr<Job> tcp = CreateJob(NJobTypeSendTcpMsg);
    std::vector<std::uint32_t> ran;
    SetJobAction(NJobTypeSendUdpMsg, [&](Job& job) { ran.push_back(job.GetType()); });
    udp->Execute();
    tcp->Execute();  // nothing registered: logged, not run
    ClearJobActions();
    udp->Execute();
    EXPECT_EQ(ran, (std::vector<std::uint32_t>{NJobTypeSendUdpMsg}));

    RecordedMessages messages;
    BlankJob(0).Execute();
    ASSERT_EQ(messages.All().size(), 1u);
    EXPECT_EQ(messages.All()[0].caption + ": " + messages.All()[0].text, "Cadrelle: blank job executed.");
}
