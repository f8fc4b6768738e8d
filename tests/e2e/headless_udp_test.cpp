// The headless scheduler firing a Send UDP MSG job every 2 seconds, with a
// chained job after the job interval: datagrams observed on loopback.

#include <chrono>
#include <csignal>
#include <thread>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <wx/filename.h>

#include "e2e_support.h"

namespace {

struct Arrival {
    std::string payload;
    std::int64_t ms;  // wall clock, milliseconds since 1970
};

std::int64_t WallMs()
{
    timeval tv{};
    ::gettimeofday(&tv, nullptr);
    return static_cast<std::int64_t>(tv.tv_sec) * 1000 + tv.tv_usec / 1000;
}

}  // namespace

TEST(HeadlessUdp, IntervalFiresAtEvenSecondsAndTheChainFollowsAfterItsInterval)
{
    const int fd = ::socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ASSERT_EQ(::bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr), 0);
    socklen_t length = sizeof addr;
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&addr), &length);
    const unsigned port = ntohs(addr.sin_port);

    TempDir dir;
    const std::string info = "0 $ 0 $ 127.0.0.1 $ " + std::to_string(port);
    WriteFileBytes(dir.File("app/data/data1.xml"),
                   DataFile(Job(0, 10, "tick", true, 500, "1", "1", "tick $ " + info) +
                                Job(1, 10, "tock", false, 0, "", "", "tock $ " + info),
                            IntervalTrigger(1, "0/2 * * * * ?")));
    const std::string home = dir.File("home").utf8_string();
    wxFileName::Mkdir(dir.File("home"), 0700, wxPATH_MKDIR_FULL);
    ChildProcess process;
    ASSERT_TRUE(process.Start({CADRELLE_BINARY, "--headless", "--app-dir", dir.File("app").utf8_string()}, "",
                              ProgramEnvironment(home)));

    std::vector<Arrival> arrivals;
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(9000);
    while (std::chrono::steady_clock::now() < end) {
        pollfd pfd{fd, POLLIN, 0};
        if (::poll(&pfd, 1, 100) <= 0)
            continue;
        char buffer[256];
        const ssize_t n = ::recv(fd, buffer, sizeof buffer, 0);
        if (n > 0)
            arrivals.push_back({std::string(buffer, static_cast<std::size_t>(n)), WallMs()});
    }
    EXPECT_EQ(process.Stop(SIGTERM), 0);
    ::close(fd);

    int ticks = 0;
    for (std::size_t i = 0; i < arrivals.size(); ++i) {
        const Arrival& a = arrivals[i];
        if (a.payload == "tick") {
            ++ticks;
            const std::int64_t phase = a.ms % 2000;  // 0 at an even second
            const std::int64_t early = phase == 0 ? 0 : 2000 - phase;
            // The trigger fires inside the 200 ms before the moment; the
            // datagram may come a little later on a busy machine (the job
            // thread has to be started and scheduled first).
            EXPECT_TRUE(early <= 220 || phase < 150) << "tick " << ticks << " at phase " << phase << " ms";
            // The disabled chained job follows about 500 ms later (unless the
            // listening window closed in between).
            if (i + 1 == arrivals.size())
                break;
            EXPECT_EQ(arrivals[i + 1].payload, "tock");
            const std::int64_t gap = arrivals[i + 1].ms - a.ms;
            EXPECT_GE(gap, 450) << gap;
            EXPECT_LE(gap, 900) << gap;
        }
    }
    EXPECT_GE(ticks, 3);
}
