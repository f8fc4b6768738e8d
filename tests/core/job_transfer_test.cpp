// Export and import of jobs: the data file's layout, new ids, chains kept
// between imported jobs, and damaged files refused with their reason.

#include <gtest/gtest.h>

#include "core/import/job_transfer.h"
#include "core/jobs/job_kinds.h"
#include "harness.h"
#include "trigger_builders.h"

namespace {

// Jobs 3 -> 5 -> 7 chained (7 also back to 3), each with its own triggers.
void FillChain(Scheduler& s)
{
    s.AddTrigger(LoadedTrigger(HarnessContext(), 10, NTriggerTypeCron, "0 0 8 * * ?"));
    s.AddTrigger(LoadedTrigger(HarnessContext(), 11, NTriggerTypeSpecTime, "0 0 9 1 1 ? 2031"));
    s.AddTrigger(LoadedTrigger(HarnessContext(), 12, NTriggerTypeEveryHour, "0 15 * * * ?"));
    s.AddJob(TestJob(3, NJobTypeReminder, {10, 11}, {5}, 0, true, "first", {"Tea", "1"}));
    s.AddJob(TestJob(5, NJobTypeExecDosCommand, {12}, {7}, 2, false, "second", {"echo hi"}));
    s.AddJob(TestJob(7, NJobTypeReminder, {}, {3}, 0, true, "third", {"Bye", "0"}));
}

}  // namespace

TEST(JobTransfer, ExportedJobsComeBackUnderFreeIdsWithTheirChains)
{
    Scheduler from(HarnessContext());
    FillChain(from);
    wxString problem;
    const std::string file = ExportJobs(from, {5, 3}, problem);
    ASSERT_TRUE(problem.empty()) << problem;

    Scheduler to(HarnessContext());
    FillChain(to);  // every id of the file is taken
    const JobImport plan = PlanJobImport(file, to);
    ASSERT_TRUE(plan.problem.empty()) << plan.problem;
    // Job 7 was not exported: the chain to it is left out, and said so.
    EXPECT_EQ(wxJoin(plan.notes, '|'), "JID 5: the chain to JID 7 is left out: that job is not in the file");
    EXPECT_EQ(plan.jidMap, (std::vector<std::pair<std::int32_t, std::int32_t>>{{5, 0}, {3, 1}}));
    ApplyJobImport(plan, to);

    const struct {
        std::int32_t jid;
        const char* description;
        bool enabled;
        std::vector<std::int64_t> tids;
        std::vector<std::int32_t> chained;
        const char* params;
    } expected[] = {
        {0, "second", false, {13}, {}, "echo hi"},
        {1, "first", true, {14, 15}, {0}, "Tea $ 1"},
    };
    ASSERT_EQ(to.Jobs().size(), 5u);
    for (const auto& e : expected) {
        SCOPED_TRACE(e.jid);
        const Scheduler::JobPtr job = to.GetJobById(e.jid);
        ASSERT_TRUE(job);
        EXPECT_EQ(job->GetDescription(), e.description);
        EXPECT_EQ(job->IsEnabled(), e.enabled);
        EXPECT_EQ(std::vector<std::int64_t>(job->GetTriggerIds().begin(), job->GetTriggerIds().end()), e.tids);
        EXPECT_EQ(std::vector<std::int32_t>(job->GetAssociatedJids().begin(), job->GetAssociatedJids().end()),
                  e.chained);
        EXPECT_EQ(job->GetParamText(), e.params);
    }
    const struct {
        std::int64_t tid;
        std::int64_t was;
    } triggers[] = {{13, 12}, {14, 10}, {15, 11}};
    for (const auto& t : triggers) {
        SCOPED_TRACE(t.tid);
        ASSERT_TRUE(to.GetTriggerById(t.tid));
        EXPECT_EQ(to.GetTriggerById(t.tid)->GetType(), from.GetTriggerById(t.was)->GetType());
        EXPECT_EQ(to.GetTriggerById(t.tid)->GetCondition(), from.GetTriggerById(t.was)->GetCondition());
    }
    // The disabled job's trigger is disabled with it.
    EXPECT_FALSE(to.GetTriggerById(13)->IsEnabled());

    // All jobs when none is named; a JID no job has is named.
    EXPECT_EQ(PlanJobImport(ExportJobs(from, {}, problem), to).edits.size(), 3u);
    EXPECT_TRUE(ExportJobs(from, {3, 42}, problem).empty());
    EXPECT_EQ(problem, "no job has the JID 42");
}

TEST(JobTransfer, DamagedFilesAreRefusedWithTheirReason)
{
    Scheduler from(HarnessContext());
    FillChain(from);
    wxString problem;
    const std::string file = ExportJobs(from, {}, problem);
    const struct {
        int line;
        std::string bytes;
        const char* problem;  // the start of it
    } cases[] = {
        {__LINE__, file.substr(0, file.find("<CONDITION>") + 5), "unclosed token at line 36"},
        {__LINE__, "", "no element found at line 1"},
        {__LINE__, "<?xml version=\"1.0\"?>\n<JOBS/>\n", "the root element is not SCHEDULER"},
        // What the reader leaves out makes the whole file refused.
        {__LINE__, "<SCHEDULER>\n<JOB><ID>99999999999</ID><TYPE>0</TYPE><ENABLE>1</ENABLE></JOB>\n</SCHEDULER>", "job"},
        {__LINE__,
         "<SCHEDULER><JOB><ID>1</ID><TYPE>0</TYPE><ENABLE>1</ENABLE></JOB>"
         "<JOB><ID>1</ID><TYPE>0</TYPE><ENABLE>1</ENABLE></JOB></SCHEDULER>",
         "job 1: another one has the same ID"},
    };
    Scheduler to(HarnessContext());
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        const JobImport plan = PlanJobImport(c.bytes, to);
        EXPECT_FALSE(plan.problem.empty());
        EXPECT_TRUE(plan.problem.StartsWith(c.problem)) << plan.problem;
        EXPECT_TRUE(plan.edits.empty());
    }
    EXPECT_TRUE(to.Jobs().empty());
}
