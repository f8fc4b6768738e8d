#include "core/cron/cron_next_command.h"

#include <cstdio>

#include "core/cron/cron_expr.h"
#include "core/cron/cron_local_time.h"
#include "core/cron/cron_messages.h"

namespace {

constexpr long kMaxCount = 10000;
static_assert(kMaxCount == 10000, "the --count message names the bound");

int UsageError(std::ostream& err, const std::string& problem) {
    err << "cadrelle --cron-next: " << problem << "\n"
        << cron::TranslateMessage("usage: cadrelle --cron-next \"EXPR\" [--count N] [--from \"YYYY-MM-DD HH:MM:SS\"]")
        << "\n";
    return 2;
}

bool ReadCount(const std::string& text, long& count) {
    if (text.empty() || text.size() > 5) return false;
    long value = 0;
    for (char c : text) {
        if (c < '0' || c > '9') return false;
        value = value * 10 + (c - '0');
    }
    if (value < 1 || value > kMaxCount) return false;
    count = value;
    return true;
}

// Exactly "YYYY-MM-DD HH:MM:SS", a real calendar date and time of day.
bool ReadFrom(const std::string& text, cron::CivilTime& c) {
    static const char kPattern[] = "dddd-dd-dd dd:dd:dd";
    if (text.size() != sizeof kPattern - 1) return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool digit = text[i] >= '0' && text[i] <= '9';
        if (kPattern[i] == 'd' ? !digit : text[i] != kPattern[i]) return false;
    }
    auto number = [&text](std::size_t pos, std::size_t len) {
        int v = 0;
        for (std::size_t i = pos; i < pos + len; ++i) v = v * 10 + (text[i] - '0');
        return v;
    };
    c.year = number(0, 4);
    c.month = number(5, 2);
    c.day = number(8, 2);
    c.hour = number(11, 2);
    c.minute = number(14, 2);
    c.second = number(17, 2);
    return c.month >= 1 && c.month <= 12 && c.day >= 1 &&
           c.day <= cron::DaysInMonth(c.year, c.month) && c.hour <= 23 && c.minute <= 59 &&
           c.second <= 59;
}

std::string FormatLocal(std::time_t t) {
    cron::CivilTime c;
    if (!cron::ToCivil(t, c)) return "?";
    char buf[64];
    std::snprintf(buf, sizeof buf, "%04lld-%02d-%02d %02d:%02d:%02d", c.year, c.month, c.day,
                  c.hour, c.minute, c.second);
    return buf;
}

}  // namespace

int RunCronNextCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
                       std::time_t now) {
    // No expression starts with "--", so that is an option given too early.
    if (args.empty() || args[0].rfind("--", 0) == 0) {
        return UsageError(err, cron::TranslateMessage("missing cron expression"));
    }
    long count = 5;
    std::time_t from = now;
    for (std::size_t i = 1; i < args.size(); ++i) {
        const std::string& opt = args[i];
        if (opt != "--count" && opt != "--from") {
            return UsageError(err, cron::FormatMessage("unknown argument '%s'", opt));
        }
        if (i + 1 >= args.size()) return UsageError(err, cron::FormatMessage("%s needs a value", opt));
        const std::string& value = args[++i];
        if (opt == "--count") {
            if (!ReadCount(value, count)) {
                return UsageError(err, cron::FormatMessage("--count needs a whole number from 1 to 10000, not '%s'",
                                                           value));
            }
        } else {
            cron::CivilTime c;
            if (!ReadFrom(value, c)) {
                return UsageError(err, cron::FormatMessage(
                                           "--from needs a local time \"YYYY-MM-DD HH:MM:SS\", not '%s'", value));
            }
            long long offset = 0;  // only a hint for the lookup
            cron::OffsetAt(static_cast<std::time_t>(cron::CivilSeconds(c)), offset);
            // A time shown twice means its first occurrence, as for firing.
            if (cron::FirstOccurrence(c, offset, from) != cron::LocalLookup::Found) {
                return UsageError(err, cron::FormatMessage("--from names a local time that does not exist: '%s'",
                                                           value));
            }
        }
    }

    CronExpr cex;
    try {
        cex = ParseCronExpr(args[0]);
    } catch (const cron::bad_cronexpr& e) {
        err << cron::ErrorText(e) << "\n";
        return 2;
    }

    std::time_t t = from;
    for (long i = 0; i < count; ++i) {
        t = CronNext(cex, t);
        if (t == -1) break;
        out << FormatLocal(t) << "\n";
    }
    return 0;
}
