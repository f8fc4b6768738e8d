#pragma once
// `cadrelle --headless`: the whole scheduler without a window, until SIGINT
// or SIGTERM.

#include <wx/string.h>

// Returns the process exit status.
int RunHeadless(const wxString& appDir);
