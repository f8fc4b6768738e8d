#pragma once
// What keeps the program reachable while its window is hidden: the global
// hot keys, the tray icon and its menu, balloons, the advance-notice
// windows, and the command-line control of the running instance. Owned by
// the main frame; main thread only.

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include <wx/string.h>

class CadrelleFrame;
class ControlServer;
class GlobalHotKeys;
class InstanceControl;
class PortalShortcuts;
class TrayIcon;

class DesktopShell {
public:
    // Registers the hot keys, creates the tray icon as the preferences say,
    // and starts answering `cadrelle --status` and the other commands.
    explicit DesktopShell(CadrelleFrame& frame);
    // Releases the hot keys, removes the tray icon, stops the control.
    ~DesktopShell();
    DesktopShell(const DesktopShell&) = delete;
    DesktopShell& operator=(const DesktopShell&) = delete;

    // The frame was minimised (true) or restored (false): the tray rules.
    void OnIconize(bool minimised);
    // False when the session has no tray host: the window must then never be
    // hidden on close or minimise (the user could not get it back).
    bool CanHideWindow() const;
    void RemoveTrayIcon();
    // The five-minute notice of job `jid`, unless hideNotifyWnd is "1".
    void ShowAdvanceNotice(std::int32_t jid);
    // For the settings dialog: each hot key's state, and why the window
    // cannot hide (empty when it can).
    std::array<wxString, 5> HotKeyStates() const;
    wxString TrayNote() const;

    // A global hot key was pressed (registration `id`, key code).
    void OnHotKey(int id, int virtualKey);

private:
    // Through the desktop portal on Wayland when it offers global shortcuts,
    // else X11 grabs.
    void RegisterHotKeys();
    void GrabHotKeys(bool wayland);
    void OnPortalActivated(const std::string& id);
    void CreateTray();
    void StartControl();

    wxString Pref(const char* key) const;

    CadrelleFrame& m_frame;
    std::unique_ptr<GlobalHotKeys> m_pHotKeys;
    std::unique_ptr<PortalShortcuts> m_pPortal;
    std::array<wxString, 5> m_hotKeyStates;
    std::unique_ptr<TrayIcon> m_pTray;
    wxString m_trayNote;
    std::unique_ptr<InstanceControl> m_pControl;
    std::unique_ptr<ControlServer> m_pServer;
    // Tasks queued to the main thread check it: they may come after the end.
    std::shared_ptr<bool> m_pAlive = std::make_shared<bool>(true);
};
