#include "gui/logic/job_form.h"
#include "core/text_number.h"

#include <optional>

#include <wx/intl.h>
#include <wx/tokenzr.h>
#include <wx/utils.h>

#include "desktop/jobs/input_jobs.h"
#include "desktop/jobs/key_names.h"
#include "desktop/jobs/network_payload.h"
#include "desktop/jobs/screenshot_job.h"
#include "desktop/jobs/window_input_jobs.h"

namespace {

// Six pieces of one or two hexadecimal digits between "-" or ":", or
// twelve digits in a row.
bool IsMacAddress(const wxString& text)
{
    if (!ParseMacAddress(text).IsValid())
        return false;
    const wxString t = Trimmed(text);
    if (t.length() == 12 && t.find_first_not_of("0123456789abcdefABCDEF") == wxString::npos)
        return true;
    wxStringTokenizer pieces(text, "-:", wxTOKEN_STRTOK);
    while (pieces.HasMoreTokens()) {
        const wxString piece = Trimmed(pieces.GetNextToken());
        if (piece.empty() || piece.length() > 2)
            return false;
        for (wxUniChar c : piece)
            if (!wxIsxdigit(c))
                return false;
    }
    return true;
}

// The check of one value by its field; false with `why` set.
bool CheckValue(const JobField& field, const wxString& value, wxString& why)
{
    const wxString v = Trimmed(value);
    if (v.empty()) {
        if (!field.required)
            return true;
        why = _("must not be empty.");
        return false;
    }
    switch (field.kind) {
    case JobFieldKind::Number: {
        const std::optional<long> n = ParseWholeNumber(v);
        if (!n || *n < field.minValue || *n > field.maxValue) {
            why = wxString::Format(_("\"%s\" is not a whole number from %ld to %ld."), v, field.minValue,
                                   field.maxValue);
            return false;
        }
        return true;
    }
    case JobFieldKind::YesNo:
        if (v != "1" && v != "0") {
            why = wxString::Format(_("\"%s\" is neither 1 (yes) nor 0 (no)."), v);
            return false;
        }
        return true;
    case JobFieldKind::KeyName:
        if (!KeyFromName(v)) {
            why = wxString::Format(_("\"%s\" is not a key name. Use a name of the key list, such as CTRL, SHIFT, "
                                     "ESCAPE, RETURN/ENTER or F5."),
                                   v);
            return false;
        }
        return true;
    case JobFieldKind::Choice: {
        for (std::size_t i = 0; i < field.choices.size(); ++i)
            if (v == field.choices[i] || v == wxString::Format("%zu", i))
                return true;
        why = wxString::Format(_("\"%s\" is not one of the choices."), v);
        return false;
    }
    default: return true;
    }
}

}  // namespace

bool IsUrl(const wxString& text)
{
    const wxString t = Trimmed(text);
    const int colon = t.Find("://");
    if (colon <= 0 || t.find_first_of(" \t\r\n") != wxString::npos)
        return false;
    for (wxUniChar c : t.Left(colon))
        if (!(wxIsalnum(c) || c == '+' || c == '-' || c == '.'))
            return false;
    // "file:///x" has an empty host; every other scheme needs one.
    const wxString rest = t.Mid(colon + 3);
    return t.Left(colon).Lower() == "file" ? rest.StartsWith("/") : !rest.empty() && !rest.StartsWith("/");
}

wxString UrlWithScheme(const wxString& text)
{
    const wxString t = Trimmed(text);
    if (t.empty() || t.Contains("://") || t.find_first_of(" \t\r\n") != wxString::npos)
        return wxString();
    // A host name first: letters, digits, dots, hyphens and a port.
    const wxString host = t.BeforeFirst('/');
    if (host.empty() || !(host.Contains(".") || host.BeforeFirst(':').Lower() == "localhost"))
        return wxString();
    for (wxUniChar c : host)
        if (!(wxIsalnum(c) || c == '.' || c == '-' || c == ':' || c.GetValue() > 127))
            return wxString();
    return "https://" + t;
}

bool ValidateJobParams(std::uint32_t kind, const ParamList& params, wxString& message)
{
    const std::vector<JobField> fields = JobFieldsFor(kind);
    auto valueAt = [&params](std::size_t i) { return i < params.size() ? Trimmed(params[i]) : wxString(); };
    auto fail = [&message](const wxString& label, const wxString& why) {
        message = wxString::Format("%s: %s", label, why);
        return false;
    };
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const wxString value = valueAt(i);
        // "$" separates the stored parameters: inside one it would split it.
        if (value.Find('$') != wxNOT_FOUND)
            return fail(fields[i].label, _("the sign \"$\" cannot be used here."));
        wxString why;
        if (!CheckValue(fields[i], value, why))
            return fail(fields[i].label, why);
    }
    switch (kind) {
    case NJobTypeAutoScreenshot: {
        wxString problem;
        // Checked even while Capture Range is off: it is kept for later.
        if (!ScreenshotRect(1920, 1080, valueAt(2), "1", valueAt(4), problem))
            return fail(fields[4].label, problem);
        break;
    }
    case NJobTypeSendUdpMsg:
        if (SplitAddressList(valueAt(3)).empty())
            return fail(fields[3].label, _("give at least one address."));
        break;
    case NJobTypeWakeOnLan:
        if (!IsMacAddress(valueAt(0)))
            return fail(fields[0].label,
                        wxString::Format(_("\"%s\" is not a MAC address: give six pairs of hexadecimal digits, "
                                           "such as aa:bb:cc:dd:ee:ff."),
                                         valueAt(0)));
        break;
    case NJobTypeOpenUrl:
    case NJobTypeRefreshUrl:
        if (!IsUrl(valueAt(0)))
            return fail(fields[0].label,
                        wxString::Format(_("\"%s\" is not a web address such as https://www.example.com/."),
                                         valueAt(0)));
        break;
    case NJobTypeSendKey:
        // The stored line drops an empty key, so a gap would move Key 3 up.
        if (valueAt(1).empty() && !valueAt(2).empty())
            return fail(fields[1].label, _("fill Key 2 before Key 3."));
        break;
    case NJobTypeKeyTyping:
        for (std::size_t i : {0u, 2u})
            if (!ParsePoint(valueAt(i)))
                return fail(fields[i].label,
                            wxString::Format(_("\"%s\" is not a point x,y of two whole numbers."), valueAt(i)));
        break;
    case NJobTypeMouseClick: {
        std::vector<ScreenPoint> points;
        wxString bad;
        if (!ParsePointList(valueAt(0), points, bad))
            return fail(fields[0].label,
                        wxString::Format(_("\"%s\" is not a point x,y of two whole numbers."), bad));
        break;
    }
    default: break;
    }
    return true;
}

bool ValidateChain(const wxString& intervalText, const wxString& jidsText, std::int32_t self,
                   const std::function<bool(std::int32_t)>& exists, std::int32_t& interval, IdList& jids,
                   wxString& message)
{
    const std::optional<long> ms = ParseWholeNumber(Trimmed(intervalText).empty() ? wxString("0") : intervalText);
    if (!ms || *ms < 0 || *ms > kMaxJobIntervalMs) {
        message = wxString::Format(_("Please set Interval value in 0 ~ %zd."), static_cast<std::size_t>(kMaxJobIntervalMs));
        return false;
    }
    interval = static_cast<std::int32_t>(*ms);
    jids.clear();
    wxStringTokenizer pieces(jidsText, ",", wxTOKEN_STRTOK);
    while (pieces.HasMoreTokens()) {
        const wxString piece = Trimmed(pieces.GetNextToken());
        if (piece.empty())
            continue;
        const std::optional<long> jid = ParseWholeNumber(piece);
        if (!jid || *jid < 0) {
            message = wxString::Format(_("Associated JID: \"%s\" is not a job number."), piece);
            return false;
        }
        if (*jid == self) {
            message = wxString::Format(_("Associated JID: %ld is this job itself; it would run for ever."), *jid);
            return false;
        }
        if (!exists(static_cast<std::int32_t>(*jid))) {
            message = wxString::Format(_("Associated JID: there is no job %ld."), *jid);
            return false;
        }
        jids.push_back(static_cast<std::int32_t>(*jid));
    }
    return true;
}
