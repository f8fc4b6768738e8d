#include "gui/logic/job_form.h"

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

JobField Field(const wxString& label, JobFieldKind kind, const wxString& value, bool required = true)
{
    JobField f;
    f.label = label;
    f.kind = kind;
    f.defaultValue = value;
    f.required = required;
    return f;
}

JobField NumberField(const wxString& label, long value, long minValue, long maxValue)
{
    JobField f = Field(label, JobFieldKind::Number, wxString::Format("%ld", value));
    f.minValue = minValue;
    f.maxValue = maxValue;
    return f;
}

JobField ChoiceField(const wxString& label, std::initializer_list<const char*> choices, bool storeIndex)
{
    JobField f = Field(label, JobFieldKind::Choice, wxString());
    for (const char* c : choices)
        f.choices.Add(c);
    f.storeIndex = storeIndex;
    f.defaultValue = storeIndex ? wxString("0") : f.choices[0];
    return f;
}

JobField FileField(const wxString& label, const wxString& filter)
{
    JobField f = Field(label, JobFieldKind::FilePath, wxString());
    f.fileFilter = filter;
    return f;
}

const wxString kDefaultUrl = "https://www.example.com/";

wxString Trimmed(const wxString& text)
{
    return wxString(text).Trim(true).Trim(false);
}

// Six pieces of one or two hexadecimal digits between "-".
bool IsMacAddress(const wxString& text)
{
    if (!ParseMacAddress(text).IsValid())
        return false;
    wxStringTokenizer pieces(text, "-", wxTOKEN_STRTOK);
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

std::vector<JobField> JobFieldsFor(std::uint32_t kind)
{
    const wxString home = wxGetHomeDir();
    switch (kind) {
    case NJobTypeReminder:
        return {Field(_("Message"), JobFieldKind::LongText, _("Time for a break.")),
                Field(_("Important"), JobFieldKind::YesNo, "0")};
    case NJobTypeOpenUrl:
    case NJobTypeRefreshUrl: return {Field(_("URL"), JobFieldKind::Text, kDefaultUrl)};
    case NJobTypeOpenFile: return {FileField(_("File"), _("All Files (*.*)|*.*"))};
    case NJobTypeOpenFolder: return {Field(_("Folder"), JobFieldKind::FolderPath, wxString())};
    case NJobTypeBackupFolder:
        return {Field(_("Folder"), JobFieldKind::FolderPath, wxString()),
                Field(_("Destination dir"), JobFieldKind::FolderPath, home + "/bak-by-cdrl")};
    case NJobTypeExecDosCommand: return {Field(_("Command"), JobFieldKind::Text, "ping 127.0.0.1 -t")};
    case NJobTypeExecScriptFile:
        return {FileField(_("File"), _("BAT and VBS Files (*.bat;*.vbs)|*.bat;*.vbs|All Files (*.*)|*.*"))};
    case NJobTypeAutoScreenshot:
        return {Field(_("Screenshot dir"), JobFieldKind::FolderPath, home + "/Cadrelle-Screeshots"),
                Field(_("File Prefix"), JobFieldKind::Text, "cdrl"),
                NumberField(_("DPI Scale Factor(%)"), 100, 1, 1000),
                Field(_("Capture Range"), JobFieldKind::YesNo, "0"),
                Field(_("Range Setting"), JobFieldKind::Text, "0 0 1920 1080"),
                Field(_("Notify"), JobFieldKind::YesNo, "0")};
    case NJobTypeCloseApp: return {Field(_("App title"), JobFieldKind::Text, wxString())};
    case NJobTypeSendUdpMsg:
        return {Field(_("Message"), JobFieldKind::LongText, "hello"), ChoiceField(_("Format"), {"ASCII", "HEX"}, true),
                Field(_("Broadcast"), JobFieldKind::YesNo, "0"),
                Field(_("IP Address List"), JobFieldKind::Text, "127.0.0.1;192.168.0.1"),
                NumberField(_("Port"), 7788, 1, 65535)};
    case NJobTypeSendTcpMsg:
        return {Field(_("Message"), JobFieldKind::LongText, "hello"), ChoiceField(_("Format"), {"ASCII", "HEX"}, true),
                Field(_("IP Address"), JobFieldKind::Text, "127.0.0.1"), NumberField(_("Port"), 7788, 1, 65535)};
    case NJobTypeWakeOnLan:
        return {Field(_("MAC Address"), JobFieldKind::Text, "aa-bb-cc-dd-ff-ee"), NumberField(_("Port"), 7788, 1, 65535)};
    case NJobTypeSendKey:
        return {Field(_("Key 1"), JobFieldKind::KeyName, "CTRL"), Field(_("Key 2"), JobFieldKind::KeyName, "", false),
                Field(_("Key 3"), JobFieldKind::KeyName, "", false)};
    case NJobTypeKeyTyping:
        return {Field(_("SET 1: Point"), JobFieldKind::Text, "100,100"),
                Field(_("SET 1: Text"), JobFieldKind::Text, "username"),
                Field(_("SET 2: Point"), JobFieldKind::Text, "200,200"),
                Field(_("SET 2: Text"), JobFieldKind::Text, "password"),
                NumberField(_("DPI Scale Factor(%)"), 100, 1, 1000)};
    case NJobTypeMouseClick:
        return {Field(_("Point List"), JobFieldKind::Text, "100,100"),
                NumberField(_("Click Interval(ms)"), 1000, 0, 600000),
                ChoiceField(_("Click Type"), {"Click", "Double Click"}, false),
                ChoiceField(_("Mouse Button"), {"Left Button", "Right Button"}, false),
                NumberField(_("DPI Scale Factor(%)"), 100, 1, 1000)};
    default: return {};
    }
}

ParamList DefaultJobParams(std::uint32_t kind)
{
    ParamList params;
    for (const JobField& field : JobFieldsFor(kind))
        params.push_back(field.defaultValue);
    // Empty optional values at the end are not stored (the parameter line
    // would drop them anyway).
    while (!params.empty() && params.back().empty())
        params.pop_back();
    return params;
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
                        wxString::Format(_("\"%s\" is not a MAC address such as aa-bb-cc-dd-ee-ff."), valueAt(0)));
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
