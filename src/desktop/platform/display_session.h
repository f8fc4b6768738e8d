#pragma once
// Whether this session can show us other programs' windows, its screen and
// take simulated input: what the window, screenshot and input jobs need.

#include <wx/string.h>

// Empty when the session has what those jobs need; otherwise a sentence that
// names what is missing (no display, a display that does not answer, a
// Wayland session), for the user and the log.
wxString DisplaySessionProblem();
