#include "gui/logic/trigger_form.h"

#include <algorithm>
#include <memory>

#include <wx/intl.h>

#include "core/cron/cron_expr.h"
#include "core/triggers/trigger_description.h"
#include "core/datetime_text.h"
#include "core/session/session_context.h"
#include "core/triggers/condition_tokens.h"
#include "core/triggers/trigger.h"
#include "core/triggers/one_shot_triggers.h"
#include "core/triggers/trigger_kinds.h"
#include "core/triggers/trigger_time.h"

namespace {

constexpr int kFieldMin[FieldCount] = {0, 0, 0, 1, 0, 1};
constexpr int kFieldMax[FieldCount] = {59, 59, 23, 31, 6, 12};

// The dialog's own form of a date-time text: "?" where the data file has "*".
// Special Time's condition has the same form.
wxString PeriodText(const wxDateTime& dt)
{
    return wxString::Format("%d %d %d %d %d ? %d", dt.GetSecond(), dt.GetMinute(), dt.GetHour(), dt.GetDay(),
                            static_cast<int>(dt.GetMonth()) + 1, dt.GetYear());
}

// The unit's position in the three-entry tables; anything unknown is hours.
int UnitIndex(int unit)
{
    return unit == UnitSeconds || unit == UnitMinutes ? unit : UnitHours;
}

bool PickIsEmpty(const FieldPick& pick)
{
    return !pick.all && pick.values.empty();
}

wxString CronErrorMessage(const wxString& condition, const wxString& reason)
{
    wxString text = _("Cron expressions format error");
    text << ": [" << condition << "]";
    if (!reason.empty())
        text << "\n" << reason;
    text << _("\nCron expressions must have six fields.\nPlease select/check listbox item and try again.");
    return text;
}

// The values a parsed field allows, as the pickers list them.
template <std::size_t N>
std::vector<int> BitValues(const std::bitset<N>& bits, int offset)
{
    std::vector<int> values;
    for (std::size_t i = 0; i < N; ++i)
        if (bits.test(i))
            values.push_back(static_cast<int>(i) + offset);
    return values;
}

long TokenNumber(const wxString& token, bool& ok)
{
    long value = 0;
    ok = token.ToLong(&value);
    return value;
}

}  // namespace

int FieldMin(int field)
{
    return kFieldMin[field];
}

int FieldMax(int field)
{
    return kFieldMax[field];
}

bool KindUsesField(std::uint32_t kind, int field)
{
    switch (kind) {
    case NTriggerTypeEveryMinute: return field == FieldSeconds;
    case NTriggerTypeEveryHour: return field <= FieldMinutes;
    case NTriggerTypeEveryDay: return field <= FieldHours;
    case NTriggerTypeEveryWeek: return field <= FieldHours || field == FieldWeekdays;
    case NTriggerTypeEveryMonth: return field <= FieldDays;
    case NTriggerTypeEveryYear: return field != FieldWeekdays;
    case NTriggerTypeCron: return true;
    default: return false;
    }
}

wxString FoldFieldValues(std::vector<int> values)
{
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
    wxString text;
    for (std::size_t i = 0; i < values.size();) {
        std::size_t j = i;
        while (j + 1 < values.size() && values[j + 1] == values[j] + 1)
            ++j;
        if (!text.empty())
            text << ",";
        if (j > i)
            text << wxString::Format("%d-%d", values[i], values[j]);
        else
            text << values[i];
        i = j + 1;
    }
    return text;
}

wxString FieldText(const FieldPick& pick)
{
    return pick.all ? wxString("*") : FoldFieldValues(pick.values);
}

TriggerTexts BuildTriggerTexts(const TriggerForm& form, const wxDateTime& now)
{
    TriggerTexts out;
    wxString f[FieldCount];
    for (int i = 0; i < FieldCount; ++i)
        f[i] = FieldText(form.fields[i]);

    switch (form.kind) {
    case NTriggerTypeEveryMinute: out.condition = f[FieldSeconds] + " * * * * *"; break;
    case NTriggerTypeEveryHour:
        out.condition = wxString::Format("%s %s * * * ?", f[FieldSeconds], f[FieldMinutes]);
        break;
    case NTriggerTypeEveryDay:
        out.condition = wxString::Format("%s %s %s * * ?", f[FieldSeconds], f[FieldMinutes], f[FieldHours]);
        break;
    case NTriggerTypeEveryWeek:
        out.condition = wxString::Format("%s %s %s ? * %s", f[FieldSeconds], f[FieldMinutes], f[FieldHours],
                                         f[FieldWeekdays]);
        break;
    case NTriggerTypeEveryMonth:
        out.condition =
            wxString::Format("%s %s %s %s * ?", f[FieldSeconds], f[FieldMinutes], f[FieldHours], f[FieldDays]);
        break;
    case NTriggerTypeEveryYear:
        out.condition = wxString::Format("%s %s %s %s %s ?", f[FieldSeconds], f[FieldMinutes], f[FieldHours],
                                         f[FieldDays], f[FieldMonths]);
        break;
    case NTriggerTypeCron: {
        const bool noDays = PickIsEmpty(form.fields[FieldDays]);
        const bool noWeekdays = PickIsEmpty(form.fields[FieldWeekdays]);
        if (noDays && noWeekdays) {
            out.message = _("Please select Days or Weekdays.");
            return out;
        }
        wxString days = noDays ? wxString("?") : f[FieldDays];
        wxString weekdays = noWeekdays ? wxString("?") : f[FieldWeekdays];
        out.condition = wxString::Format("%s %s %s %s %s %s", f[FieldSeconds], f[FieldMinutes], f[FieldHours], days,
                                         f[FieldMonths], weekdays);
        break;
    }
    case NTriggerTypeInterval: {
        const char* const formats[] = {"0/%d * * * * ?", "0 0/%d * * * ?", "0 0 0/%d * * ?"};
        out.condition = wxString::Format(formats[UnitIndex(form.unit)], form.amount);
        break;
    }
    case NTriggerTypeCountDown:
    case NTriggerTypeWithStart: {
        TriggerDuration duration;
        duration.days = form.days;
        duration.hours = form.hours;
        duration.minutes = form.minutes;
        duration.seconds = form.seconds;
        if (duration.IsZero()) {
            out.message = _("Don't set Days/Hours/Minutes/Seconds value to ZERO in the same time.");
            return out;
        }
        if (form.kind == NTriggerTypeWithStart) {
            out.condition =
                wxString::Format("%d %d %d %d - -", form.days, form.hours, form.minutes, form.seconds);
            break;
        }
        // The engine's own rule: the days as a calendar span, the rest in milliseconds.
        const wxDateTime target = duration.AddTo(now);
        out.condition = wxString::Format("%d %d %d %d %d %d %d %d %d %d", target.GetSecond(), target.GetMinute(),
                                         target.GetHour(), target.GetDay(), static_cast<int>(target.GetMonth()) + 1,
                                         target.GetYear(), form.days, form.hours, form.minutes, form.seconds);
        break;
    }
    case NTriggerTypeIdleTimeout: {
        const char* const formats[] = {"%d - - - - -", "- %d - - - -", "- - %d - - -"};
        out.condition = wxString::Format(formats[UnitIndex(form.unit)], form.amount);
        break;
    }
    case NTriggerTypeSpecTime: out.condition = PeriodText(form.special); break;
    default: out.message = _("Unknown trigger kind."); return out;
    }

    if (IsCronDrivenType(form.kind)) {
        try {
            ParseCronExpr(std::string(out.condition.utf8_str()));
        } catch (const cron::bad_cronexpr& e) {
            out.message = CronErrorMessage(out.condition, wxString::FromUTF8(cron::ErrorText(e)));
            return out;
        }
    }
    if (form.start.IsLaterThan(form.end)) {
        out.message = _("Start time later than End time, please check.");
        return out;
    }
    out.start = PeriodText(form.start);
    out.end = PeriodText(form.end);
    out.ok = true;
    return out;
}

bool ReadTriggerTexts(std::uint32_t kind, const wxString& condition, const wxString& start, const wxString& end,
                      TriggerForm& form, wxString& error)
{
    form.kind = kind;
    ReadDateTimeText(start, form.start);
    ReadDateTimeText(end, form.end);
    const std::vector<wxString> tokens = SplitConditionTokens(condition);
    bool ok = true;

    if (kind == NTriggerTypeInterval) {
        if (condition.Find('/') == wxNOT_FOUND) {
            error = wxString::FromUTF8("NTriggerTypeInterval，Slash not found.");
            return false;
        }
        for (std::size_t i = 0; i < tokens.size() && i < 3; ++i) {
            const int slash = tokens[i].Find('/');
            if (slash == wxNOT_FOUND)
                continue;
            form.unit = static_cast<int>(i);
            form.amount = static_cast<int>(TokenNumber(tokens[i].Mid(slash + 1), ok));
            break;
        }
        if (!ok || form.amount <= 0) {
            error = wxString::Format(_("The interval \"%s\" has no step."), condition);
            return false;
        }
        return true;
    }
    if (IsCronDrivenType(kind)) {
        CronExpr cex;
        try {
            cex = ParseCronExpr(std::string(condition.utf8_str()));
        } catch (const cron::bad_cronexpr& e) {
            error = CronErrorMessage(condition, wxString::FromUTF8(cron::ErrorText(e)));
            return false;
        }
        const std::vector<int> values[FieldCount] = {
            BitValues(cex.seconds, 0), BitValues(cex.minutes, 0), BitValues(cex.hours, 0),
            BitValues(cex.daysOfMonth, 1), BitValues(cex.daysOfWeek, 0), BitValues(cex.months, 1)};
        // Token order is seconds minutes hours days months weekdays.
        const int tokenOf[FieldCount] = {0, 1, 2, 3, 5, 4};
        for (int f = 0; f < FieldCount; ++f) {
            const wxString& token = tokens[tokenOf[f]];
            FieldPick& pick = form.fields[f];
            pick.all = token == "*";
            pick.values = token == "?" || pick.all ? std::vector<int>() : values[f];
        }
        return true;
    }

    switch (kind) {
    case NTriggerTypeCountDown:
    case NTriggerTypeWithStart: {
        const std::size_t first = kind == NTriggerTypeCountDown ? 6 : 0;
        if (tokens.size() < first + 4) {
            error = wxString::Format(_("The duration \"%s\" cannot be read."), condition);
            return false;
        }
        int* parts[] = {&form.days, &form.hours, &form.minutes, &form.seconds};
        for (std::size_t i = 0; i < 4 && ok; ++i)
            *parts[i] = static_cast<int>(TokenNumber(tokens[first + i], ok));
        if (!ok) {
            error = wxString::Format(_("The duration \"%s\" cannot be read."), condition);
            return false;
        }
        return true;
    }
    case NTriggerTypeIdleTimeout: {
        bool found = false;
        for (std::size_t i = 0; i < tokens.size() && i < 3; ++i) {
            if (tokens[i] == "-")
                continue;
            form.unit = static_cast<int>(i);
            form.amount = static_cast<int>(TokenNumber(tokens[i], ok));
            found = ok;
        }
        if (!found) {
            error = wxString::Format(_("The idle time \"%s\" cannot be read."), condition);
            return false;
        }
        return true;
    }
    case NTriggerTypeSpecTime:
        if (!form.special.IsValid())
            form.special = wxDateTime::Now();
        if (!ReadDateTimeText(condition, form.special)) {
            error = wxString::Format(_("The moment \"%s\" cannot be read."), condition);
            return false;
        }
        return true;
    default: error = _("Unknown trigger kind."); return false;
    }
}

TriggerForm DefaultTriggerForm(std::uint32_t kind, const wxDateTime& now)
{
    TriggerForm form;
    form.kind = kind;
    form.fields[FieldSeconds].values = {0};
    form.fields[FieldMinutes].values = {now.GetMinute()};
    form.fields[FieldHours].values = {now.GetHour()};
    form.fields[FieldDays].values = {now.GetDay()};
    form.fields[FieldWeekdays].values = {static_cast<int>(now.GetWeekDay())};
    form.fields[FieldMonths].values = {static_cast<int>(now.GetMonth()) + 1};
    form.minutes = 5;
    form.amount = 5;
    form.unit = UnitMinutes;
    // An hour ahead: a moment already past would never fire.
    form.special = now + wxTimeSpan::Hour();
    form.special.SetSecond(0);
    form.special.SetMillisecond(0);
    form.start = wxDateTime(now.GetDay(), now.GetMonth(), now.GetYear(), 0, 0, 0);
    form.end = DefaultPeriodEnd();
    return form;
}

TriggerPreview PreviewTrigger(const SessionContext& context, std::uint32_t kind, const TriggerTexts& texts, const wxDateTime& now, std::size_t count)
{
    TriggerPreview preview;
    if (!texts.ok) {
        preview.note = texts.message;
        return preview;
    }
    wxDateTime start = DefaultPeriodStart(), end = DefaultPeriodEnd();
    ReadDateTimeText(texts.start, start);
    ReadDateTimeText(texts.end, end);

    if (kind == NTriggerTypeIdleTimeout) {
        TriggerForm form;
        wxString ignored;
        ReadTriggerTexts(kind, texts.condition, texts.start, texts.end, form, ignored);
        const wxString units[] = {_("seconds"), _("minutes"), _("hours")};
        preview.note = wxString::Format(_("Fires once each time the user has been idle for exactly %d %s "
                                          "(keyboard and mouse untouched); not again until the user comes back."),
                                        form.amount, units[std::clamp(form.unit, 0, 2)]);
        return preview;
    }

    if (IsCronDrivenType(kind)) {
        // The engine's own search, stepped from now (or from the start of
        // the period) to the end of the period.
        CronExpr cex;
        try {
            cex = ParseCronExpr(std::string(texts.condition.utf8_str()));
        } catch (const cron::bad_cronexpr& e) {
            preview.note = CronErrorMessage(texts.condition, wxString::FromUTF8(cron::ErrorText(e)));
            return preview;
        }
        // Whole seconds from the millisecond values: GetTicks() gives up
        // beyond 2038, and the default period ends in 2999.
        std::time_t after = static_cast<std::time_t>(FloorSeconds(ToMs(now)));
        if (start.IsLaterThan(now))
            after = static_cast<std::time_t>(FloorSeconds(ToMs(start))) - 1;
        const std::int64_t last = FloorSeconds(ToMs(end));
        while (preview.moments.size() < count) {
            const std::time_t next = CronNext(cex, after);
            if (next < 0 || next > last)
                break;
            preview.moments.push_back(FromMs(static_cast<std::int64_t>(next) * 1000));
            after = next;
        }
        if (preview.moments.empty()) {
            preview.note = _("No moment matches inside the start/end period: this trigger would never fire.");
            preview.neverFires = true;
        }
        return preview;
    }

    // The one-shot kinds: their own load computes the moment.
    std::unique_ptr<Trigger> trigger = CreateTrigger(kind, context);
    if (!trigger)
        return preview;
    TriggerParam param;
    param.type = kind;
    param.condition = texts.condition;
    param.start = texts.start;
    param.end = texts.end;
    trigger->Load(param);
    const wxDateTime moment = trigger->GetNextFire();
    if (kind == NTriggerTypeWithStart) {
        const TriggerDuration& d = static_cast<const WithStartTrigger&>(*trigger).Duration();
        preview.note = wxString::Format(_("Fires once after each start of the program: %d d %d h %d min %d s after "
                                          "it (this run started %s)."),
                                        d.days, d.hours, d.minutes, d.seconds,
                                        context.StartTime().Format("%Y-%m-%d %H:%M:%S"));
    }
    if (!moment.IsValid() || moment.IsEarlierThan(now)) {
        if (preview.note.empty()) {
            preview.note = _("This moment has already passed: the trigger would never fire.");
            preview.neverFires = true;
        } else
            preview.note << "\n" << _("In this run that moment has already passed.");
        return preview;
    }
    preview.moments.push_back(moment);
    return preview;
}

wxString FormatPreview(const TriggerPreview& preview)
{
    wxString text;
    for (const wxDateTime& moment : preview.moments)
        // The weekday in the user's language: %a would give the C locale's.
        text << moment.Format("%Y-%m-%d ") << WeekdayName(moment.GetWeekDay()) << moment.Format(" %H:%M:%S") << "\n";
    if (!preview.note.empty())
        text << preview.note;
    return text.Trim();
}
