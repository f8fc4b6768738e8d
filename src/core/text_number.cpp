#include "core/text_number.h"

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
    long value = 0;
    for (; it != text.end() && *it >= '0' && *it <= '9' && value < 100000000000L; ++it)
        value = value * 10 + static_cast<long>((*it).GetValue() - '0');
    return negative ? -value : value;
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
