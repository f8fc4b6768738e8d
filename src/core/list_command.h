#pragma once
// `cadrelle --list`: prints the jobs and triggers of a data file, tab
// separated with a header line per table. Needs no display and changes no
// file.

#include <ostream>

#include <wx/string.h>

int RunListCommand(const wxString& appDir, std::ostream& out, std::ostream& err);
