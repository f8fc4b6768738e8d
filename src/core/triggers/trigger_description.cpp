#include "core/triggers/trigger_description.h"

#include <array>
#include <functional>
#include <initializer_list>
#include <utility>
#include <vector>

#include "core/cron/cron_expr.h"
#include "core/datetime_text.h"
#include "core/text_number.h"
#include "core/triggers/condition_tokens.h"
#include "core/triggers/trigger.h"

namespace {

// Parts carry positional placeholders (%1$s, %2$s, ...) so that a catalogue
// may put them in another order; numbers are passed as text.
wxString Fill(const wxString& pattern, std::initializer_list<wxString> args)
{
    wxString out = pattern;
    int i = 1;
    for (const wxString& arg : args)
        out.Replace(wxString::Format("%%%d$s", i++), arg);
    return out;
}

wxString Num(long n)
{
    return wxString::Format("%ld", n);
}

wxString Clock(int hour, int minute, int second)
{
    return second ? wxString::Format("%02d:%02d:%02d", hour, minute, second)
                  : wxString::Format("%02d:%02d", hour, minute);
}

// "a, b and c" / "a, b or c" in the user's language.
wxString JoinList(const std::vector<wxString>& items, bool orList)
{
    if (items.empty())
        return wxString();
    wxString text = items[0];
    for (std::size_t i = 1; i + 1 < items.size(); ++i)
        text = Fill(wxGETTEXT_IN_CONTEXT("list", "%1$s, %2$s"), {text, items[i]});
    if (items.size() > 1)
        text = Fill(orList ? _("%1$s or %2$s") : _("%1$s and %2$s"), {text, items.back()});
    return text;
}

// The values one cron field allows, with the shapes a sentence can name.
struct Field {
    std::vector<int> values;  // ascending
    int lo = 0, hi = 0;

    Field(std::uint64_t bits, int low, int high) : lo(low), hi(high)
    {
        for (int v = low; v <= high; ++v)
            if (bits >> (v - low) & 1)
                values.push_back(v);
    }
    std::size_t Count() const { return values.size(); }
    bool All() const { return static_cast<int>(Count()) == hi - lo + 1; }
    bool Single() const { return Count() == 1; }
    int First() const { return values.front(); }
    int Last() const { return values.back(); }
    // The common difference of an evenly spaced set of at least two values
    // (at least 2 apart); 0 otherwise.
    int Step() const
    {
        if (Count() < 2 || values[1] - values[0] < 2)
            return 0;
        const int step = values[1] - values[0];
        for (std::size_t i = 2; i < Count(); ++i)
            if (values[i] - values[i - 1] != step)
                return 0;
        return step;
    }
    // Evenly spaced across the turn of the larger unit too: "every N".
    bool EveryN() const
    {
        const int step = Step();
        return step && First() == lo && (hi - lo + 1) % step == 0;
    }
    // Evenly spaced but not across the turn: "every N from a to b".
    bool Progression() const { return Step() && Count() >= 4 && !EveryN(); }
    std::vector<std::pair<int, int>> Runs() const
    {
        std::vector<std::pair<int, int>> runs;
        for (int v : values) {
            if (!runs.empty() && runs.back().second + 1 == v)
                runs.back().second = v;
            else
                runs.emplace_back(v, v);
        }
        return runs;
    }
};

using Namer = std::function<wxString(int)>;

// Every value of the field, exactly: "1-5, 10 and 20". Numbers evenly
// spaced (`elide`) are shortened to "0, 7, ..., 56"; names are listed in full.
wxString ListText(const Field& f, const Namer& name, bool orList = false, bool elide = false)
{
    if (elide && f.Step() && f.Count() >= 4) {
        wxString text = name(f.First());
        for (const wxString& item : {name(f.values[1]), wxString("..."), name(f.Last())})
            text = Fill(wxGETTEXT_IN_CONTEXT("list", "%1$s, %2$s"), {text, item});
        return text;
    }
    std::vector<wxString> items;
    for (const auto& run : f.Runs()) {
        if (run.second - run.first >= 2) {
            items.push_back(Fill(_("%1$s-%2$s"), {name(run.first), name(run.second)}));
        } else {
            items.push_back(name(run.first));
            if (run.second != run.first)
                items.push_back(name(run.second));
        }
    }
    return JoinList(items, orList);
}

wxString NumberName(int v)
{
    return Num(v);
}

// "1st", "22nd", "13th"; each language writes its own form.
wxString Ordinal(int day)
{
    const wxString n = Num(day);
    if (day % 100 / 10 != 1) {
        switch (day % 10) {
        // TRANSLATORS: a day of the month; English needs four forms, other languages one.
        case 1: return Fill(wxGETTEXT_IN_CONTEXT("day of month", "%1$sst"), {n});
        case 2: return Fill(wxGETTEXT_IN_CONTEXT("day of month", "%1$snd"), {n});
        case 3: return Fill(wxGETTEXT_IN_CONTEXT("day of month", "%1$srd"), {n});
        default: break;
        }
    }
    return Fill(wxGETTEXT_IN_CONTEXT("day of month", "%1$sth"), {n});
}

// Monday to Friday has a name of its own.
wxString WeekdaysText(const Field& w, bool orList)
{
    if (w.Count() == 5 && w.First() == 1 && w.Last() == 5)
        return _("weekday");
    return ListText(w, WeekdayName, orList);
}

// The seconds or minutes field said on its own. `frequency` tells whether
// the phrase stands alone ("every 15 minutes") or needs the larger unit
// ("at minute 5" ... "of every hour").
wxString SmallUnitPhrase(const Field& f, bool seconds, bool& frequency)
{
    frequency = f.All() || f.EveryN();
    if (f.All())
        return seconds ? _("every second") : _("every minute");
    const int step = f.Step();
    if (f.EveryN())
        return Fill(seconds ? wxPLURAL("every %1$s second", "every %1$s seconds", step)
                            : wxPLURAL("every %1$s minute", "every %1$s minutes", step),
                    {Num(step)});
    if (f.Progression())
        return Fill(seconds ? wxPLURAL("every %1$s second from second %2$s to %3$s",
                                       "every %1$s seconds from second %2$s to %3$s", step)
                            : wxPLURAL("every %1$s minute from minute %2$s to %3$s",
                                       "every %1$s minutes from minute %2$s to %3$s", step),
                    {Num(step), Num(f.First()), Num(f.Last())});
    if (f.Single())
        return Fill(seconds ? _("at second %1$s") : _("at minute %1$s"), {Num(f.First())});
    return Fill(seconds ? _("at seconds %1$s") : _("at minutes %1$s"), {ListText(f, NumberName)});
}

// The hours in which `phrase` happens: none, "of every hour", the windows
// "between 09:00 and 11:59 and between 14:00 and 17:59", or a list of hours.
wxString WithinHours(const wxString& phrase, bool frequency, const Field& h)
{
    if (h.All())
        return frequency ? phrase : Fill(_("%1$s of every hour"), {phrase});
    const std::vector<std::pair<int, int>> runs = h.Runs();
    if (runs.size() <= 3) {
        std::vector<wxString> windows;
        for (const auto& run : runs)
            windows.push_back(Fill(_("between %1$s and %2$s"), {Clock(run.first, 0, 0), Clock(run.second, 59, 0)}));
        // TRANSLATORS: %1$s is how often ("every 15 minutes"), %2$s the hours ("between 09:00 and 17:59").
        return Fill(wxGETTEXT_IN_CONTEXT("time window", "%1$s %2$s"), {phrase, JoinList(windows, false)});
    }
    return Fill(_("%1$s during hours %2$s"), {phrase, ListText(h, NumberName, false, true)});
}

// The time of day. `clock` is set when it is a list of clock times, which
// reads after the days ("Every weekday at 08:30"); otherwise it is a
// frequency that reads first ("Every 15 minutes, every weekday").
wxString TimePart(const CronExpr& cex, bool& clock)
{
    const Field s(cex.seconds.to_ullong(), 0, 59), m(cex.minutes.to_ullong(), 0, 59), h(cex.hours.to_ullong(), 0, 23);
    clock = false;
    if (s.Single() && m.Single()) {
        if (s.First() == 0 && m.First() == 0 && (h.All() || h.EveryN())) {
            const int step = h.All() ? 1 : h.Step();
            return step == 1 ? _("every hour") : Fill(wxPLURAL("every %1$s hour", "every %1$s hours", step), {Num(step)});
        }
        if (h.EveryN() || h.Progression()) {
            const int step = h.Step();
            return Fill(wxPLURAL("every %1$s hour from %2$s to %3$s", "every %1$s hours from %2$s to %3$s", step),
                        {Num(step), Clock(h.First(), m.First(), s.First()), Clock(h.Last(), m.First(), s.First())});
        }
    }
    // A run of minutes within one hour is a window of clock times.
    if (s.Single() && h.Single() && !m.All() && m.Count() >= 3 && m.Runs().size() == 1)
        return Fill(_("%1$s from %2$s to %3$s"), {_("every minute"), Clock(h.First(), m.First(), s.First()),
                                                  Clock(h.First(), m.Last(), s.First())});
    if (s.Single() && !m.All() && !h.All() && m.Count() * h.Count() <= 6) {
        std::vector<wxString> times;
        for (int hour : h.values)
            for (int minute : m.values)
                times.push_back(Clock(hour, minute, s.First()));
        clock = true;
        return JoinList(times, false);
    }
    if (s.Single()) {
        bool frequency = false;
        wxString phrase = SmallUnitPhrase(m, false, frequency);
        if (s.First() != 0)
            phrase = Fill(_("%1$s, at second %2$s"), {phrase, Num(s.First())});
        return WithinHours(phrase, frequency, h);
    }
    bool frequency = false;
    const wxString phrase = SmallUnitPhrase(s, true, frequency);
    if (m.All())
        return WithinHours(frequency ? phrase : Fill(_("%1$s of every minute"), {phrase}), true, h);
    if (m.Single() && h.Single())
        return Fill(_("%1$s from %2$s to %3$s"),
                    {phrase, wxString::Format("%02d:%02d:00", h.First(), m.First()), Clock(h.First(), m.First(), 59)});
    const wxString minutes = m.Single() ? Fill(_("%1$s in minute %2$s"), {phrase, Num(m.First())})
                                        : Fill(_("%1$s in minutes %2$s"), {phrase, ListText(m, NumberName, false, true)});
    return WithinHours(minutes, false, h);
}

// Days in each month of a leap year: what a day of month can ever match.
constexpr std::array<int, 13> kLongestMonth = {0, 31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

// The days. `everyDay` is set when nothing restricts them, `conditional`
// when they end in a weekday test (the time then reads first). `note` says
// what the pattern skips ("leap years only"); `never` is set when no month
// chosen has a day chosen.
wxString DayPart(const CronExpr& cex, bool& everyDay, bool& conditional, wxString& note, bool& never)
{
    const Field d(cex.daysOfMonth.to_ullong(), 1, 31), mo(cex.months.to_ullong(), 1, 12),
        w(cex.daysOfWeek.to_ullong(), 0, 6);
    everyDay = false;
    conditional = false;
    note.clear();
    bool anyDate = false, onlyLeapDay = true, someMissing = false;
    for (int month : mo.values)
        for (int day : d.values) {
            const bool exists = day <= kLongestMonth[month];
            anyDate = anyDate || exists;
            someMissing = someMissing || !exists;
            onlyLeapDay = onlyLeapDay && (!exists || (month == 2 && day == 29));
        }
    never = !anyDate;
    if (never)
        return wxString();
    const wxString months = ListText(mo, MonthName);

    if (d.All() && w.All()) {
        everyDay = mo.All();
        return mo.All() ? _("every day") : Fill(_("every day in %1$s"), {months});
    }
    if (d.All()) {
        const wxString days = Fill(_("every %1$s"), {WeekdaysText(w, false)});
        return mo.All() ? days : Fill(_("%1$s in %2$s"), {days, months});
    }
    wxString text;
    if (mo.Single() && d.Single())
        text = Fill(_("every year on %1$s %2$s"), {MonthName(mo.First()), Num(d.First())});
    else if (mo.All())
        text = Fill(_("on the %1$s of every month"), {ListText(d, Ordinal, false, true)});
    else
        text = Fill(_("on the %1$s of %2$s"), {ListText(d, Ordinal, false, true), months});
    if (!w.All()) {
        // TRANSLATORS: %1$s is days of the month ("on the 13th of every month"), %2$s weekdays ("Friday").
        text = Fill(_("%1$s, if it is a %2$s"), {text, WeekdaysText(w, true)});
        conditional = true;
    }
    if (onlyLeapDay)
        note = _("leap years only");
    else if (someMissing)
        note = _("only in months that have that day");
    return text;
}

wxString Capitalised(wxString text)
{
    if (!text.empty())
        text[0] = wxToupper(text[0]);
    return text;
}

wxString Malformed(const wxString& reason)
{
    return Fill(_("Malformed condition: %1$s"), {reason});
}

wxString DurationText(long days, long hours, long minutes, long seconds)
{
    std::vector<wxString> parts;
    if (days)
        parts.push_back(Fill(wxPLURAL("%1$s day", "%1$s days", days), {Num(days)}));
    if (hours)
        parts.push_back(Fill(wxPLURAL("%1$s hour", "%1$s hours", hours), {Num(hours)}));
    if (minutes)
        parts.push_back(Fill(wxPLURAL("%1$s minute", "%1$s minutes", minutes), {Num(minutes)}));
    if (seconds)
        parts.push_back(Fill(wxPLURAL("%1$s second", "%1$s seconds", seconds), {Num(seconds)}));
    return JoinList(parts, false);
}

// The first `count` numbers of a condition as the kinds read them ("-" and
// junk as 0); false when it has fewer than `needed` tokens.
template <std::size_t N>
bool ReadNumbers(const wxString& condition, std::array<long, N>& out, std::size_t needed)
{
    const std::vector<wxString> tokens = SplitConditionTokens(condition);
    for (std::size_t i = 0; i < N && i < tokens.size(); ++i)
        out[i] = LeadingLong(tokens[i]);
    return tokens.size() >= needed;
}

wxString OnceAt(const wxDateTime& moment)
{
    return Fill(_("Once, on %1$s at %2$s"),
                {moment.Format("%Y-%m-%d"), Clock(moment.GetHour(), moment.GetMinute(), moment.GetSecond())});
}

}  // namespace

wxString MonthName(int month)
{
    static const char* const kNames[] = {wxTRANSLATE("January"), wxTRANSLATE("February"), wxTRANSLATE("March"),
                                         wxTRANSLATE("April"),   wxTRANSLATE("May"),      wxTRANSLATE("June"),
                                         wxTRANSLATE("July"),    wxTRANSLATE("August"),   wxTRANSLATE("September"),
                                         wxTRANSLATE("October"), wxTRANSLATE("November"), wxTRANSLATE("December")};
    return wxGetTranslation(kNames[month - 1]);
}

wxString WeekdayName(int weekday)
{
    static const char* const kNames[] = {wxTRANSLATE("Sunday"),   wxTRANSLATE("Monday"), wxTRANSLATE("Tuesday"),
                                         wxTRANSLATE("Wednesday"), wxTRANSLATE("Thursday"), wxTRANSLATE("Friday"),
                                         wxTRANSLATE("Saturday")};
    return wxGetTranslation(kNames[weekday]);
}

wxString DescribeCron(const wxString& expression)
{
    CronExpr cex;
    try {
        // The same conversion as the trigger's own parse.
        cex = ParseCronExpr(expression.ToStdString());
    } catch (const cron::bad_cronexpr& e) {
        return Malformed(wxGetTranslation(wxString(e.what())));
    }
    bool everyDay = false, conditional = false, never = false, clock = false;
    wxString note;
    const wxString days = DayPart(cex, everyDay, conditional, note, never);
    if (never)
        return _("Never fires: none of the chosen months has the chosen day");
    wxString time = TimePart(cex, clock);
    wxString sentence;
    if (clock && !conditional) {
        // TRANSLATORS: %1$s is the days ("every weekday"), %2$s clock times ("08:00 and 08:30").
        sentence = Fill(_("%1$s at %2$s"), {days, time});
    } else {
        if (clock)
            time = Fill(_("at %1$s"), {time});
        // TRANSLATORS: %1$s is the time of day ("every 15 minutes"), %2$s the days ("every weekday").
        sentence = everyDay ? time : Fill(wxGETTEXT_IN_CONTEXT("time and days", "%1$s, %2$s"), {time, days});
    }
    if (!note.empty())
        sentence = Fill(_("%1$s (%2$s)"), {sentence, note});
    return Capitalised(sentence);
}

wxString DescribeTrigger(std::uint32_t kind, const wxString& condition)
{
    if (IsCronDrivenType(kind))
        return DescribeCron(condition);
    switch (kind) {
    case NTriggerTypeSpecTime: {
        wxDateTime moment = DefaultPeriodStart();
        if (!ReadDateTimeText(condition, moment))
            return Malformed(_("a moment needs seven numbers"));
        return OnceAt(moment);
    }
    case NTriggerTypeCountDown: {
        std::array<long, 10> n{};
        if (!ReadNumbers(condition, n, 6))
            return Malformed(_("a count-down needs at least six numbers"));
        // Its year stands at position 5, as the trigger reads it.
        wxDateTime moment = DefaultPeriodStart();
        ReadDateTimeText(wxString::Format("%ld %ld %ld %ld %ld * %ld", n[0], n[1], n[2], n[3], n[4], n[5]), moment);
        const wxString duration = DurationText(static_cast<int>(n[6]), static_cast<int>(n[7]), static_cast<int>(n[8]),
                                               static_cast<int>(n[9]));
        return duration.empty() ? OnceAt(moment)
                                : Fill(_("%1$s (a count-down of %2$s)"), {OnceAt(moment), duration});
    }
    case NTriggerTypeWithStart: {
        std::array<long, 4> n{};
        ReadNumbers(condition, n, 0);
        for (long& v : n)
            v = static_cast<int>(v);  // the trigger keeps them as int
        // A moment before the start is missed at the first check.
        if (((static_cast<long long>(n[0]) * 24 + n[1]) * 60 + n[2]) * 60 + n[3] < 0)
            return _("Never fires: the delay after Cadrelle starts is negative");
        const wxString duration = DurationText(n[0], n[1], n[2], n[3]);
        return duration.empty() ? _("When Cadrelle starts") : Fill(_("%1$s after Cadrelle starts"), {duration});
    }
    case NTriggerTypeIdleTimeout: {
        // Positions 0, 1 and 2 (seconds, minutes, hours); a later one wins.
        const std::vector<wxString> tokens = SplitConditionTokens(condition);
        int unit = -1;
        long amount = -1;
        for (std::size_t position = 0; position < 3 && position < tokens.size(); ++position) {
            if (tokens[position] != "-") {
                unit = static_cast<int>(position);
                amount = static_cast<int>(LeadingLong(tokens[position]));
            }
        }
        if (unit < 0 || amount <= 0)
            return _("Never fires: the idle time is not a positive number");
        const wxString idle = unit == 0 ? DurationText(0, 0, 0, amount)
                              : unit == 1 ? DurationText(0, 0, amount, 0)
                                          : DurationText(0, amount, 0, 0);
        return Fill(_("After %1$s without keyboard or mouse input"), {idle});
    }
    default:
        return wxString();
    }
}
