// Parsing of the six fields into bit sets.

#include <cstdint>
#include <vector>

#include "core/cron/cron_expr.h"
#include "core/cron/cron_messages.h"
#include "core/cron/cron_text.h"

namespace {

const char* const kMonthNames[] = {"NIL", "JAN", "FEB", "MAR", "APR", "MAY", "JUN",
                                   "JUL", "AUG", "SEP", "OCT", "NOV", "DEC"};
const char* const kDayNames[] = {"SUN", "MON", "TUE", "WED", "THU", "FRI", "SAT"};

// Replaces every occurrence of names[i] by the decimal text of i. Names are
// upper case only; "mon" stays as it is and fails as a number later.
std::string ReplaceNames(std::string text, const char* const* names, int count, int first) {
    for (int i = first; i < count; ++i) {
        const std::string name = names[i];
        const std::string number = std::to_string(i);
        for (std::size_t pos = text.find(name); pos != std::string::npos;
             pos = text.find(name, pos + number.size())) {
            text.replace(pos, name.size(), number);
        }
    }
    return text;
}

struct Range {
    unsigned first;
    unsigned last;
};

void CheckRange(const Range& r, unsigned min, unsigned max) {
    if (r.first < min) throw cron::bad_cronexpr("Specified range is less than minimum");
    if (r.last > max) throw cron::bad_cronexpr("Specified range exceeds maximum");
    if (r.first > r.last) throw cron::bad_cronexpr("Specified range start exceeds range end");
}

// "*", "a-b" or "a".
Range ReadRange(const std::string& item, unsigned min, unsigned max) {
    if (item == "*") return {min, max};
    if (item.find('-') != std::string::npos) {
        const std::vector<std::string> ends = cron::SplitText(item, '-');
        if (ends.size() != 2) throw cron::bad_cronexpr("Specified range requires two fields");
        return {cron::ToUnsigned(ends[0]), cron::ToUnsigned(ends[1])};
    }
    const unsigned value = cron::ToUnsigned(item);
    return {value, value};
}

// Sets the bits of one field; bit (value - min) stands for value.
std::uint64_t ReadField(const std::string& text, unsigned min, unsigned max) {
    if (!text.empty() && text.back() == ',') {
        throw cron::bad_cronexpr("Value cannot end with comma");
    }
    const std::vector<std::string> items = cron::SplitText(text, ',');
    if (items.empty()) throw cron::bad_cronexpr("Expression parsing error");

    std::uint64_t bits = 0;
    for (const std::string& item : items) {
        Range range{};
        unsigned step = 1;
        if (item.find('/') != std::string::npos) {
            const std::vector<std::string> parts = cron::SplitText(item, '/');
            if (parts.size() != 2) throw cron::bad_cronexpr("Incrementer must have two fields");
            step = cron::ToUnsigned(parts[1]);
            if (step == 0) throw cron::bad_cronexpr("Incrementer must be a positive value");
            range = ReadRange(parts[0], min, max);
            // A lone start value counts up to the field's maximum.
            if (parts[0] != "*" && parts[0].find('-') == std::string::npos) range.last = max;
        } else {
            range = ReadRange(item, min, max);
        }
        CheckRange(range, min, max);
        for (unsigned v = range.first; v <= range.last; v += step) {
            bits |= std::uint64_t{1} << (v - min);
            if (range.last - v < step) break;  // no unsigned wrap on huge steps
        }
    }
    return bits;
}

}  // namespace

CronExpr ParseCronExpr(const std::string& text) {
    if (text.empty()) throw cron::bad_cronexpr("Invalid empty cron expression");
    std::vector<std::string> fields = cron::SplitText(text, ' ');
    if (fields.size() != 6) throw cron::bad_cronexpr("cron expression must have six fields");
    // "?" only means "no restriction" in the two day fields.
    if (fields[3] == "?") fields[3] = "*";
    if (fields[5] == "?") fields[5] = "*";

    CronExpr cex;
    int at = 0;
    try {
        cex.seconds = ReadField(fields[0], 0, 59);
        cex.minutes = ReadField(fields[++at], 0, 59);
        cex.hours = ReadField(fields[++at], 0, 23);
        cex.daysOfMonth = ReadField(fields[++at], 1, 31);
        cex.months = ReadField(ReplaceNames(fields[++at], kMonthNames, 13, 1), 1, 12);
        cex.daysOfWeek = ReadField(ReplaceNames(fields[++at], kDayNames, 7, 0), 0, 6);
    } catch (const cron::bad_cronexpr& e) {
        throw cron::bad_cronexpr(e, at, fields[static_cast<std::size_t>(at)]);
    }
    cex.source = text;
    return cex;
}

namespace cron {

std::string ErrorText(const bad_cronexpr& error) {
    std::string reason = TranslateMessage(error.what());
    if (error.field() < 0 || error.field() > 5) return reason;
    const std::string name[] = {TranslateMessage("Seconds"), TranslateMessage("Minutes"), TranslateMessage("Hours"),
                                TranslateMessage("Day of month"), TranslateMessage("Month"),
                                TranslateMessage("Day of week")};
    static const char* const allowed[] = {"0-59", "0-59", "0-23", "1-31", "1-12", "0-6"};
    std::string text = TranslateMessage("%1 \"%2\": %3 (%4).");
    const std::string parts[] = {name[error.field()], error.value(), reason, allowed[error.field()]};
    for (int i = 0; i < 4; ++i) {
        const std::string mark = "%" + std::to_string(i + 1);
        const std::size_t pos = text.find(mark);
        if (pos != std::string::npos) text.replace(pos, mark.size(), parts[i]);
    }
    return text;
}

}  // namespace cron
