#include "core/app_dir.h"

#include <wx/filename.h>
#include <wx/stdpaths.h>
#include <wx/utils.h>

namespace {

wxString UserDataHome()
{
    wxString xdg;
    if (wxGetEnv("XDG_DATA_HOME", &xdg) && wxFileName(xdg).IsAbsolute())
        return xdg;
    wxFileName dir = wxFileName::DirName(wxGetHomeDir());
    dir.AppendDir(".local");
    dir.AppendDir("share");
    return dir.GetPath();
}

}  // namespace

wxString ChooseAppDir(const wxString& overrideDir, const wxString& exeDir)
{
    if (!overrideDir.empty()) {
        wxFileName dir = wxFileName::DirName(overrideDir);
        dir.MakeAbsolute();
        return dir.GetPath();
    }
    if (!exeDir.empty() && wxFileName::IsDirWritable(exeDir))
        return exeDir;
    return wxFileName(UserDataHome(), "Cadrelle").GetFullPath();
}

wxString ExecutableDir()
{
    return wxFileName(wxStandardPaths::Get().GetExecutablePath()).GetPath();
}
