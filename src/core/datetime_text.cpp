#include "core/datetime_text.h"

#include <array>

namespace {

// Splits at blanks (runs of blanks give no empty tokens) and converts the
// leading decimal digits of each token; junk converts to 0, as strtol would.
int ReadTokens(const wxString& text, std::array<long, 7>& out)
{
    int count = 0;
    bool inToken = false;
    bool negative = false;
    long value = 0;
    auto flush = [&]() {
        if (inToken && count < static_cast<int>(out.size()))
            out[count] = negative ? -value : value;
        if (inToken)
            ++count;
        inToken = false;
        negative = false;
        value = 0;
    };
    bool digitsEnded = false;
    for (wxUniChar ch : text) {
        if (ch == ' ' || ch == '\t' || ch == '\n' || ch == '\r') {
            flush();
            digitsEnded = false;
            continue;
        }
        if (!inToken) {
            inToken = true;
            digitsEnded = false;
            if (ch == '-') {
                negative = true;
                continue;
            }
        }
        if (!digitsEnded && ch >= '0' && ch <= '9' && value < 100000000)
            value = value * 10 + (ch.GetValue() - '0');
        else
            digitsEnded = true;
    }
    flush();
    return count;
}

}  // namespace

wxString FormatDateTimeText(const wxDateTime& dt)
{
    if (!dt.IsValid())
        return "0 0 0 1 1 * 1999";
    const wxDateTime::Tm tm = dt.GetTm();
    return wxString::Format("%d %d %d %d %d * %d", tm.sec, tm.min, tm.hour, tm.mday,
                            static_cast<int>(tm.mon) + 1, tm.year);
}

bool ReadDateTimeText(const wxString& text, wxDateTime& dt)
{
    std::array<long, 7> tok{};
    if (ReadTokens(text, tok) < 7)
        return false;

    wxDateTime::Tm tm = dt.IsValid() ? dt.GetTm() : DefaultPeriodStart().GetTm();
    if (tok[0] >= 0 && tok[0] <= 59)
        tm.sec = static_cast<wxDateTime::wxDateTime_t>(tok[0]);
    if (tok[1] >= 0 && tok[1] <= 59)
        tm.min = static_cast<wxDateTime::wxDateTime_t>(tok[1]);
    if (tok[2] >= 0 && tok[2] <= 23)
        tm.hour = static_cast<wxDateTime::wxDateTime_t>(tok[2]);
    if (tok[6] >= 1 && tok[6] <= 9999)
        tm.year = static_cast<int>(tok[6]);
    // Day 1 first, so a month shorter than the old day cannot overflow.
    tm.mday = 1;
    if (tok[4] >= 1 && tok[4] <= 12)
        tm.mon = static_cast<wxDateTime::Month>(tok[4] - 1);
    if (tok[3] >= 1 && tok[3] <= wxDateTime::GetNumberOfDays(tm.mon, tm.year))
        tm.mday = static_cast<wxDateTime::wxDateTime_t>(tok[3]);
    dt = wxDateTime(tm.mday, tm.mon, tm.year, tm.hour, tm.min, tm.sec, 0);
    // A wall time that the end of daylight saving repeats reads as its first
    // occurrence: the C library resolves it by its last guess otherwise, so
    // the same text could read an hour apart from one call to the next.
    if (dt.IsValid()) {
        const wxDateTime earlier = dt - wxTimeSpan::Hour();
        if (earlier.GetHour() == tm.hour && earlier.GetMinute() == tm.min && earlier.GetDay() == tm.mday)
            dt = earlier;
    }
    return true;
}

wxDateTime NeverFiredAt(const wxDateTime& timeOfDay)
{
    const wxDateTime::Tm tm = timeOfDay.GetTm();
    return wxDateTime(1, wxDateTime::Jan, kNeverFiredYear, tm.hour, tm.min, tm.sec, tm.msec);
}

wxDateTime DefaultPeriodStart()
{
    return wxDateTime(1, wxDateTime::Jan, 1999, 0, 0, 0, 0);
}

wxDateTime DefaultPeriodEnd()
{
    return wxDateTime(31, wxDateTime::Dec, 2999, 23, 59, 59, 0);
}
