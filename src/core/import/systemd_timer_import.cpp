#include "core/import/systemd_timer_import.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <sstream>

#include <wx/dir.h>
#include <wx/ffile.h>
#include <wx/filefn.h>
#include <wx/utils.h>

#include "core/cron/cron_expr.h"

namespace {

std::string Lower(std::string text)
{
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

std::string Trim(const std::string& text)
{
    const std::size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string::npos)
        return std::string();
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

std::string Replaced(std::string text, const std::string& from, const std::string& to)
{
    for (std::size_t pos = 0; (pos = text.find(from, pos)) != std::string::npos; pos += to.size())
        text.replace(pos, from.size(), to);
    return text;
}

struct Entry {
    int line;
    std::string section;
    std::string key;
    std::string value;
};

// The key=value lines of a unit file with their section and line number;
// false with the reason for a line that is neither.
bool ReadUnit(const std::string& text, std::vector<Entry>& entries, wxString& reason)
{
    std::stringstream in(text);
    std::string raw, section;
    for (int number = 1; std::getline(in, raw); ++number) {
        const std::string line = Trim(raw);
        if (line.empty() || line[0] == '#' || line[0] == ';')
            continue;
        if (line.back() == '\\') {
            reason = wxString::Format(_("line %d: a line continued on the next is not read"), number);
            return false;
        }
        if (line.front() == '[' && line.back() == ']') {
            section = line.substr(1, line.size() - 2);
            continue;
        }
        const std::size_t equals = line.find('=');
        if (equals == std::string::npos) {
            reason = wxString::Format(_("line %d: not a setting (no \"=\")"), number);
            return false;
        }
        entries.push_back({number, section, Trim(line.substr(0, equals)), Trim(line.substr(equals + 1))});
    }
    return true;
}

// A systemd time span ("90", "5min", "1h 30min") in seconds; -1 when it has a
// unit a With Start delay cannot hold (below a second, months, years).
long long SpanSeconds(const std::string& text)
{
    static const std::map<std::string, long long> units = {
        {"", 1},        {"s", 1},        {"sec", 1},       {"second", 1},   {"seconds", 1},  {"m", 60},
        {"min", 60},    {"minute", 60},  {"minutes", 60},  {"h", 3600},     {"hr", 3600},    {"hour", 3600},
        {"hours", 3600}, {"d", 86400},   {"day", 86400},   {"days", 86400}, {"w", 604800},   {"week", 604800},
        {"weeks", 604800}};
    long long total = 0;
    std::size_t i = 0;
    bool any = false;
    while (i < text.size()) {
        while (i < text.size() && std::isspace(static_cast<unsigned char>(text[i])))
            ++i;
        if (i == text.size())
            break;
        const std::size_t digits = i;
        while (i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])))
            ++i;
        if (digits == i || i - digits > 9)
            return -1;
        const long long n = std::stoll(text.substr(digits, i - digits));
        const std::size_t unit = i;
        while (i < text.size() && std::isalpha(static_cast<unsigned char>(text[i])))
            ++i;
        const auto found = units.find(Lower(text.substr(unit, i - unit)));
        if (found == units.end())
            return -1;
        total += n * found->second;
        any = true;
    }
    return any ? total : -1;
}

}  // namespace

std::string OnCalendarCondition(const std::string& written, wxString& reason)
{
    static const std::map<std::string, std::string> shorthands = {
        {"minutely", "0 * * * * *"},       {"hourly", "0 0 * * * *"},         {"daily", "0 0 0 * * *"},
        {"weekly", "0 0 0 ? * 1"},         {"monthly", "0 0 0 1 * ?"},        {"yearly", "0 0 0 1 1 ?"},
        {"annually", "0 0 0 1 1 ?"},       {"quarterly", "0 0 0 1 1,4,7,10 ?"}, {"semiannually", "0 0 0 1 1,7 ?"}};
    const std::string value = Trim(written);
    const auto shorthand = shorthands.find(Lower(value));
    std::string condition;
    if (shorthand != shorthands.end()) {
        condition = shorthand->second;
    } else {
        std::string weekday, date = "*-*-*", time = "00:00:00";
        std::stringstream words(value);
        std::string word;
        int count = 0;
        while (words >> word) {
            ++count;
            if (word.find(':') != std::string::npos)
                time = word;
            else if (word.find('-') != std::string::npos && std::isalpha(static_cast<unsigned char>(word[0])) == 0)
                date = word;
            else if (count == 1 && std::isalpha(static_cast<unsigned char>(word[0])))
                weekday = word;
            else {
                reason = wxString::Format(_("\"%s\" in OnCalendar=%s: a time zone or a form a Cron trigger cannot "
                                            "say"),
                                          wxString::FromUTF8(word), wxString::FromUTF8(value));
                return std::string();
            }
        }
        std::vector<std::string> d, t;
        for (std::stringstream parts(date); std::getline(parts, word, '-');)
            d.push_back(word);
        for (std::stringstream parts(time); std::getline(parts, word, ':');)
            t.push_back(word);
        if (d.size() == 3 && d[0] != "*") {
            reason = wxString::Format(_("OnCalendar=%s names a year, which a Cron trigger has no field for"),
                                      wxString::FromUTF8(value));
            return std::string();
        }
        if (d.size() == 3)
            d.erase(d.begin());
        if (t.size() == 2)
            t.push_back("00");
        if (d.size() != 2 || t.size() != 3 || date.find('~') != std::string::npos ||
            t[2].find('.') != std::string::npos) {
            reason = wxString::Format(_("OnCalendar=%s: a form a Cron trigger cannot say exactly"),
                                      wxString::FromUTF8(value));
            return std::string();
        }
        // Weekday names of any length: the first three letters of each.
        std::string days;
        for (std::size_t i = 0; i < weekday.size();) {
            if (std::isalpha(static_cast<unsigned char>(weekday[i]))) {
                days += weekday.substr(i, 3);
                while (i < weekday.size() && std::isalpha(static_cast<unsigned char>(weekday[i])))
                    ++i;
            } else {
                days += weekday[i++];
            }
        }
        days = CronNamesAsNumbers(Replaced(days, "..", "-"), true);
        const auto field = [](const std::string& f) { return Replaced(f, "..", "-"); };
        const std::string dom = field(d[1]);
        condition = field(t[2]) + " " + field(t[1]) + " " + field(t[0]) + " " + dom + " " + field(d[0]) + " " +
                    (days.empty() ? (dom == "*" ? "*" : "?") : days);
    }
    try {
        ParseCronExpr(condition);
    } catch (const cron::bad_cronexpr& e) {
        reason = wxString::Format(_("OnCalendar=%s is not valid: %s"), wxString::FromUTF8(value),
                                  TranslateFromAnyThread(e.what()));
        return std::string();
    }
    return condition;
}

CrontabLine TranslateSystemdTimer(const std::string& timerName, const std::string& timerText,
                                  const std::string& serviceText, bool serviceFound)
{
    CrontabLine result;
    result.source = wxString::FromUTF8(timerName);
    result.text = result.source;
    result.fate = CrontabLine::Fate::Refused;
    const std::string service = timerName.substr(0, timerName.rfind('.')) + ".service";
    std::vector<Entry> timer, unit;
    if (!ReadUnit(timerText, timer, result.reason))
        return result;
    if (!serviceFound) {
        result.reason = wxString::Format(_("%s was not found"), wxString::FromUTF8(service));
        return result;
    }
    wxString serviceReason;
    if (!ReadUnit(serviceText, unit, serviceReason)) {
        result.reason = wxString::FromUTF8(service) + ", " + serviceReason;
        return result;
    }
    const auto refuse = [&result](const Entry& e, const wxString& why) {
        result.reason = wxString::Format(_("line %d: %s=%s: %s"), e.line, wxString::FromUTF8(e.key),
                                         wxString::FromUTF8(e.value), why);
        return result;
    };
    std::vector<std::pair<int, std::string>> calendars;
    for (const Entry& e : timer) {
        if (e.section == "Unit" || e.section == "Install") {
            if (e.key == "Description")
                result.description = wxString::FromUTF8(e.value);
        } else if (e.section != "Timer") {
            return refuse(e, _("an unknown section"));
        } else if (e.key == "OnCalendar") {
            if (e.value.empty())
                calendars.clear();  // an empty assignment resets the list, as systemd reads it
            else
                calendars.emplace_back(e.line, e.value);
        } else if (e.key == "OnBootSec" || e.key == "OnStartupSec") {
            const long long s = SpanSeconds(e.value);
            if (s < 0 || result.atStart)
                return refuse(e, result.atStart ? wxString(_("a second delay after start"))
                                                : wxString(_("not a time span in seconds, minutes, hours, days or "
                                                             "weeks")));
            result.atStart = true;
            result.startDelay = wxString::Format("%lld %lld %lld %lld", s / 86400, s / 3600 % 24, s / 60 % 60, s % 60);
        } else if (e.key == "Persistent" || e.key == "AccuracySec" || (e.key == "Unit" && e.value == service)) {
            // Persistent: Cadrelle's own "run missed firings" setting decides;
            // AccuracySec: Cadrelle fires at the second anyway.
        } else {
            return refuse(e, _("no Cadrelle trigger does this"));
        }
    }
    std::string command;
    for (const Entry& e : unit) {
        if (e.section == "Unit" || e.section == "Install") {
            if (e.key == "Description" && result.description.empty())
                result.description = wxString::FromUTF8(e.value);
        } else if (e.section == "Service" && e.key == "Type" && (e.value == "oneshot" || e.value == "simple" ||
                                                                   e.value == "exec")) {
        } else if (e.section == "Service" && e.key == "ExecStart" && command.empty() && !e.value.empty()) {
            command = e.value[0] == '-' ? e.value.substr(1) : e.value;
            if (command.find_first_of("$%") != std::string::npos || command.empty() ||
                std::string("@+!:").find(command[0]) != std::string::npos) {
                refuse(e, _("a command with \"$\", \"%\" or a prefix that changes how it runs"));
                result.reason = wxString::FromUTF8(service) + ", " + result.reason;
                return result;
            }
        } else {
            refuse(e, _("not brought over"));
            result.reason = wxString::FromUTF8(service) + ", " + result.reason;
            return result;
        }
    }
    if (command.empty()) {
        result.reason = wxString::Format(_("%s has no ExecStart="), wxString::FromUTF8(service));
        return result;
    }
    for (const auto& [line, value] : calendars) {
        wxString why;
        const std::string condition = OnCalendarCondition(value, why);
        if (condition.empty()) {
            result.reason = wxString::Format(_("line %d: %s"), line, why);
            result.conditions.clear();
            return result;
        }
        result.conditions.push_back(wxString::FromUTF8(condition));
    }
    if (result.conditions.empty() && !result.atStart) {
        result.reason = _("no OnCalendar=, OnBootSec= or OnStartupSec=");
        return result;
    }
    result.command = wxString::FromUTF8(command);
    if (result.description.empty())
        result.description = result.source;
    result.fate = CrontabLine::Fate::Job;
    return result;
}

wxString UserSystemdTimerFolder()
{
    wxString config;
    if (!wxGetEnv("XDG_CONFIG_HOME", &config) || config.empty())
        config = wxGetHomeDir() + "/.config";
    return config + "/systemd/user";
}

std::vector<CrontabLine> ReadSystemdTimers(const wxString& folder)
{
    std::vector<CrontabLine> timers;
    wxArrayString files;
    if (!wxDirExists(folder))
        return timers;
    wxDir::GetAllFiles(folder, &files, "*.timer", wxDIR_FILES);
    files.Sort();
    const auto read = [](const wxString& path, std::string& text) {
        if (!wxFileExists(path))
            return false;
        wxFFile file(path, "rb");
        wxString content;
        if (!file.IsOpened() || !file.ReadAll(&content, wxConvUTF8))
            return false;
        text = content.utf8_string();
        return true;
    };
    for (const wxString& path : files) {
        std::string timer, service;
        const wxString name = path.AfterLast('/');
        const bool found = read(path.BeforeLast('.') + ".service", service);
        if (!read(path, timer)) {
            CrontabLine refused;
            refused.source = refused.text = name;
            refused.fate = CrontabLine::Fate::Refused;
            refused.reason = wxString::Format(_("cannot read %s"), path);
            timers.push_back(refused);
            continue;
        }
        timers.push_back(TranslateSystemdTimer(name.utf8_string(), timer, service, found));
    }
    return timers;
}
