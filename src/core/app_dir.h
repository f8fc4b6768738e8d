#pragma once
// The application folder holds data/ and the log files: the executable's
// folder when it is writable and not an installed program's bin/ (a portable
// copy), otherwise $XDG_DATA_HOME/Cadrelle; --app-dir overrides both.

#include <wx/string.h>

wxString ChooseAppDir(const wxString& overrideDir, const wxString& exeDir);

// The folder of the running executable (wxBase must be initialised).
wxString ExecutableDir();

// True when `exeDir` is <prefix>/bin of an installed program, known by its
// <prefix>/share/cadrelle folder. Such a folder is never used for data, even
// when it happens to be writable (root, or a prefix in the user's home).
bool IsInstalledLayout(const wxString& exeDir);

// The folder holding the program's own read-only files (img/):
// <prefix>/share/cadrelle when installed, else the executable's folder.
wxString ResourceDir(const wxString& exeDir);
