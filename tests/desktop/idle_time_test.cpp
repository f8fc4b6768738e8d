// Idle time from the X server's screen-saver extension on the launcher's
// Xvfb, compared with xprintidle.

#include <chrono>
#include <cstdlib>
#include <thread>

#include <gtest/gtest.h>

#include "desktop/platform/idle_time_platform.h"
#include "harness.h"

TEST(IdleTime, FollowsTheServersIdleCounterAndResetsOnInput)
{
    std::unique_ptr<IdleTimeSource> source = CreatePlatformIdleTimeSource();
    ASSERT_EQ(RunProcess({"xdotool", "mousemove", "10", "10", "mousemove", "20", "20"}).status, 0);
    EXPECT_LE(source->IdleSeconds(), 1);
    std::this_thread::sleep_for(std::chrono::milliseconds(2300));
    const long ours = source->IdleSeconds();
    const long reference = std::atol(RunProcess({"xprintidle"}).out.c_str()) / 1000;
    EXPECT_GE(ours, 2);
    EXPECT_LE(std::labs(ours - reference), 1) << "xprintidle says " << reference;

    ASSERT_EQ(RunProcess({"xdotool", "mousemove", "30", "30"}).status, 0);
    EXPECT_LE(source->IdleSeconds(), 1);

    const ScopedEnv nobody("DISPLAY", ":9999");  // nothing listens there
    EXPECT_EQ(CreatePlatformIdleTimeSource()->IdleSeconds(), 0);
}
