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

wxString KeptCopyName(const wxString& path, const wxDateTime& now)
{
    const wxString stamp = now.Format("%Y%m%d-%H%M%S");
    wxString kept = path + ".bad-" + stamp;
    for (int n = 2; wxFileName::Exists(kept); ++n)
        kept = wxString::Format("%s.bad-%s-%d", path, stamp, n);
    return kept;
}
