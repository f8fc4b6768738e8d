// A save killed at any moment never leaves a working copy that fails to load.

#include <chrono>
#include <random>
#include <thread>

#include <gtest/gtest.h>

#include "harness.h"
#include "core/data/data_file_reader.h"
#include "core/data/scheduler_data.h"
#include "core/scheduler.h"
#include "harness.h"
#include "test_support.h"

namespace {

bool StartSaveLoop(ChildProcess& child, const wxString& appDir, bool once)
{
    std::vector<std::string> argv{CADRELLE_SAVE_LOOP, appDir.utf8_string(), "3000"};
    if (once)
        argv.push_back("--once");
    return child.Start(argv);
}

}  // namespace

TEST(DataFileCrashSafety, KilledSaveLoopAlwaysLeavesALoadableWorkingCopy)
{
    TempDir dir;
    {
        ChildProcess first;
        ASSERT_TRUE(StartSaveLoop(first, dir.Path(), true));
        ASSERT_EQ(first.Stop(0, 120000), 0);
    }

    std::mt19937 random(20261122);
    std::uniform_int_distribution<int> delayUs(1000, 80000);
    for (int round = 0; round < 40; ++round) {
        SCOPED_TRACE(round);
        ChildProcess child;
        ASSERT_TRUE(StartSaveLoop(child, dir.Path(), false));
        std::this_thread::sleep_for(std::chrono::microseconds(delayUs(random)));
        ASSERT_EQ(child.Stop(kSignalKill, 10000), -1);  // killed, not ended by itself
        DataFileContent check;
        ReadDataFile(dir.File("data/data1.xml"), check, HarnessContext());
        ASSERT_TRUE(check.wellFormed) << check.problem;
        Scheduler loaded(HarnessContext(), dir.Path());
        const DataLoadReport report = LoadSchedulerData(loaded, false);
        ASSERT_EQ(report.source, DataLoadReport::Source::Working);
        ASSERT_EQ(loaded.Jobs().size(), 3000u);
    }
}
