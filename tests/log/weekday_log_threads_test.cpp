// Lines of other threads reach the file whole, once and in order, written by
// the main thread only; also across a day switch.

#include <algorithm>
#include <map>
#include <regex>
#include <thread>

#include <wx/log.h>

#include "core/core_log.h"
#include "log_test_support.h"

namespace {

constexpr int kLinesPerThread = 400;
// Long enough that two lines written into each other could not pass the pattern.
const std::string kFiller(60, '.');

void LogLines(int worker)
{
    for (int i = 0; i < kLinesPerThread; ++i)
        wxLogMessage("%d ### worker %d line %d %s", LogMs(), worker, i, kFiller);
}

}  // namespace

TEST_F(LogTest, EveryWorkerLineArrivesWholeAndOnce)
{
    const int kThreads = 6;
    clock.Set(Local(2026, 11, 25, 23, 59, 59, 400));
    ASSERT_TRUE(log.Open());

    std::vector<std::thread> threads;
    for (int w = 0; w < kThreads; ++w)
        threads.emplace_back(LogLines, w);
    // The main thread writes, logs and switches while the workers log.
    for (int round = 0; round < 50; ++round) {
        WeekdayLog::Flush();
        wxLogMessage("%d ### main %d", LogMs(), round);
        if (round == 25) {  // queued just before the day changes: stays in Wednesday's file
            std::thread([] { wxLogMessage("%d ### late on Wednesday", LogMs()); }).join();
            clock.Set(Local(2026, 11, 26, 0, 2, 0));
            log.OnLoggingTimer(4, 1);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    for (std::thread& t : threads)
        t.join();
    WeekdayLog::Flush();
    log.Close();

    const std::regex pattern("\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d: \\d{1,3} ### worker (\\d+) line (\\d+) " + kFiller);
    std::map<int, int> next;  // worker -> the line expected next
    std::vector<std::string> lines = Lines(3), thursday = Lines(4);
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                            [](const std::string& l) { return l.find(": 400 ### late on Wednesday") != std::string::npos; }), 1);
    EXPECT_FALSE(thursday.empty());
    lines.insert(lines.end(), thursday.begin(), thursday.end());
    for (const std::string& line : lines) {
        if (line.find("worker") == std::string::npos)
            continue;
        std::smatch m;
        ASSERT_TRUE(std::regex_match(line, m, pattern)) << line;
        EXPECT_EQ(next[std::stoi(m[1])]++, std::stoi(m[2])) << line;
    }
    ASSERT_EQ(next.size(), std::size_t{kThreads});
    for (const auto& [worker, count] : next)
        EXPECT_EQ(count, kLinesPerThread) << "worker " << worker;
}
