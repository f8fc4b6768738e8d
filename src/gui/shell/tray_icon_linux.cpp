#include "gui/shell/tray_icon.h"

#include <wx/image.h>
#include <wx/log.h>
#include <wx/menu.h>
#include <wx/mstream.h>
#include <wx/taskbar.h>

#include <gdk/gdkx.h>
#include <gio/gio.h>
#include <gtk/gtk.h>
#include <libayatana-appindicator/app-indicator.h>
#include <X11/Xlib.h>

#include "core/data/atomic_file.h"
#include "desktop/control/runtime_dir.h"

namespace {

enum { ID_TRAY_SHOW = wxID_HIGHEST + 700, ID_TRAY_ABOUT, ID_TRAY_EXIT };

wxMenu* BuildMenu()
{
    auto* menu = new wxMenu;
    menu->Append(ID_TRAY_SHOW, _("&Show Mainframe..."));
    menu->Append(ID_TRAY_ABOUT, _("&About..."));
    menu->AppendSeparator();
    menu->Append(ID_TRAY_EXIT, _("E&xit"));
    return menu;
}

void BindMenu(wxEvtHandler& handler, const TrayIcon::Actions& actions)
{
    handler.Bind(wxEVT_MENU, [show = actions.show](wxCommandEvent&) { show(); }, ID_TRAY_SHOW);
    handler.Bind(wxEVT_MENU, [about = actions.about](wxCommandEvent&) { about(); }, ID_TRAY_ABOUT);
    handler.Bind(wxEVT_MENU, [exit = actions.exit](wxCommandEvent&) { exit(); }, ID_TRAY_EXIT);
}

using HostAnswer = std::function<void(TrayIcon::Host)>;

bool XEmbedTrayRunning()
{
    GdkDisplay* display = gdk_display_get_default();
    if (!display || !GDK_IS_X11_DISPLAY(display))
        return false;
    Display* x = gdk_x11_display_get_xdisplay(display);
    const std::string name = "_NET_SYSTEM_TRAY_S" + std::to_string(DefaultScreen(x));
    return XGetSelectionOwner(x, XInternAtom(x, name.c_str(), False)) != None;
}

// The X tray is asked only when no StatusNotifierItem host answered.
void Answer(std::unique_ptr<HostAnswer> answer, bool statusNotifierHost)
{
    (*answer)(statusNotifierHost ? TrayIcon::Host::StatusNotifier
              : XEmbedTrayRunning() ? TrayIcon::Host::XEmbed
                                    : TrayIcon::Host::Absent);
}

void OnNameHasOwner(GObject* source, GAsyncResult* result, gpointer data)
{
    std::unique_ptr<HostAnswer> answer(static_cast<HostAnswer*>(data));
    GVariant* reply = g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, nullptr);
    gboolean owned = FALSE;
    if (reply) {
        g_variant_get(reply, "(b)", &owned);
        g_variant_unref(reply);
    }
    Answer(std::move(answer), owned);
}

void OnSessionBus(GObject*, GAsyncResult* result, gpointer data)
{
    std::unique_ptr<HostAnswer> answer(static_cast<HostAnswer*>(data));
    GDBusConnection* bus = g_bus_get_finish(result, nullptr);
    if (!bus)
        return Answer(std::move(answer), false);
    g_dbus_connection_call(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                           "NameHasOwner", g_variant_new("(s)", "org.kde.StatusNotifierWatcher"),
                           G_VARIANT_TYPE("(b)"), G_DBUS_CALL_FLAGS_NONE, 2000, nullptr, OnNameHasOwner,
                           answer.release());
    g_object_unref(bus);  // the call keeps its own reference
}

wxIcon TrayPicture(const wxIconBundle& icons, int size)
{
    wxIcon icon = icons.GetIcon(wxSize(size, size), wxIconBundle::FALLBACK_NEAREST_LARGER);
    if (!icon.IsOk())
        icon = icons.GetIcon(wxSize(size, size));
    return icon;
}

class IndicatorTray final : public TrayIcon {
public:
    IndicatorTray(const wxIconBundle& icons, Actions actions) : m_pMenu(BuildMenu())
    {
        BindMenu(*m_pMenu, actions);
        // The item names its icon in a folder of ours: the host reads the
        // file itself, perhaps while we replace it, so it is never written
        // in place.
        const wxString folder = wxString::FromUTF8(RuntimeDirPath()) + "/icons";
        const wxIcon icon = TrayPicture(icons, 48);
        if (icon.IsOk()) {
            wxBitmap bitmap;
            bitmap.CopyFromIcon(icon);
            wxMemoryOutputStream png;
            if (bitmap.ConvertToImage().SaveFile(png, wxBITMAP_TYPE_PNG)) {
                const wxStreamBuffer* buffer = png.GetOutputStreamBuffer();
                WriteFileAtomically(folder + "/cadrelle-tray.png",
                                    std::string(static_cast<const char*>(buffer->GetBufferStart()),
                                                buffer->GetIntPosition()),
                                    nullptr);
            }
        }
        m_pIndicator = app_indicator_new_with_path("cadrelle", "cadrelle-tray",
                                                   APP_INDICATOR_CATEGORY_APPLICATION_STATUS, folder.utf8_str());
        app_indicator_set_title(m_pIndicator, "Cadrelle");
        app_indicator_set_menu(m_pIndicator, GTK_MENU(m_pMenu->m_menu));
        SetVisible(true);
    }
    ~IndicatorTray() override
    {
        app_indicator_set_status(m_pIndicator, APP_INDICATOR_STATUS_PASSIVE);
        g_object_unref(m_pIndicator);
    }
    void SetVisible(bool visible) override
    {
        app_indicator_set_status(m_pIndicator, visible ? APP_INDICATOR_STATUS_ACTIVE : APP_INDICATOR_STATUS_PASSIVE);
    }
    wxString Kind() const override { return "StatusNotifierItem"; }

private:
    std::unique_ptr<wxMenu> m_pMenu;
    AppIndicator* m_pIndicator = nullptr;
};

class XEmbedTray final : public TrayIcon, private wxTaskBarIcon {
public:
    XEmbedTray(const wxIconBundle& icons, Actions actions) : m_actions(std::move(actions))
    {
        m_icon = TrayPicture(icons, 24);
        BindMenu(*this, m_actions);
        Bind(wxEVT_TASKBAR_LEFT_DCLICK, [this](wxTaskBarIconEvent&) { m_actions.show(); });
        SetVisible(true);
    }
    ~XEmbedTray() override { RemoveIcon(); }
    void SetVisible(bool visible) override
    {
        if (visible)
            SetIcon(m_icon, "Cadrelle");
        else
            RemoveIcon();
    }
    wxString Kind() const override { return "XEmbed"; }

private:
    wxMenu* CreatePopupMenu() override { return BuildMenu(); }

    Actions m_actions;
    wxIcon m_icon;
};

}  // namespace

void TrayIcon::FindHost(std::function<void(Host)> answer)
{
    g_bus_get(G_BUS_TYPE_SESSION, nullptr, OnSessionBus, new HostAnswer(std::move(answer)));
}

std::unique_ptr<TrayIcon> TrayIcon::Create(Host host, const wxIconBundle& icons, Actions actions, wxString* note)
{
    if (host == Host::StatusNotifier)
        return std::make_unique<IndicatorTray>(icons, std::move(actions));
    if (host == Host::XEmbed)
        return std::make_unique<XEmbedTray>(icons, std::move(actions));
    if (note)
        *note = _("This desktop shows no tray icons (no StatusNotifierItem host and no system tray), so the window is "
                  "never hidden on close or minimise: it could not be brought back.");
    return nullptr;
}
