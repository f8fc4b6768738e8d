// `--cron-next` in-process: the count and start options, a start in a gap or
// a fold, and bad input. The real program's run is in list_command_test.

#include <gtest/gtest.h>

#include <sstream>

#include "core/cron/cron_next_command.h"
#include "cron_test_util.h"

namespace {

TEST(CronNextCommand, PrintsMomentsOrRefuses) {
    ScopedZone zone("Europe/Berlin");
    if (!zone.InZone()) GTEST_SKIP() << "checked by the run started in Europe/Berlin";
    const std::string usage = "~usage: cadrelle --cron-next";
    const struct { std::vector<std::string> args; int code; const char* out; std::string err; } cases[] = {
        {{"0 0 12 * * *"}, 0, "2024-05-07 12:00:00\n2024-05-08 12:00:00\n2024-05-09 12:00:00\n"
                              "2024-05-10 12:00:00\n2024-05-11 12:00:00\n", ""},
        {{"0 0 12 * * *", "--count", "2", "--from", "2024-05-06 11:59:59"}, 0,
         "2024-05-06 12:00:00\n2024-05-07 12:00:00\n", ""},
        // 2100 is no leap year: the next 29 February is eight years on.
        {{"0 0 0 29 2 ?", "--count", "2", "--from", "2096-01-01 00:00:00"}, 0,
         "2096-02-29 00:00:00\n2104-02-29 00:00:00\n", ""},
        // A date on a chosen weekday eleven years ahead is printed, not lost.
        {{"0 14 7 24 11 2", "--count", "1", "--from", "2026-11-24 08:00:00"}, 0, "2037-11-24 07:14:00\n", ""},
        // Nothing ever matches: nothing is printed, and that is no error.
        {{"0 0 0 31 4 ?", "--from", "2026-01-01 00:00:00"}, 0, "", ""},
        // A repeated time means its first occurrence, so 02:45 still follows.
        {{"0 45 2 * * *", "--count", "2", "--from", "2024-10-27 02:30:00"}, 0,
         "2024-10-27 02:45:00\n2024-10-28 02:45:00\n", ""},
        {{"* * * * * *", "--from", "2024-03-31 02:30:00"}, 2, "", "~"},  // in the gap
        {{"0,15, * * * * ?"}, 2, "", "Seconds \"0,15,\": Value cannot end with comma (0-59).\n"},
        {{}, 2, "", usage},
        {{"--count", "3"}, 2, "", usage},
        {{"* * * * * *", "--count", "0"}, 2, "", usage},
        {{"* * * * * *", "--from", "2024-02-30 00:00:00"}, 2, "", usage},
        {{"* * * * * *", "--bogus"}, 2, "", usage},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.args));
        std::ostringstream out, err;
        EXPECT_EQ(RunCronNextCommand(c.args, out, err, Local("2024-05-06 13:00:00")), c.code);
        EXPECT_EQ(out.str(), c.out);
        if (c.err.rfind('~', 0) == 0)
            EXPECT_NE(err.str().find(c.err.substr(1)), std::string::npos) << err.str();
        else
            EXPECT_EQ(err.str(), c.err);
    }
}

}  // namespace
