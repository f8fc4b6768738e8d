#pragma once

#include <wx/string.h>

// The leading decimal number of a text after optional blanks and a sign, as
// strtol reads it; empty or junk gives 0. No conversion or allocation: the
// data file loader calls it tens of thousands of times.
long LeadingLong(const wxString& text);
