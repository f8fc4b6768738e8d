#include "core/jobs/job_kinds.h"

#include <initializer_list>

#include <wx/utils.h>

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

JobField PortField()
{
    return NumberField(_("Port"), 7788, 1, 65535);
}

JobField ScaleField()
{
    return NumberField(_("DPI Scale Factor(%)"), 100, 1, 1000);
}

std::vector<JobField> NoFields()
{
    return {};
}
std::vector<JobField> ReminderFields()
{
    return {Field(_("Message"), JobFieldKind::LongText, _("Time for a break.")),
            Field(_("Important"), JobFieldKind::YesNo, "0")};
}
std::vector<JobField> UrlFields()
{
    return {Field(_("URL"), JobFieldKind::Text, "https://www.example.com/")};
}
std::vector<JobField> OpenFileFields()
{
    return {FileField(_("File"), _("All Files (*.*)|*.*"))};
}
std::vector<JobField> OpenFolderFields()
{
    return {Field(_("Folder"), JobFieldKind::FolderPath, wxString())};
}
std::vector<JobField> BackupFields()
{
    return {Field(_("Folder"), JobFieldKind::FolderPath, wxString()),
            Field(_("Destination dir"), JobFieldKind::FolderPath, wxGetHomeDir() + "/bak-by-cdrl")};
}
std::vector<JobField> CommandFields()
{
    return {Field(_("Command"), JobFieldKind::Text, "ping 127.0.0.1 -t")};
}
std::vector<JobField> ScriptFields()
{
    return {FileField(_("File"), _("BAT and VBS Files (*.bat;*.vbs)|*.bat;*.vbs|All Files (*.*)|*.*"))};
}
std::vector<JobField> ScreenshotFields()
{
    return {Field(_("Screenshot dir"), JobFieldKind::FolderPath, wxGetHomeDir() + "/Cadrelle-Screeshots"),
            Field(_("File Prefix"), JobFieldKind::Text, "cdrl"),
            ScaleField(),
            Field(_("Capture Range"), JobFieldKind::YesNo, "0"),
            Field(_("Range Setting"), JobFieldKind::Text, "0 0 1920 1080"),
            Field(_("Notify"), JobFieldKind::YesNo, "0")};
}
std::vector<JobField> CloseAppFields()
{
    return {Field(_("App title"), JobFieldKind::Text, wxString())};
}
std::vector<JobField> UdpFields()
{
    return {Field(_("Message"), JobFieldKind::LongText, "hello"), ChoiceField(_("Format"), {"ASCII", "HEX"}, true),
            Field(_("Broadcast"), JobFieldKind::YesNo, "0"),
            Field(_("IP Address List"), JobFieldKind::Text, "127.0.0.1;192.168.0.1"), PortField()};
}
std::vector<JobField> TcpFields()
{
    return {Field(_("Message"), JobFieldKind::LongText, "hello"), ChoiceField(_("Format"), {"ASCII", "HEX"}, true),
            Field(_("IP Address"), JobFieldKind::Text, "127.0.0.1"), PortField()};
}
std::vector<JobField> WakeOnLanFields()
{
    return {Field(_("MAC Address"), JobFieldKind::Text, "aa-bb-cc-dd-ff-ee"), PortField()};
}
std::vector<JobField> SendKeyFields()
{
    return {Field(_("Key 1"), JobFieldKind::KeyName, "CTRL"), Field(_("Key 2"), JobFieldKind::KeyName, "", false),
            Field(_("Key 3"), JobFieldKind::KeyName, "", false)};
}
std::vector<JobField> KeyTypingFields()
{
    return {Field(_("SET 1: Point"), JobFieldKind::Text, "100,100"),
            Field(_("SET 1: Text"), JobFieldKind::Text, "username"),
            Field(_("SET 2: Point"), JobFieldKind::Text, "200,200"),
            Field(_("SET 2: Text"), JobFieldKind::Text, "password"), ScaleField()};
}
std::vector<JobField> MouseClickFields()
{
    return {Field(_("Point List"), JobFieldKind::Text, "100,100"),
            NumberField(_("Click Interval(ms)"), 1000, 0, 600000),
            ChoiceField(_("Click Type"), {"Click", "Double Click"}, false),
            ChoiceField(_("Mouse Button"), {"Left Button", "Right Button"}, false), ScaleField()};
}

// In kind order. Names are marked for the catalogue; the misspellings are
// the catalogue keys. Close App and the session and power kinds are
// announced before they run; silent mode holds back what would put
// something in front of the user (messages, opened windows, typed keys).
const JobKind kJobKinds[NJobTypeCount] = {
    {wxTRANSLATE("Reminder"), false, true, ReminderFields},
    {wxTRANSLATE("Open URL"), false, true, UrlFields},
    {wxTRANSLATE("Open File"), false, true, OpenFileFields},
    {wxTRANSLATE("Open Folder"), false, false, OpenFolderFields},
    {wxTRANSLATE("Backup Folder"), false, false, BackupFields},
    {wxTRANSLATE("Exec DOS Command"), false, true, CommandFields},
    {wxTRANSLATE("Exec Script File"), false, true, ScriptFields},
    {wxTRANSLATE("Auto Screenshot"), false, false, ScreenshotFields},
    {wxTRANSLATE("Refresh URL"), false, false, UrlFields},
    {wxTRANSLATE("Close App"), true, false, CloseAppFields},
    {wxTRANSLATE("Send UDP MSG"), false, false, UdpFields},
    {wxTRANSLATE("Send TCP MSG"), false, false, TcpFields},
    {wxTRANSLATE("Wake On Lan"), false, false, WakeOnLanFields},
    {wxTRANSLATE("Send Key"), false, true, SendKeyFields},
    {wxTRANSLATE("Key Typing"), false, true, KeyTypingFields},
    {wxTRANSLATE("Mouse Click"), false, true, MouseClickFields},
    {wxTRANSLATE("Lock Workstation"), true, false, NoFields},
    {wxTRANSLATE("Shutoff Display"), true, false, NoFields},
    {wxTRANSLATE("Empty Recyclebin"), true, false, NoFields},
    {wxTRANSLATE("Suspend"), true, false, NoFields},
    {wxTRANSLATE("Hibernates"), true, false, NoFields},
    {wxTRANSLATE("Shutdown"), true, false, NoFields},
    {wxTRANSLATE("Reboot"), true, false, NoFields},
    {wxTRANSLATE("Logoff"), true, false, NoFields},
};

}  // namespace

const JobKind* FindJobKind(std::uint32_t type)
{
    return type < NJobTypeCount ? &kJobKinds[type] : nullptr;
}

std::vector<JobField> JobFieldsFor(std::uint32_t type)
{
    const JobKind* kind = FindJobKind(type);
    return kind ? kind->fields() : std::vector<JobField>();
}

std::vector<wxString> DefaultJobParams(std::uint32_t type)
{
    std::vector<wxString> params;
    for (const JobField& field : JobFieldsFor(type))
        params.push_back(field.defaultValue);
    // Empty optional values at the end are not stored (the parameter line
    // would drop them anyway).
    while (!params.empty() && params.back().empty())
        params.pop_back();
    return params;
}
