#include "core/text_number.h"

#include <algorithm>
#include <climits>

long LeadingLong(const wxString& text)
{
    auto it = text.begin();
    while (it != text.end() && (*it == ' ' || *it == '\t' || *it == '\n' || *it == '\r'))
        ++it;
    bool negative = false;
    if (it != text.end() && (*it == '-' || *it == '+')) {
        negative = *it == '-';
        ++it;
    }
    // Counted in 64 bits and clamped: `long` has 32 on Windows.
    long long value = 0;
    for (; it != text.end() && *it >= '0' && *it <= '9' && value < 100000000000LL; ++it)
        value = value * 10 + static_cast<long long>((*it).GetValue() - '0');
    value = negative ? -value : value;
    return static_cast<long>(std::clamp<long long>(value, LONG_MIN, LONG_MAX));
}

wxString Trimmed(const wxString& text)
{
    return wxString(text).Trim(true).Trim(false);
}

std::string Utf8(const wxString& text)
{
    const wxScopedCharBuffer buffer = text.utf8_str();
    return std::string(buffer.data(), buffer.length());
}
