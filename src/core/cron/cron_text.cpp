#include "core/cron/cron_text.h"

#include "core/cron/cron_expr.h"

namespace cron {

std::vector<std::string> SplitText(const std::string& text, char sep) {
    std::vector<std::string> parts;
    if (text.empty()) return parts;
    std::size_t start = 0;
    for (;;) {
        const std::size_t end = text.find(sep, start);
        if (end == std::string::npos) {
            parts.push_back(text.substr(start));
            return parts;
        }
        parts.push_back(text.substr(start, end - start));
        start = end + 1;
    }
}

unsigned ToUnsigned(const std::string& text) {
    if (text.empty()) throw bad_cronexpr("Value must be a number");
    constexpr unsigned kCap = 1000000;
    unsigned value = 0;
    for (char c : text) {
        if (c < '0' || c > '9') throw bad_cronexpr("Value must be a number");
        if (value < kCap) value = value * 10 + static_cast<unsigned>(c - '0');
    }
    return value;
}

}  // namespace cron
