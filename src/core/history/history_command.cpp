#include "core/history/history_command.h"

#include <wx/datetime.h>
#include <wx/filefn.h>

#include "core/history/history_db.h"
#include "core/jobs/job_kinds.h"
#include "core/text_number.h"

namespace {

constexpr std::int64_t kDefaultLimit = 100;

std::string Moment(std::int64_t ms)
{
    return ms == 0 ? std::string("-") : Utf8(wxDateTime(wxLongLong(ms)).Format("%Y-%m-%d %H:%M:%S"));
}

// One table cell: tabs and line ends would break the row.
std::string Cell(const wxString& text)
{
    std::string cell = Utf8(text);
    for (char& c : cell)
        if (c == '\t' || c == '\n' || c == '\r')
            c = ' ';
    return cell.empty() ? std::string("-") : cell;
}

std::string Duration(const RunRecord& r)
{
    if (r.startMs == 0 || r.endMs < r.startMs)
        return "-";
    return Utf8(wxString::Format("%.3f", static_cast<double>(r.endMs - r.startMs) / 1000.0));
}

bool ReadMoment(const std::string& text, std::int64_t& ms)
{
    wxDateTime moment;
    wxString::const_iterator end;
    const wxString value = wxString::FromUTF8(text);
    if (text.size() != 19 || !moment.ParseFormat(value, "%Y-%m-%d %H:%M:%S", &end) || end != value.end())
        return false;
    ms = moment.GetValue().GetValue();
    return true;
}

bool ReadWhole(const std::string& text, std::int64_t low, std::int64_t& value)
{
    long long number = 0;
    if (text.empty() || !wxString::FromUTF8(text).ToLongLong(&number) || number < low)
        return false;
    value = number;
    return true;
}

}  // namespace

bool ParseHistoryArgs(const std::vector<std::string>& args, HistoryQuery& query, std::string& error)
{
    query = HistoryQuery();
    query.limit = kDefaultLimit;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        const bool hasValue = i + 1 < args.size();
        const std::string value = hasValue ? args[i + 1] : std::string();
        std::int64_t number = 0;
        if (arg == "--failed") {
            query.outcome = OutcomeFilter::Failed;
            continue;
        }
        if (arg == "--job") {
            if (!ReadWhole(value, 0, number) || number > INT32_MAX) {
                error = Utf8(wxString::Format(_("--job needs a job id (JID), not \"%s\""), wxString::FromUTF8(value)));
                return false;
            }
            query.jid = static_cast<std::int32_t>(number);
        } else if (arg == "--since") {
            if (!ReadMoment(value, number)) {
                error = Utf8(wxString::Format(_("--since needs a local time \"YYYY-MM-DD HH:MM:SS\", not \"%s\""),
                                              wxString::FromUTF8(value)));
                return false;
            }
            query.sinceMs = number;
        } else if (arg == "--limit") {
            if (!ReadWhole(value, 1, number)) {
                error = Utf8(wxString::Format(_("--limit needs a whole number above 0, not \"%s\""),
                                              wxString::FromUTF8(value)));
                return false;
            }
            query.limit = number;
        } else {
            error = Utf8(wxString::Format(_("unknown option: %s"), wxString::FromUTF8(arg)));
            return false;
        }
        ++i;
    }
    return true;
}

std::string FormatHistoryTable(const std::vector<RunRecord>& runs)
{
    std::string text = "TIME\tJID\tJOB\tKIND\tASKED BY\tOUTCOME\tDURATION\tDETAILS\n";
    for (const RunRecord& r : runs) {
        text += Moment(r.AtMs()) + '\t' + std::to_string(r.jid) + '\t' + Cell(wxString::FromUTF8(r.description)) +
                '\t' + Cell(r.description.empty() && r.jobKind == 0 ? wxString() : JobTypeName(r.jobKind)) + '\t' +
                Cell(OriginText(r)) + '\t' + Cell(OutcomeWord(r.outcome)) + '\t' + Duration(r) + '\t' +
                Cell(RunSummary(r)) + '\n';
    }
    return text;
}

int RunHistoryCommand(const wxString& appDir, const std::vector<std::string>& args, std::ostream& out,
                      std::ostream& err)
{
    HistoryQuery query;
    std::string error;
    if (!ParseHistoryArgs(args, query, error)) {
        err << "cadrelle: " << error << "\n";
        return 2;
    }
    const wxString path = appDir + "/history.db";
    if (!wxFileExists(path)) {
        out << FormatHistoryTable({});
        return 0;
    }
    HistoryOpenResult opened = OpenHistoryDb(Utf8(path), true);
    if (!opened.db) {
        err << "cadrelle: " << Utf8(wxString::Format(_("The run history %s cannot be read: %s"), path,
                                                      wxString::FromUTF8(opened.error)))
            << "\n";
        return 1;
    }
    out << FormatHistoryTable(QueryRuns(opened.db.get(), query));
    return 0;
}

std::string LastResultText(const std::map<std::int32_t, LastResult>& results, std::int32_t jid)
{
    const auto it = results.find(jid);
    if (it == results.end())
        return "-";
    return Cell(OutcomeWord(it->second.outcome)) + " " + Moment(it->second.atMs);
}

std::string LastFailureText(const std::optional<RunRecord>& failure)
{
    if (!failure)
        return "none";
    return Moment(failure->AtMs()) + " JID " + std::to_string(failure->jid) + " " +
           Cell(wxString::FromUTF8(failure->description)) + ": " + Cell(RunSummary(*failure));
}
