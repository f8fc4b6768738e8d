// A save killed at any moment never leaves a working copy that fails to load.

#include <csignal>
#include <random>

#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "harness.h"
#include "core/data/data_file_reader.h"
#include "core/data/scheduler_data.h"
#include "core/scheduler.h"
#include "test_support.h"

namespace {

pid_t StartSaveLoop(const wxString& appDir, const char* extra)
{
    const pid_t pid = ::fork();
    if (pid == 0) {
        const wxCharBuffer dir = appDir.fn_str();
        ::execl(CADRELLE_SAVE_LOOP, CADRELLE_SAVE_LOOP, dir.data(), "3000", extra, static_cast<char*>(nullptr));
        ::_exit(127);
    }
    return pid;
}

}  // namespace

TEST(DataFileCrashSafety, KilledSaveLoopAlwaysLeavesALoadableWorkingCopy)
{
    TempDir dir;
    int status = 0;
    const pid_t first = StartSaveLoop(dir.Path(), "--once");
    ASSERT_GT(first, 0);
    ASSERT_EQ(::waitpid(first, &status, 0), first);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);

    std::mt19937 random(20261122);
    std::uniform_int_distribution<int> delayUs(1000, 80000);
    for (int round = 0; round < 40; ++round) {
        SCOPED_TRACE(round);
        const pid_t pid = StartSaveLoop(dir.Path(), nullptr);
        ASSERT_GT(pid, 0);
        ::usleep(static_cast<useconds_t>(delayUs(random)));
        ASSERT_EQ(::kill(pid, SIGKILL), 0);
        ASSERT_EQ(::waitpid(pid, &status, 0), pid);
        ASSERT_TRUE(WIFSIGNALED(status));

        DataFileContent check;
        ReadDataFile(dir.File("data/data1.xml"), check, HarnessContext());
        ASSERT_TRUE(check.wellFormed) << check.problem;
        Scheduler loaded(HarnessContext(), dir.Path());
        const DataLoadReport report = LoadSchedulerData(loaded, false);
        ASSERT_EQ(report.source, DataLoadReport::Source::Working);
        ASSERT_EQ(loaded.Jobs().size(), 3000u);
    }
}
