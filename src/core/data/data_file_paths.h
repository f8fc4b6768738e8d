#pragma once
// Where the data files live: data/data1.xml (working copy) and data/data2.xml
// (fallback copy) under the application folder.

#include <wx/string.h>

struct DataFilePaths {
    wxString appDir;
    wxString dataDir;
    wxString working;
    wxString fallback;
};

DataFilePaths MakeDataFilePaths(const wxString& appDir);
