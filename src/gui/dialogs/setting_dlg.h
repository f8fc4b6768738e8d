#pragma once
// The settings dialog.

#include <array>

#include <wx/string.h>

class wxWindow;

// What the dialog shows about this session besides the preferences.
struct SettingDlgContext {
    // Per hot key, in the order restore, pause, custom 1, 2, 3: "registered",
    // "taken by another program" or "not available in this session" (shown
    // next to the key's controls).
    std::array<wxString, 5> hotKeyStates;
    // Empty when the window can hide to a tray; otherwise why it cannot.
    wxString trayNote;
};

// Opens the dialog modally; true when the user pressed OK and the
// preferences were stored and saved.
bool ShowSettingDlg(wxWindow* parent, const SettingDlgContext& context);
