// Idle time from the X server's screen-saver extension, compared with
// xprintidle on a private Xvfb.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "desktop/platform/idle_time_platform.h"
#include "xvfb_server.h"

namespace {

long ShellNumber(const std::string& command)
{
    FILE* pipe = ::popen(command.c_str(), "r");
    if (!pipe)
        return -1;
    long value = -1;
    if (std::fscanf(pipe, "%ld", &value) != 1)
        value = -1;
    ::pclose(pipe);
    return value;
}

}  // namespace

TEST(IdleTime, FollowsTheServersIdleCounterAndResetsOnInput)
{
    XvfbServer server;
    ASSERT_TRUE(server.IsRunning());
    ::setenv("DISPLAY", server.Display().c_str(), 1);
    std::unique_ptr<IdleTimeSource> source = CreatePlatformIdleTimeSource();

    ASSERT_EQ(std::system("xdotool mousemove 10 10 mousemove 20 20"), 0);
    EXPECT_LE(source->IdleSeconds(), 1);
    std::this_thread::sleep_for(std::chrono::milliseconds(2300));
    const long ours = source->IdleSeconds();
    const long reference = ShellNumber("xprintidle") / 1000;
    EXPECT_GE(ours, 2);
    EXPECT_LE(std::labs(ours - reference), 1) << "xprintidle says " << reference;

    ASSERT_EQ(std::system("xdotool mousemove 30 30"), 0);
    EXPECT_LE(source->IdleSeconds(), 1);
    ::unsetenv("DISPLAY");
}

TEST(IdleTime, NoDisplayMeansZero)
{
    ::setenv("DISPLAY", ":9999", 1);  // nothing listens there
    std::unique_ptr<IdleTimeSource> source = CreatePlatformIdleTimeSource();
    EXPECT_EQ(source->IdleSeconds(), 0);
    ::unsetenv("DISPLAY");
}
