#pragma once
// Handing a URL, a file, a folder, a command line or a script to the desktop.
// Any thread. Every call starts the program and returns at once: the started
// program is detached (never waited for, never left as a zombie) and outlives
// Cadrelle.

#include <wx/string.h>

struct LaunchOutcome {
    bool ok = false;
    // True when the session lacks the means (no display, no terminal, no
    // application for the type, no interpreter): the user must be told. False
    // with !ok when the target itself is wrong (a missing file).
    bool sessionLacks = false;
    // Why it failed, for the log and the message box.
    wxString reason;
    // What was started (application or program name), for the log.
    wxString started;
    // Something the log should mention although the launch worked (a
    // terminal that cannot be asked to start minimised).
    wxString note;
};

// Opens `uri` (a URL with a scheme, or file://) with the desktop's default
// application for its scheme or type.
LaunchOutcome OpenUriWithDefault(const wxString& uri);

// Opens a local file or folder with the default application for its type.
LaunchOutcome OpenPathWithDefault(const wxString& path);

// Runs `command` (the user's own shell command line) in a terminal window that
// stays open after the command ends. `minimized` asks the terminal to start
// iconified where it has a way to be asked.
LaunchOutcome RunCommandInTerminal(const wxString& command, bool minimized);

// Runs a script file by its interpreter, never by opening it in an editor.
LaunchOutcome RunScriptFile(const wxString& path);
