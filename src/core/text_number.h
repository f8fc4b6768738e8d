#pragma once
// Small text helpers shared by the core, the job kinds and the forms.

#include <string>

#include <wx/string.h>

// The leading decimal number of a text after optional blanks and a sign, as
// strtol reads it; empty or junk gives 0. No conversion or allocation: the
// data file loader calls it tens of thousands of times.
long LeadingLong(const wxString& text);

// The text without leading and trailing white space.
wxString Trimmed(const wxString& text);
// The text as UTF-8 bytes, whatever the locale (the C locale could not
// convert a translated text).
std::string Utf8(const wxString& text);
