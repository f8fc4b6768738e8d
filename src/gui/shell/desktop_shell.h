#pragma once
// What keeps the program reachable while its window is hidden: the global
// hot keys, the tray icon and its menu, balloons, and the advance-notice
// windows. Owned by the main frame; main thread only.

#include <array>
#include <cstdint>

#include <wx/string.h>

class CadrelleFrame;

class DesktopShell {
public:
    // Registers the hot keys and creates the tray icon, as the preferences say.
    explicit DesktopShell(CadrelleFrame& frame);
    // Releases the hot keys and removes the tray icon.
    ~DesktopShell();
    DesktopShell(const DesktopShell&) = delete;
    DesktopShell& operator=(const DesktopShell&) = delete;

    // The frame was minimised (true) or restored (false): the tray rules.
    void OnIconize(bool minimised);
    // False when the session has no tray host: the window must then never be
    // hidden on close or minimise (the user could not get it back).
    bool CanHideWindow() const;
    void RemoveTrayIcon();
    // A balloon (desktop notification) for the user while the window is hidden.
    void ShowBalloon(const wxString& title, const wxString& text);
    // The five-minute notice of job `jid`, unless hideNotifyWnd is "1".
    void ShowAdvanceNotice(std::int32_t jid);
    // For the settings dialog: each hot key's state, and why the window
    // cannot hide (empty when it can).
    std::array<wxString, 5> HotKeyStates() const;
    wxString TrayNote() const;

private:
    CadrelleFrame& m_frame;
};
