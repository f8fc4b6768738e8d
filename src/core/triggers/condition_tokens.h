#pragma once
// The blank-separated tokens of a trigger condition; runs of blanks give no
// empty tokens.

#include <vector>

#include <wx/string.h>

std::vector<wxString> SplitConditionTokens(const wxString& condition);
