#include "core/triggers/condition_tokens.h"

std::vector<wxString> SplitConditionTokens(const wxString& condition)
{
    std::vector<wxString> tokens;
    std::size_t begin = 0;
    while (begin < condition.length()) {
        while (begin < condition.length() && condition[begin] == ' ')
            ++begin;
        if (begin >= condition.length())
            break;
        std::size_t end = condition.find(' ', begin);
        if (end == wxString::npos)
            end = condition.length();
        tokens.push_back(condition.Mid(begin, end - begin));
        begin = end;
    }
    return tokens;
}
