#pragma once
// The tray icon with its menu "&Show Mainframe...", "&About...", "E&xit".
// A StatusNotifierItem (libayatana-appindicator) where a host owns
// org.kde.StatusNotifierWatcher on the session bus (KDE, XFCE, Cinnamon,
// GNOME with the AppIndicator extension); otherwise the toolkit's XEmbed
// icon where an X system tray (_NET_SYSTEM_TRAY_S0) is running; otherwise
// none. Main thread only.

#include <functional>
#include <memory>

#include <wx/iconbndl.h>
#include <wx/string.h>

class TrayIcon {
public:
    struct Actions {
        std::function<void()> show;
        std::function<void()> about;
        std::function<void()> exit;
    };
    enum class Host { StatusNotifier, XEmbed, Absent };
    virtual ~TrayIcon() = default;
    // Which tray host the session offers. The session bus is asked without
    // blocking the event loop; `answer` runs later on the main thread.
    static void FindHost(std::function<void(Host)> answer);
    // Null with the reason in `note` when there is no host.
    static std::unique_ptr<TrayIcon> Create(Host host, const wxIconBundle& icons, Actions actions, wxString* note);
    // Shows or takes away the icon (hideTrayIcon).
    virtual void SetVisible(bool visible) = 0;
    virtual wxString Kind() const = 0;
};
