#pragma once
// The application folder holds data/ and the log files: the executable's
// folder when it is writable (a portable install), otherwise
// $XDG_DATA_HOME/Cadrelle; --app-dir overrides both.

#include <wx/string.h>

wxString ChooseAppDir(const wxString& overrideDir, const wxString& exeDir);

// The folder of the running executable (wxBase must be initialised).
wxString ExecutableDir();
