#pragma once
// Checks that a file is well-formed XML by feeding it to expat 1024 bytes at
// a time, before the document loader ever sees it.

#include <wx/string.h>

struct XmlCheckResult {
    bool ok = false;
    bool exists = false;
    wxString problem;  // "missing", "cannot be opened", or expat's message and line
};

XmlCheckResult CheckXmlWellFormed(const wxString& path);
