// The job model: the INFO line with its lossy cases, id lists and the action table.

#include <gtest/gtest.h>

#include "core/jobs/job.h"
#include "core/jobs/job_actions.h"
#include "core/jobs/job_kinds.h"
#include "core/session/session_context.h"
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
    EXPECT_EQ(SplitIdList("4,7,9"), (IdList{4, 7, 9}));
    EXPECT_EQ(SplitIdList(" 4 , ,7,"), (IdList{4, 7}));
    EXPECT_EQ(SplitIdList("12abc,x"), (IdList{12, 0}));
}

TEST(JobActions, RunsTheRegisteredActionOfItsKindOnlyAndInItsOwnSession)
{
    std::vector<std::uint32_t> ran;
    SessionContext one, other;
    one.Actions().Set(NJobTypeSendUdpMsg, [&](const Job& job, SessionContext& context) {
        EXPECT_EQ(&context, &one);
        ran.push_back(job.GetType());
    });
    one.Actions().Run(*CreateJob(NJobTypeSendUdpMsg), one);
    one.Actions().Run(*CreateJob(NJobTypeSendTcpMsg), one);      // nothing registered: logged, not run
    other.Actions().Run(*CreateJob(NJobTypeSendUdpMsg), other);  // another session's table is its own
    EXPECT_EQ(ran, (std::vector<std::uint32_t>{NJobTypeSendUdpMsg}));
}
