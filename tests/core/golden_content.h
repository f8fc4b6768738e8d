#pragma once
// The content of tests/data/golden_data1.xml: built through the API, and
// the file's bytes.

#include <string>

#include "core/scheduler.h"
#include "harness.h"
#include "test_support.h"
#include "trigger_builders.h"

// The content of tests/data/golden_data1.xml, built through the API.
inline void FillGoldenContent(Scheduler& s)
{
    s.AddJob(TestJob(0, NJobTypeReminder, {1, 2}, {}, 0, true, "Tea <time> & \"biscuits\"", {"Drink tea", "1"}));
    s.AddJob(TestJob(3, NJobTypeSendUdpMsg, {}, {0}, 500, false, "Ping & pong",
                     {"hi", "0", "1", "127.0.0.1", "7788"}));
    s.AddTrigger(LoadedTrigger(HarnessContext(), 1, NTriggerTypeSpecTime, "0 0 8 23 11 ? 2026", "0 0 0 1 1 * 1999",
                               "0 0 8 23 11 * 2026"));
    s.AddTrigger(LoadedTrigger(HarnessContext(), 2, NTriggerTypeCountDown, "0 0 9 24 11 2026 0 1 0 0",
                               "0 0 9 20 11 * 2026", "0 0 9 24 11 * 2026", "0 0 0 1 11 * 2026", "59 59 23 31 12 * 2027"));
}

inline std::string Golden()
{
    return ReadFileBytes(CADRELLE_TEST_DATA_DIR "/golden_data1.xml");
}
