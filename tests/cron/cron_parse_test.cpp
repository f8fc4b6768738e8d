#include <gtest/gtest.h>

#include "core/cron/cron_expr.h"

namespace {

std::string ErrorOf(const std::string& text) {
    try {
        ParseCronExpr(text);
    } catch (const cron::bad_cronexpr& e) {
        return e.what();
    }
    return "(accepted)";
}

// Every field's bits, one text: "seconds|minutes|hours|days|months|weekdays".
std::string Bits(const CronExpr& e) {
    return e.seconds.to_string() + "|" + e.minutes.to_string() + "|" + e.hours.to_string() + "|" +
           e.daysOfMonth.to_string() + "|" + e.months.to_string() + "|" + e.daysOfWeek.to_string();
}

TEST(CronParse, RejectsWithExactMessages) {
    const struct { const char* text; const char* message; } cases[] = {
        {"", "Invalid empty cron expression"},
        {"* * * * *", "cron expression must have six fields"},
        {"* * * * * * ", "cron expression must have six fields"},  // trailing blank is a part
        {"*  * * * *", "Expression parsing error"},                // empty second field
        {"0,15, * * * * ?", "Value cannot end with comma"},
        {"0/0 * * * * ?", "Incrementer must be a positive value"},
        {"1/2/3 * * * * ?", "Incrementer must have two fields"},
        {"1-2-3 * * * * ?", "Specified range requires two fields"},
        {"60 * * * * ?", "Specified range exceeds maximum"},
        {"0 0 0 ? * 7", "Specified range exceeds maximum"},
        {"99999999999999999999 * * * * *", "Specified range exceeds maximum"},
        {"0 0 0 0 * ?", "Specified range is less than minimum"},
        {"0 0 0 5-3 * ?", "Specified range start exceeds range end"},
        {"70-65 * * * * *", "Specified range exceeds maximum"},  // end checked before order
        {"60/5 * * * * *", "Specified range start exceeds range end"},  // runs 60..59
        {"a * * * * ?", "Value must be a number"},
        {"? * * * * *", "Value must be a number"},  // "?" only in the day fields
        {"0 0 12 ? * mon", "Value must be a number"},  // names are upper case
        {"1,,2 * * * * *", "Value must be a number"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(ErrorOf(c.text), c.message);
    }
}

TEST(CronParse, EquivalentSpellings) {
    const struct { const char* a; const char* b; } cases[] = {
        {"0 0 12 ? * MON-FRI", "0 0 12 * * 1-5"},
        {"0 0 0 1 JAN ?", "0 0 0 1 1 *"},
        {"0 0 0 ? JAN-MAR,DEC SUN,SAT", "0 0 0 * 1-3,12 0,6"},
        {"0 0 0 ? JUL-DEC/2 TUE/2", "0 0 0 * 7,9,11 2,4,6"},
        {"10-40/7 * * * * *", "10,17,24,31,38 * * * * *"},
        {"*/7 * * * * *", "0,7,14,21,28,35,42,49,56 * * * * *"},
        {"50/20 5/100 * * * *", "50 5 * * * *"},
        {"* * */5 */10 */5 */3", "* * 0,5,10,15,20 1,11,21,31 1,6,11 0,3,6"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.a) + " vs " + c.b);
        EXPECT_EQ(Bits(ParseCronExpr(c.a)), Bits(ParseCronExpr(c.b)));
    }
}

}  // namespace
