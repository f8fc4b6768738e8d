// org.freedesktop.Notifications on the session bus, called directly through
// GDBus: libnotify would add a dependency and hide why a call failed.

#include "desktop/platform/desktop_notifier.h"

#include <cstdlib>

#include <gio/gio.h>
#include <wx/filename.h>

namespace {

constexpr int kCallTimeoutMs = 5000;
// -1: the server's own display time, so the notice goes away by itself.
constexpr gint32 kServerDefaultExpiry = -1;

wxString TakeErrorText(GError* error)
{
    const wxString text = wxString::FromUTF8(error ? error->message : "unknown error");
    if (error)
        g_error_free(error);
    return text;
}

// Without an address GLib would fall back to X11 autolaunch and start a bus
// daemon of its own that nobody stops; only an existing bus is used.
bool HasSessionBus()
{
    if (const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS"))
        return *address != '\0';
    const char* runtimeDir = std::getenv("XDG_RUNTIME_DIR");
    return runtimeDir && wxFileName::Exists(wxString::FromUTF8(runtimeDir) + "/bus");
}

}  // namespace

NotifyOutcome SendDesktopNotification(const wxString& title, const wxString& body)
{
    NotifyOutcome outcome;
    if (!HasSessionBus()) {
        outcome.reason = "there is no session bus for desktop notifications (DBUS_SESSION_BUS_ADDRESS is not set)";
        return outcome;
    }
    GError* error = nullptr;
    GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error);
    if (!bus) {
        outcome.reason = "there is no session bus for desktop notifications: " + TakeErrorText(error);
        return outcome;
    }
    // Servers may read the body as markup; the text is shown as written.
    gchar* escaped = g_markup_escape_text(body.utf8_str(), -1);
    GVariantBuilder hints;
    g_variant_builder_init(&hints, G_VARIANT_TYPE("a{sv}"));
    g_variant_builder_add(&hints, "{sv}", "urgency", g_variant_new_byte(1));
    const gchar* const noActions[] = {nullptr};
    GVariant* parameters = g_variant_new("(susss^asa{sv}i)", "Cadrelle", 0u, "",
                                         static_cast<const char*>(title.utf8_str()), escaped, noActions, &hints,
                                         kServerDefaultExpiry);
    g_free(escaped);
    GVariant* reply = g_dbus_connection_call_sync(
        bus, "org.freedesktop.Notifications", "/org/freedesktop/Notifications", "org.freedesktop.Notifications", "Notify",
        parameters, G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE, kCallTimeoutMs, nullptr, &error);
    g_object_unref(bus);
    if (!reply) {
        outcome.reason = "no desktop notification service answered: " + TakeErrorText(error);
        return outcome;
    }
    g_variant_unref(reply);
    outcome.ok = true;
    return outcome;
}
