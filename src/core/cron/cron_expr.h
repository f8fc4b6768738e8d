#pragma once
// Six-field cron expressions: "sec min hour day-of-month month day-of-week".
// Parsing and the next-moment search are plain C++ so that the checker
// threads, the trigger dialog and the command line share one implementation.

#include <bitset>
#include <ctime>
#include <exception>
#include <string>
#include <utility>

namespace cron {

// Thrown by ParseCronExpr with one of a fixed set of user-facing messages.
class bad_cronexpr : public std::exception {
public:
    explicit bad_cronexpr(std::string message) : m_message(std::move(message)) {}
    bad_cronexpr(const bad_cronexpr& cause, int field, std::string value)
        : m_message(cause.m_message), m_field(field), m_value(std::move(value)) {}
    const char* what() const noexcept override { return m_message.c_str(); }
    // The field the problem is in (0 seconds ... 5 day of week; -1 for the
    // expression as a whole) and that field's text.
    int field() const { return m_field; }
    const std::string& value() const { return m_value; }

private:
    std::string m_message;
    int m_field = -1;
    std::string m_value;
};

// The problem in the user's language, naming the field, its text and its
// allowed values: `Minutes "61": Specified range exceeds maximum (0-59).`
std::string ErrorText(const bad_cronexpr& error);

}  // namespace cron

// A parsed expression. Bit i of each set means "value i is allowed", except
// for the day of month and the month, where bit i stands for value i + 1.
class CronExpr {
public:
    std::bitset<60> seconds;      // 0..59
    std::bitset<60> minutes;      // 0..59
    std::bitset<24> hours;        // 0..23
    std::bitset<31> daysOfMonth;  // 1..31 -> bits 0..30
    std::bitset<12> months;       // 1..12 -> bits 0..11
    std::bitset<7> daysOfWeek;    // 0..6, 0 = Sunday
    std::string source;           // the text it was parsed from
};

// Throws cron::bad_cronexpr with the message of the first problem found.
CronExpr ParseCronExpr(const std::string& text);

// The first moment strictly after `after` whose local time matches every
// field (day of month AND day of week). Local times skipped by a daylight
// saving gap never match; a local time that occurs twice matches only at its
// first occurrence. Returns -1 when nothing matches up to the end of the
// 400th year after the year of `after` (the calendar's whole cycle, so
// nothing ever matches), or when a date conversion fails.
std::time_t CronNext(const CronExpr& cex, std::time_t after);
