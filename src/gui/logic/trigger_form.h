#pragma once
// The trigger dialog's values as plain data, and the conversion between them
// and a trigger's CONDITION, START and END texts. No window classes: the
// dialog only moves values between its controls and this module.

#include <array>
#include <cstdint>
#include <vector>

#include <wx/datetime.h>
#include <wx/string.h>

class SessionContext;

// The six cron fields in the order of a cron expression.
enum TriggerField { FieldSeconds = 0, FieldMinutes, FieldHours, FieldDays, FieldWeekdays, FieldMonths, FieldCount };

// One field picker: the "all" box and the values ticked in its list (the
// values themselves: 0-based for seconds to hours and weekdays, 1-based for
// days of month and months).
struct FieldPick {
    bool all = false;
    std::vector<int> values;
};

// The units of Interval and Idle Timeout.
enum TriggerUnit { UnitSeconds = 0, UnitMinutes = 1, UnitHours = 2 };

struct TriggerForm {
    std::uint32_t kind = 7;  // Every Day
    std::array<FieldPick, FieldCount> fields;
    // Count Down and With Start.
    int days = 0, hours = 0, minutes = 0, seconds = 0;
    // Interval and Idle Timeout.
    int amount = 1;
    int unit = UnitMinutes;
    wxDateTime special;  // Special Time
    wxDateTime start;    // the active period
    wxDateTime end;
};

// A form built into texts, or the reason it cannot be.
struct TriggerTexts {
    bool ok = false;
    wxString message;  // the user-facing reason when !ok
    wxString condition;
    wxString start;
    wxString end;
};

// The smallest and largest value of a field's list.
int FieldMin(int field);
int FieldMax(int field);
// Which pickers a kind uses (Cron: all six; Every Week: seconds to hours and
// weekdays; the relative kinds and Special Time: none).
bool KindUsesField(std::uint32_t kind, int field);

// Runs of consecutive values as "a-b", the rest single, joined by commas:
// {0,1,2,3,4,5,7,9,10,11} gives "0-5,7,9-11". Values are sorted first.
wxString FoldFieldValues(std::vector<int> values);
// "*" when all, else the folded values (empty when none).
wxString FieldText(const FieldPick& pick);

// Builds and validates. `now` is the moment a Count Down counts from.
TriggerTexts BuildTriggerTexts(const TriggerForm& form, const wxDateTime& now);

// Reads a trigger's texts back into a form of the given kind. False with
// `error` set when the condition cannot be read.
bool ReadTriggerTexts(std::uint32_t kind, const wxString& condition, const wxString& start, const wxString& end,
                      TriggerForm& form, wxString& error);

// A form with the defaults a new trigger of the kind starts from: an hour
// from `now` (Special Time), second 0 at the current minute and hour, the
// period from today to the far future.
TriggerForm DefaultTriggerForm(std::uint32_t kind, const wxDateTime& now);

// The next moments (at most `count`) at which a trigger with these texts
// would fire, computed by the engine's own trigger code, within the period.
// For the kinds that do not fire at a moment (Idle Timeout) or when there is
// none, `moments` is empty and `note` says why in words.
struct TriggerPreview {
    std::vector<wxDateTime> moments;
    wxString note;
    // No moment can ever come (a Special Time past, a period without a
    // match): the dialog asks before it saves such a trigger.
    bool neverFires = false;
};
TriggerPreview PreviewTrigger(const SessionContext& context, std::uint32_t kind, const TriggerTexts& texts,
                              const wxDateTime& now, std::size_t count = 5);
// The preview as the dialog shows it: one moment per line, or the note.
wxString FormatPreview(const TriggerPreview& preview);
