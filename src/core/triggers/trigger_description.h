#pragma once
// A trigger's CONDITION said as one sentence in the user's language ("Every
// weekday at 08:30", "5 minutes after Cadrelle starts"). The condition is read
// with the parsers the engine uses, so the sentence says what will happen;
// a pattern that has no simpler wording is listed exactly. No GUI: the
// trigger list, the trigger dialog, `--list` and `--describe` share it.
//
// Sentences are assembled from translatable parts ("%1$s at %2$s", ...)
// whose order each catalogue may change; see docs/CRON.md.

#include <cstdint>

#include <wx/string.h>

// The sentence for a trigger of `kind` (0 to 11) with `condition`. A
// condition the engine cannot read gives "Malformed condition: ..." with
// the reason; an unknown kind gives an empty text.
wxString DescribeTrigger(std::uint32_t kind, const wxString& condition);

// The sentence for a six-field cron expression (the recurring kinds).
wxString DescribeCron(const wxString& expression);

// A month (1-12) and a weekday (0 Sunday - 6) by name in the user's language,
// for the sentences, the trigger dialog's pickers and its preview.
wxString MonthName(int month);
wxString WeekdayName(int weekday);
