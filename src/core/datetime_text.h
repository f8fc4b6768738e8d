#pragma once
// The date-time text of the data file and of the Special Time condition:
// "second minute hour day month * year", local time, month 1 to 12. The sixth
// token is ignored on reading, whatever it holds.

#include <wx/datetime.h>
#include <wx/string.h>

// Writes "%d %d %d %d %d * %d". An invalid moment is written as the
// never-fired default "0 0 0 1 1 * 1999".
wxString FormatDateTimeText(const wxDateTime& dt);

// Reads `text` into `dt`. Fields start from dt's current value (or 1 January
// 1999 00:00:00 when dt is invalid); each field the text holds in range
// replaces it, a missing or out-of-range field keeps the previous value, and a
// day the month lacks leaves day 1. Milliseconds become 0. Returns false when
// the text holds fewer than the seven tokens.
bool ReadDateTimeText(const wxString& text, wxDateTime& dt);

// 1 January 1999 with the given time of day: the initial PREVFIRE and
// NEXTFIRE. Year 1999 in PREVFIRE means "never fired".
wxDateTime NeverFiredAt(const wxDateTime& timeOfDay);
constexpr int kNeverFiredYear = 1999;

// 1 January 1999 00:00:00 and 31 December 2999 23:59:59: the default period.
wxDateTime DefaultPeriodStart();
wxDateTime DefaultPeriodEnd();
