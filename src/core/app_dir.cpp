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

wxString InstalledShareDir(const wxString& exeDir)
{
    wxFileName dir = wxFileName::DirName(exeDir);
    dir.AppendDir("..");
    dir.AppendDir("share");
    dir.AppendDir("cadrelle");
    dir.Normalize(wxPATH_NORM_DOTS | wxPATH_NORM_ABSOLUTE);
    return dir.GetPath();
}

}  // namespace

bool IsInstalledLayout(const wxString& exeDir)
{
    const wxArrayString dirs = wxFileName::DirName(exeDir).GetDirs();
    return !dirs.empty() && dirs.Last() == "bin" && wxFileName::DirExists(InstalledShareDir(exeDir));
}

wxString ResourceDir(const wxString& exeDir)
{
    return IsInstalledLayout(exeDir) ? InstalledShareDir(exeDir) : exeDir;
}

wxString ChooseAppDir(const wxString& overrideDir, const wxString& exeDir)
{
    if (!overrideDir.empty()) {
        wxFileName dir = wxFileName::DirName(overrideDir);
        dir.MakeAbsolute();
        return dir.GetPath();
    }
    if (!exeDir.empty() && wxFileName::IsDirWritable(exeDir) && !IsInstalledLayout(exeDir))
        return exeDir;
    return wxFileName(UserDataHome(), "Cadrelle").GetFullPath();
}

wxString ExecutableDir()
{
    return wxFileName(wxStandardPaths::Get().GetExecutablePath()).GetPath();
}
