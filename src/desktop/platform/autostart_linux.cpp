#include "desktop/platform/autostart.h"

#include <cerrno>
#include <cstring>

#include <glib.h>
#include <unistd.h>

#include <wx/filename.h>
#include <wx/log.h>
#include <wx/stdpaths.h>
#include <wx/tokenzr.h>
#include <wx/utils.h>

#include "core/core_log.h"
#include "core/data/atomic_file.h"

namespace {

const char kEntryName[] = "cadrelle.desktop";

wxString ConfigHome()
{
    wxString base;
    if (!wxGetEnv("XDG_CONFIG_HOME", &base) || !wxFileName(base).IsAbsolute())
        base = wxGetHomeDir() + "/.config";
    return base;
}

// A system-wide entry of the same name keeps starting the program unless the
// user's entry hides it, so turning off must then write Hidden=true.
bool SystemEntryExists()
{
    wxString dirs;
    if (!wxGetEnv("XDG_CONFIG_DIRS", &dirs) || dirs.empty())
        dirs = "/etc/xdg";
    for (const wxString& dir : wxStringTokenize(dirs, ":"))
        if (wxFileName(dir).IsAbsolute() && wxFileExists(dir + "/autostart/" + kEntryName))
            return true;
    return false;
}

std::string EntryText(const wxString& executable, bool hidden)
{
    wxString text = "[Desktop Entry]\n"
                    "Type=Application\n"
                    "Name=Cadrelle\n"
                    "Comment=Desktop task scheduler\n";
    text << "Exec=" << DesktopExecArgument(executable) << "\n"
         << "Terminal=false\n"
         << "Hidden=" << (hidden ? "true" : "false") << "\n"
         << "X-GNOME-Autostart-enabled=true\n";
    return text.utf8_string();
}

bool WriteEntry(const wxString& executable, bool hidden, wxString* error)
{
    const wxString path = AutostartEntryPath();
    return EnsurePrivateDir(wxFileName(path).GetPath(), error) &&
           WriteFileAtomically(path, EntryText(executable, hidden), error);
}

}  // namespace

wxString AutostartEntryPath()
{
    return ConfigHome() + "/autostart/" + kEntryName;
}

wxString RunningExecutablePath()
{
    return wxStandardPaths::Get().GetExecutablePath();
}

wxString DesktopExecArgument(const wxString& path)
{
    static const wxString reserved = " \t\n\"'\\><~|&;$*?#()`";
    bool quote = false;
    for (wxUniChar c : path)
        quote |= reserved.Find(c) != wxNOT_FOUND;
    wxString arg;
    if (quote) {
        arg = "\"";
        for (wxUniChar c : path) {
            if (c == '"' || c == '`' || c == '$' || c == '\\')
                arg += '\\';
            arg += c;
        }
        arg += "\"";
    } else {
        arg = path;
    }
    // Field codes start with %; then the escapes of any string value.
    wxString value;
    for (wxUniChar c : arg) {
        if (c == '%')
            value += "%%";
        else if (c == '\\')
            value += "\\\\";
        else if (c == '\n')
            value += "\\n";
        else if (c == '\t')
            value += "\\t";
        else if (c == '\r')
            value += "\\r";
        else
            value += c;
    }
    return value;
}

bool IsAutostartEnabled()
{
    GKeyFile* file = g_key_file_new();
    bool enabled = false;
    if (g_key_file_load_from_file(file, AutostartEntryPath().utf8_str(), G_KEY_FILE_NONE, nullptr)) {
        auto flag = [&](const char* key, bool absent) {
            GError* error = nullptr;
            const gboolean value = g_key_file_get_boolean(file, G_KEY_FILE_DESKTOP_GROUP, key, &error);
            if (error) {
                g_error_free(error);
                return absent;
            }
            return value != FALSE;
        };
        enabled = g_key_file_has_group(file, G_KEY_FILE_DESKTOP_GROUP) && !flag("Hidden", false) &&
                  flag("X-GNOME-Autostart-enabled", true);
    }
    g_key_file_free(file);
    return enabled;
}

bool SetAutostart(bool enabled, const wxString& executable)
{
    wxString error;
    bool ok = false;
    if (enabled) {
        ok = wxFileName(executable).IsAbsolute() && WriteEntry(executable, false, &error);
        if (!ok) {
            wxLogMessage("%d *** RegSetValueEx - Error", LogMs());
            wxLogMessage("%d ### %s: %s", LogMs(), AutostartEntryPath(), error.empty() ? executable : error);
        }
        return ok;
    }
    if (SystemEntryExists()) {
        ok = WriteEntry(executable, true, &error);
    } else {
        ok = ::unlink(AutostartEntryPath().utf8_str()) == 0 || errno == ENOENT;
        if (!ok)
            error = wxString::FromUTF8(std::strerror(errno));
    }
    if (!ok) {
        wxLogMessage("%d *** RegDeleteValue - Error", LogMs());
        wxLogMessage("%d ### %s: %s", LogMs(), AutostartEntryPath(), error);
    }
    return ok;
}
