#include "gui/frame/frame_icons.h"

#include <vector>

#include <wx/artprov.h>
#include <wx/filename.h>

#include "core/app_dir.h"

namespace {

// img/ in the application folder first (the user's own pictures), then the
// program's (<prefix>/share/cadrelle/img when installed), then the
// repository's assets the program was built from.
wxString IconFile(const wxString& appDir, const wxString& name)
{
    for (const wxString& dir : {appDir, ResourceDir(ExecutableDir())}) {
        const wxString file = dir + "/img/" + name;
        if (wxFileName::FileExists(file))
            return file;
    }
#ifdef CADRELLE_ASSET_DIR
    const wxString built = wxString(CADRELLE_ASSET_DIR) + "/" + name;
    if (wxFileName::FileExists(built))
        return built;
#endif
    return wxString();
}

}  // namespace

wxBitmapBundle ToolIcon(const wxString& appDir, const wxString& themeName, const wxString& ownName)
{
    if (!themeName.empty()) {
        wxBitmapBundle themed = wxArtProvider::GetBitmapBundle(themeName, wxART_TOOLBAR, wxSize(24, 24));
        if (themed.IsOk())
            return themed;
    }
    wxVector<wxBitmap> bitmaps;
    for (int size : {24, 48}) {
        const wxString file = IconFile(appDir, wxString::Format("%s-%d.png", ownName, size));
        if (!file.empty()) {
            wxBitmap bitmap(file, wxBITMAP_TYPE_PNG);
            if (bitmap.IsOk())
                bitmaps.push_back(bitmap);
        }
    }
    if (!bitmaps.empty())
        return wxBitmapBundle::FromBitmaps(bitmaps);
    return wxArtProvider::GetBitmapBundle(wxART_EXECUTABLE_FILE, wxART_TOOLBAR, wxSize(24, 24));
}

wxIconBundle AppIcons(const wxString& appDir)
{
    wxIconBundle icons;
    for (int size : {16, 24, 32, 48, 64, 128, 256}) {
        const wxString file = IconFile(appDir, wxString::Format("cadrelle-%d.png", size));
        if (!file.empty())
            icons.AddIcon(file, wxBITMAP_TYPE_PNG);
    }
    return icons;
}
