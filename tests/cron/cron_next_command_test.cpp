#include <gtest/gtest.h>

#include <sstream>

#include "core/cron/cron_next_command.h"
#include "cron_test_util.h"

namespace {

struct Result { int code; std::string out, err; };

Result RunCommand(const std::vector<std::string>& args) {
    std::ostringstream out, err;
    const int code = RunCronNextCommand(args, out, err, Local("2024-05-06 13:00:00"));
    return {code, out.str(), err.str()};
}

TEST_P(CronEveryZone, CommandPrintsMoments) {
    const struct { std::vector<std::string> args; const char* out; } cases[] = {
        {{"0 0 12 * * *"},
         "2024-05-07 12:00:00\n2024-05-08 12:00:00\n2024-05-09 12:00:00\n"
         "2024-05-10 12:00:00\n2024-05-11 12:00:00\n"},
        {{"0 0 12 * * *", "--count", "2", "--from", "2024-05-06 11:59:59"},
         "2024-05-06 12:00:00\n2024-05-07 12:00:00\n"},
        {{"0 0 12 * * *", "--from", "2024-05-06 12:00:00", "--count", "1"},
         "2024-05-07 12:00:00\n"},
        // Stops when the search finds nothing more: 2100 is no leap year.
        {{"0 0 0 29 2 ?", "--from", "2096-01-01 00:00:00"}, "2096-02-29 00:00:00\n"},
        {{"0 0 0 30 2 ?"}, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.args[0] + (c.args.size() > 1 ? " " + c.args[1] : ""));
        const Result r = RunCommand(c.args);
        EXPECT_EQ(r.code, 0);
        EXPECT_EQ(r.out, c.out);
        EXPECT_EQ(r.err, "");
    }
}

TEST(CronNextCommand, RejectsBadInput) {
    const Result bad = RunCommand({"0,15, * * * * ?"});
    EXPECT_EQ(bad.code, 2);
    EXPECT_EQ(bad.err, "Value cannot end with comma\n");
    EXPECT_EQ(bad.out, "");

    const std::vector<std::vector<std::string>> usage = {
        {},
        {"--count", "3"},
        {"* * * * * *", "--count", "0"},
        {"* * * * * *", "--count", "x"},
        {"* * * * * *", "--count"},
        {"* * * * * *", "--from", "2024-02-30 00:00:00"},
        {"* * * * * *", "--from", "2024-05-06T00:00:00"},
        {"* * * * * *", "--bogus"},
    };
    for (const auto& args : usage) {
        SCOPED_TRACE(testing::Message() << args.size() << " args, last: "
                                        << (args.empty() ? "" : args.back()));
        const Result r = RunCommand(args);
        EXPECT_EQ(r.code, 2);
        EXPECT_NE(r.err.find("usage: cadrelle --cron-next"), std::string::npos) << r.err;
        EXPECT_EQ(r.out, "");
    }
}

}  // namespace
