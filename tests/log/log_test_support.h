#pragma once
// A temporary application folder and a manual clock for the log tests.

#include <sstream>
#include <vector>

#include <gtest/gtest.h>

#include "../core/test_support.h"
#include "core/clock.h"
#include "core/log/weekday_log.h"

class LogTest : public ::testing::Test {
protected:
    void TearDown() override { log.Close(); }
    // The lines of log_<weekday>.txt, without their line ends.
    std::vector<std::string> Lines(int weekday) const
    {
        std::vector<std::string> lines;
        std::istringstream in(ReadFileBytes(dir.File(WeekdayLog::FileName(weekday))));
        for (std::string line; std::getline(in, line);)
            lines.push_back(line);
        return lines;
    }

    TempDir dir;
    ManualClock clock;
    WeekdayLog log{dir.Path(), clock};
};
