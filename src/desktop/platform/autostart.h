#pragma once
// Starting the program with the user's session. On Linux this is the
// freedesktop autostart entry $XDG_CONFIG_HOME/autostart/cadrelle.desktop.

#include <wx/string.h>

// True when the program starts with the session: the entry exists, is not
// hidden and not disabled.
bool IsAutostartEnabled();

// Makes the program start with the session (running `executable`, an
// absolute path) or not. Failures are logged ("*** RegSetValueEx - Error"
// when turning on, "*** RegDeleteValue - Error" when turning off) and
// answered with false; the caller goes on.
bool SetAutostart(bool enabled, const wxString& executable);

// The absolute path of the running program.
wxString RunningExecutablePath();

// Rules of the Linux implementation, open to tests.
// Where the user's entry lives.
wxString AutostartEntryPath();
// `path` as one argument of an Exec= value: quoted when it holds a reserved
// character, with the escapes of the Exec key and of a string value.
wxString DesktopExecArgument(const wxString& path);
