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
