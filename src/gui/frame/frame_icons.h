#pragma once
// The pictures of the window: the desktop theme's icons where a standard one
// fits a tool, our own drawn ones (assets/icons, or img/ in the application
// folder) where none does, and the application icon in all its sizes.

#include <wx/bmpbndl.h>
#include <wx/iconbndl.h>
#include <wx/string.h>

// `themeName` is a freedesktop icon name (empty: ours only); `ownName` the
// stem of our PNGs ("tool-enable" -> tool-enable-24.png, tool-enable-48.png).
wxBitmapBundle ToolIcon(const wxString& appDir, const wxString& themeName, const wxString& ownName);
// The application icon, 16 to 256 pixels.
wxIconBundle AppIcons(const wxString& appDir);
