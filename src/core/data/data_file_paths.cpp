#include "core/data/data_file_paths.h"

#include <wx/filename.h>

DataFilePaths MakeDataFilePaths(const wxString& appDir)
{
    DataFilePaths paths;
    paths.appDir = appDir;
    wxFileName dir = wxFileName::DirName(appDir.empty() ? wxString(".") : appDir);
    dir.AppendDir("data");
    paths.dataDir = dir.GetPath();
    paths.working = wxFileName(paths.dataDir, "data1.xml").GetFullPath();
    paths.fallback = wxFileName(paths.dataDir, "data2.xml").GetFullPath();
    return paths;
}
