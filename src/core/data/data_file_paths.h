#pragma once
// Where the data files live: data/data1.xml (working copy) and data/data2.xml
// (fallback copy) under the application folder.

#include <wx/datetime.h>
#include <wx/string.h>

struct DataFilePaths {
    wxString appDir;
    wxString dataDir;
    wxString working;
    wxString fallback;
};

DataFilePaths MakeDataFilePaths(const wxString& appDir);

// Where the original of a file we could not fully use is kept before any
// save can overwrite it: data1.xml -> data1.xml.bad-20261122-143000 (with
// -2, -3, ... when that name is taken). Also the preferences' kept copies.
wxString KeptCopyName(const wxString& path, const wxDateTime& now);
