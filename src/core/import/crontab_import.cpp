#include "core/import/crontab_import.h"

#include <algorithm>
#include <set>
#include <sstream>

#include "core/cron/cron_expr.h"
#include "core/jobs/job_kinds.h"
#include "core/text_number.h"
#include "core/triggers/trigger_description.h"
#include "core/triggers/trigger_kinds.h"

namespace {

// Shell quoting in single quotes, which keep every character as it is.
std::string Quoted(const std::string& text)
{
    std::string out = "'";
    for (char c : text)
        out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

std::vector<std::string> Words(const std::string& text, std::size_t count, std::string& rest)
{
    std::vector<std::string> words;
    std::size_t pos = 0;
    while (words.size() < count) {
        pos = text.find_first_not_of(" \t", pos);
        if (pos == std::string::npos) {
            rest.clear();
            return words;
        }
        const std::size_t end = std::min(text.find_first_of(" \t", pos), text.size());
        words.push_back(text.substr(pos, end - pos));
        pos = end;
    }
    pos = text.find_first_not_of(" \t", pos);
    rest = pos == std::string::npos ? std::string() : text.substr(pos);
    return words;
}

// cron's weekday 7 is Sunday, which the engine calls 0. Empty when a 7
// stands where it cannot simply be renamed (a stepped range).
std::string WeekdaySevenAsZero(const std::string& field)
{
    std::string out;
    std::stringstream parts(field);
    std::string part;
    while (std::getline(parts, part, ',')) {
        if (!out.empty())
            out += ',';
        const std::size_t dash = part.find('-');
        if (part == "7") {
            out += "0";
        } else if (dash != std::string::npos && part.substr(dash + 1) == "7") {
            const std::string from = part.substr(0, dash);
            out += from == "7" ? "0" : from == "6" ? "6,0" : from + "-6,0";
        } else if (dash != std::string::npos && part.compare(dash + 1, 2, "7/") == 0) {
            return std::string();
        } else {
            out += part;
        }
    }
    return out;
}

// Month and weekday names (any case, three letters) as numbers, as cron
// reads them.
std::string NamesAsNumbers(const std::string& field, const char* const* names, std::size_t count, int first)
{
    std::string out;
    for (std::size_t i = 0; i < field.size();) {
        if (std::isalpha(static_cast<unsigned char>(field[i])) && i + 3 <= field.size()) {
            std::string word = field.substr(i, 3);
            for (char& c : word)
                c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
            const auto* found = std::find(names, names + count, word);
            const bool alone = i + 3 == field.size() || !std::isalpha(static_cast<unsigned char>(field[i + 3]));
            if (found != names + count && alone) {
                out += std::to_string(first + (found - names));
                i += 3;
                continue;
            }
        }
        out += field[i++];
    }
    return out;
}

const char* const kMonthNames[] = {"jan", "feb", "mar", "apr", "may", "jun",
                                   "jul", "aug", "sep", "oct", "nov", "dec"};
const char* const kWeekdayNames[] = {"sun", "mon", "tue", "wed", "thu", "fri", "sat"};

struct Nickname {
    const char* word;
    const char* condition;  // empty: @reboot
};

const Nickname kNicknames[] = {
    {"@hourly", "0 0 * * * ?"},    {"@daily", "0 0 0 * * ?"},   {"@midnight", "0 0 0 * * ?"},
    {"@weekly", "0 0 0 ? * 0"},    {"@monthly", "0 0 0 1 * ?"}, {"@yearly", "0 0 0 1 1 ?"},
    {"@annually", "0 0 0 1 1 ?"},  {"@reboot", ""},
};

bool IsName(const std::string& text)
{
    if (text.empty() || !(std::isalpha(static_cast<unsigned char>(text[0])) || text[0] == '_'))
        return false;
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; });
}

wxString FromUtf8(const std::string& text)
{
    return wxString::FromUTF8(text.data(), text.size());
}

// What the lines above a schedule line set for it.
struct Environment {
    std::vector<std::pair<std::string, std::string>> variables;
    std::string shell;
    int timeZoneLine = 0;  // the line of a CRON_TZ in force
};

// The schedule fields as the engine's conditions (one, or two when cron's
// "day of month or weekday" rule needs both); the reason when not possible.
std::vector<std::string> Conditions(std::vector<std::string> f, wxString& reason)
{
    const std::string written = f[0] + " " + f[1] + " " + f[2] + " " + f[3] + " " + f[4];
    f[3] = CronNamesAsNumbers(f[3], false);
    f[4] = CronNamesAsNumbers(f[4], true);
    for (std::size_t i = 0; i < 5; ++i) {
        if (f[i].find_first_not_of("0123456789*,-/abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ") !=
            std::string::npos) {
            reason = wxString::Format(_("the time field \"%s\" uses a form cron does not have"), FromUtf8(f[i]));
            return {};
        }
    }
    const std::string weekday = WeekdaySevenAsZero(f[4]);
    if (weekday.empty()) {
        reason = wxString::Format(_("the weekday field \"%s\" steps through 7"), FromUtf8(f[4]));
        return {};
    }
    const std::string head = "0 " + f[0] + " " + f[1] + " ";
    std::vector<std::string> conditions;
    // cron runs on a day that matches the day of month OR the weekday when
    // both are restricted (neither starts with "*"); a trigger needs both to
    // match, so such a line becomes two triggers.
    if (f[2][0] != '*' && f[4][0] != '*')
        conditions = {head + f[2] + " " + f[3] + " ?", head + "? " + f[3] + " " + weekday};
    else
        conditions = {head + f[2] + " " + f[3] + " " + weekday};
    for (const std::string& condition : conditions) {
        try {
            ParseCronExpr(condition);
        } catch (const cron::bad_cronexpr& e) {
            reason = wxString::Format(_("the schedule \"%s\" is not valid: %s"),
                                      FromUtf8(written),
                                      TranslateFromAnyThread(e.what()));
            return {};
        }
    }
    return conditions;
}

// The command as cron runs it: text after the first unescaped "%" is its
// standard input, further "%" are line breaks, "\%" is a "%"; the variables
// and SHELL of the lines above apply.
std::string JobCommand(const std::string& written, const Environment& env)
{
    std::string command;
    std::vector<std::string> input;
    bool inInput = false;
    for (std::size_t i = 0; i < written.size(); ++i) {
        std::string& target = inInput ? input.back() : command;
        if (written[i] == '\\' && i + 1 < written.size() && written[i + 1] == '%') {
            target += '%';
            ++i;
        } else if (written[i] == '%') {
            inInput = true;
            input.emplace_back();
        } else {
            target += written[i];
        }
    }
    if (env.variables.empty() && env.shell.empty() && !inInput)
        return command;
    std::string out;
    if (inInput) {
        out = "printf '%s\\n'";
        for (const std::string& line : input)
            out += " " + Quoted(line);
        out += " | ";
    }
    if (!env.variables.empty()) {
        out += "env";
        for (const auto& [name, value] : env.variables)
            out += " " + name + "=" + Quoted(value);
        out += " ";
    }
    return out + (env.shell.empty() ? std::string("/bin/sh") : env.shell) + " -c " + Quoted(command);
}

void ReadEnvironmentLine(CrontabLine& line, const std::string& name, std::string value, Environment& env)
{
    if (value.size() >= 2 && (value[0] == '"' || value[0] == '\'') && value.back() == value[0])
        value = value.substr(1, value.size() - 2);
    line.fate = CrontabLine::Fate::Environment;
    if (name == "MAILTO" || name == "MAILFROM") {
        if (!value.empty()) {
            line.fate = CrontabLine::Fate::Refused;
            line.reason = _("Cadrelle does not mail a job's output: it shows in the job's terminal window");
        } else {
            line.reason = _("no mail: nothing to do");
        }
    } else if (name == "CRON_TZ") {
        env.timeZoneLine = value.empty() ? 0 : line.number;
        line.fate = value.empty() ? CrontabLine::Fate::Environment : CrontabLine::Fate::Refused;
        line.reason = value.empty() ? wxString(_("the local time zone: nothing to do"))
                                    : wxString(_("Cadrelle runs jobs in the local time zone only; "
                                                 "the schedule lines below it are not imported"));
    } else if (value.find('$') != std::string::npos) {
        line.fate = CrontabLine::Fate::Refused;
        line.reason = _("the value holds \"$\", which a job's command cannot keep (the data file divides "
                        "parameters at \"$\")");
    } else if (name == "SHELL") {
        env.shell = value;
        line.reason = wxString::Format(_("the commands below run with %s"), FromUtf8(value));
    } else {
        auto it = std::find_if(env.variables.begin(), env.variables.end(),
                               [&name](const auto& v) { return v.first == name; });
        if (it != env.variables.end())
            it->second = value;
        else
            env.variables.emplace_back(name, value);
        line.reason = wxString::Format(_("the commands below get %s"), FromUtf8(name + "=" + value));
    }
}

wxString Shortened(const std::string& text)
{
    const wxString wide = FromUtf8(text);
    return wide.length() > 80 ? wide.Left(79) + wxString::FromUTF8("\xE2\x80\xA6") : wide;
}

}  // namespace

std::string CronNamesAsNumbers(const std::string& field, bool weekday)
{
    return weekday ? NamesAsNumbers(field, kWeekdayNames, 7, 0) : NamesAsNumbers(field, kMonthNames, 12, 1);
}

std::vector<CrontabLine> TranslateCrontab(const std::string& text)
{
    std::vector<CrontabLine> lines;
    Environment env;
    std::stringstream in(text);
    std::string raw;
    int number = 0;
    while (std::getline(in, raw)) {
        ++number;
        if (!raw.empty() && raw.back() == '\r')
            raw.pop_back();
        CrontabLine line;
        line.number = number;
        line.text = FromUtf8(raw);
        const std::size_t first = raw.find_first_not_of(" \t");
        const std::string body = first == std::string::npos ? std::string() : raw.substr(first);
        const std::size_t equals = body.find('=');
        std::string rest;
        if (body.empty() || body[0] == '#') {
            line.fate = CrontabLine::Fate::Ignored;
        } else if (equals != std::string::npos && IsName(Trimmed(FromUtf8(body.substr(0, equals))).utf8_string())) {
            ReadEnvironmentLine(line, Trimmed(FromUtf8(body.substr(0, equals))).utf8_string(),
                                Trimmed(FromUtf8(body.substr(equals + 1))).utf8_string(), env);
        } else {
            line.fate = CrontabLine::Fate::Refused;
            std::string command;
            if (body[0] == '@') {
                const std::vector<std::string> word = Words(body, 1, command);
                const Nickname* nick = std::find_if(std::begin(kNicknames), std::end(kNicknames),
                                                    [&word](const Nickname& n) { return word[0] == n.word; });
                if (nick == std::end(kNicknames)) {
                    line.reason = wxString::Format(_("\"%s\" is not a schedule cron knows"), FromUtf8(word[0]));
                } else if (nick->condition[0] == '\0') {
                    line.atStart = true;
                    line.fate = CrontabLine::Fate::Job;
                } else {
                    line.conditions.push_back(nick->condition);
                    line.fate = CrontabLine::Fate::Job;
                }
            } else {
                const std::vector<std::string> fields = Words(body, 5, command);
                if (fields.size() < 5) {
                    line.reason = _("a schedule line needs five time fields and a command");
                } else {
                    for (const std::string& c : Conditions(fields, line.reason))
                        line.conditions.push_back(c);
                    if (!line.conditions.empty())
                        line.fate = CrontabLine::Fate::Job;
                }
            }
            if (line.fate == CrontabLine::Fate::Job) {
                const std::string run = JobCommand(command, env);
                if (command.empty()) {
                    line.reason = _("a schedule line needs five time fields and a command");
                } else if (env.timeZoneLine > 0) {
                    line.reason = wxString::Format(_("CRON_TZ on line %d asks for another time zone"),
                                                   env.timeZoneLine);
                } else if (run.find('$') != std::string::npos) {
                    line.reason = _("the command holds \"$\", which a job's command cannot keep (the data file "
                                    "divides parameters at \"$\"); put it in a script and import a line that "
                                    "runs the script");
                } else {
                    line.command = FromUtf8(run);
                    line.description = Shortened(command);
                }
                if (line.command.empty()) {
                    line.fate = CrontabLine::Fate::Refused;
                    line.conditions.clear();
                    line.atStart = false;
                }
            }
        }
        lines.push_back(std::move(line));
    }
    return lines;
}

std::vector<JobEdit> CrontabJobEdits(const std::vector<CrontabLine>& lines, const Scheduler& scheduler)
{
    std::set<std::int32_t> jids;
    std::set<std::int64_t> tids;
    {
        const auto lock = scheduler.ReadLock();
        for (const Scheduler::JobPtr& job : scheduler.Jobs())
            jids.insert(job->GetId());
    }
    std::vector<JobEdit> edits;
    std::int32_t jid = 0;
    for (const CrontabLine& line : lines) {
        if (line.fate != CrontabLine::Fate::Job)
            continue;
        while (jids.count(jid))
            ++jid;
        jids.insert(jid);
        JobEdit edit;
        edit.job.id = jid;
        edit.job.type = NJobTypeExecDosCommand;
        edit.job.description = line.description;
        edit.job.params = {line.command};
        std::vector<std::pair<std::uint32_t, wxString>> triggers;
        if (line.atStart)
            triggers.emplace_back(NTriggerTypeWithStart, line.startDelay + " - -");
        for (const wxString& condition : line.conditions)
            triggers.emplace_back(NTriggerTypeCron, condition);
        for (const auto& [type, condition] : triggers) {
            TriggerParam trigger;
            trigger.tid = scheduler.UnusedTid(tids);
            tids.insert(trigger.tid);
            trigger.type = type;
            trigger.condition = condition;
            trigger.prevFire = trigger.nextFire = trigger.start = "0 0 0 1 1 * 1999";
            trigger.end = "59 59 23 31 12 * 2999";
            edit.job.triggerIds.push_back(trigger.tid);
            edit.triggers.push_back(trigger);
        }
        edits.push_back(std::move(edit));
    }
    return edits;
}

wxString DescribeCrontabLine(const CrontabLine& line)
{
    switch (line.fate) {
    case CrontabLine::Fate::Job: {
        wxString when;
        if (line.atStart)
            when = DescribeTrigger(NTriggerTypeWithStart, line.startDelay + " - -");
        for (const wxString& condition : line.conditions)
            when += (when.empty() ? "" : _(", or ")) + DescribeCron(condition);
        if (!line.source.empty())
            return wxString::Format(_("%s: job \"%s\", %s"), line.source, line.command, when);
        return wxString::Format(_("line %d: job \"%s\", %s"), line.number, line.command, when);
    }
    case CrontabLine::Fate::Environment:
        return wxString::Format(_("line %d: %s"), line.number, line.reason);
    case CrontabLine::Fate::Ignored:
        return wxString::Format(_("line %d: blank or comment, nothing to do"), line.number);
    case CrontabLine::Fate::Refused:
        break;
    }
    if (!line.source.empty())
        return wxString::Format(_("%s: not imported: %s"), line.source, line.reason);
    return wxString::Format(_("line %d: not imported: %s"), line.number, line.reason);
}

std::string CommentOutImported(const std::string& text, const std::vector<CrontabLine>& lines)
{
    std::set<int> imported;
    for (const CrontabLine& line : lines)
        if (line.fate == CrontabLine::Fate::Job)
            imported.insert(line.number);
    std::string out;
    std::size_t start = 0;
    for (int number = 1; start < text.size(); ++number) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        if (imported.count(number))
            out += "#cadrelle: ";
        out += text.substr(start, end - start);
        if (end < text.size())
            out += '\n';
        start = end + 1;
    }
    return out;
}
