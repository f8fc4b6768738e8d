#include "gui/shell/portal_shortcuts.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include <gio/gio.h>
#include <unistd.h>

#include "desktop/hotkey_plan.h"

namespace {

constexpr const char* kPortal = "org.freedesktop.portal.Desktop";
constexpr const char* kPortalPath = "/org/freedesktop/portal/desktop";
constexpr const char* kShortcuts = "org.freedesktop.portal.GlobalShortcuts";

bool Cancelled(const GError* error)
{
    return g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED);
}

wxString TakeMessage(GError* error)
{
    const wxString text = wxString::FromUTF8(error->message);
    g_error_free(error);
    return text;
}

// Unique per request in this process; the portal builds its object paths
// from it.
std::string NewToken()
{
    static unsigned serial = 0;
    return "cadrelle" + std::to_string(::getpid()) + "_" + std::to_string(++serial);
}

GVariant* TokenOptions(std::initializer_list<std::pair<const char*, std::string>> entries)
{
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
    for (const auto& [key, value] : entries)
        g_variant_builder_add(&options, "{sv}", key, g_variant_new_string(value.c_str()));
    return g_variant_builder_end(&options);
}

}  // namespace

struct PortalShortcuts::State {
    using Answer = std::function<void(guint32 code, GVariant* results)>;

    std::vector<Shortcut> shortcuts;
    Done done;
    Activated activated;
    GCancellable* cancel = g_cancellable_new();
    GDBusConnection* bus = nullptr;
    std::string requestPath;
    guint responseWatch = 0;
    guint activatedWatch = 0;
    Answer answer;
    std::string session;

    ~State()
    {
        // Cancelled calls still call back, but see the cancellation first and
        // leave this object alone.
        g_cancellable_cancel(cancel);
        StopWaiting();
        if (activatedWatch)
            g_dbus_connection_signal_unsubscribe(bus, activatedWatch);
        if (!session.empty()) {
            g_dbus_connection_call(bus, kPortal, session.c_str(), "org.freedesktop.portal.Session", "Close", nullptr,
                                   nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr, nullptr);
            // Only until the message is written; the program may be ending.
            g_dbus_connection_flush_sync(bus, nullptr, nullptr);
        }
        g_object_unref(cancel);
        if (bus)
            g_object_unref(bus);
    }

    void Finish(Result result)
    {
        StopWaiting();
        if (done)
            std::exchange(done, nullptr)(result);
    }

    void Fail(const wxString& reason)
    {
        Result result;
        result.reason = reason;
        Finish(result);
    }

    void StopWaiting()
    {
        if (responseWatch)
            g_dbus_connection_signal_unsubscribe(bus, responseWatch);
        responseWatch = 0;
    }

    void WaitAt(const std::string& path)
    {
        StopWaiting();
        requestPath = path;
        responseWatch = g_dbus_connection_signal_subscribe(bus, kPortal, "org.freedesktop.portal.Request", "Response",
                                                           path.c_str(), nullptr, G_DBUS_SIGNAL_FLAGS_NONE,
                                                           &State::OnResponse, this, nullptr);
    }

    // Calls `method` after subscribing to its Response at the path the
    // portal will use (the match rule goes out first on the connection), so
    // that a quick answer cannot be missed.
    void Request(const char* method, GVariant* args, const std::string& token, Answer then)
    {
        answer = std::move(then);
        WaitAt(PortalRequestPath(g_dbus_connection_get_unique_name(bus), token));
        g_dbus_connection_call(bus, kPortal, kPortalPath, kShortcuts, method, args, G_VARIANT_TYPE("(o)"),
                               G_DBUS_CALL_FLAGS_NONE, -1, cancel, &State::OnRequestReply,
                               new PendingRequest{this, requestPath});
    }

    static void OnBus(GObject*, GAsyncResult* result, gpointer data)
    {
        GError* error = nullptr;
        GDBusConnection* bus = g_bus_get_finish(result, &error);
        if (!bus && Cancelled(error))
            return g_error_free(error);
        auto* self = static_cast<State*>(data);
        if (!bus)
            return self->Fail(TakeMessage(error));
        self->bus = bus;
        g_dbus_connection_call(bus, kPortal, kPortalPath, "org.freedesktop.DBus.Properties", "Get",
                               g_variant_new("(ss)", kShortcuts, "version"), G_VARIANT_TYPE("(v)"),
                               G_DBUS_CALL_FLAGS_NONE, -1, self->cancel, &State::OnVersion, self);
    }

    static void OnVersion(GObject* source, GAsyncResult* result, gpointer data)
    {
        GError* error = nullptr;
        GVariant* reply = g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error);
        if (!reply && Cancelled(error))
            return g_error_free(error);
        auto* self = static_cast<State*>(data);
        if (!reply)
            return self->Fail(TakeMessage(error));
        GVariant* value = nullptr;
        g_variant_get(reply, "(v)", &value);
        const guint32 version = g_variant_is_of_type(value, G_VARIANT_TYPE_UINT32) ? g_variant_get_uint32(value) : 0;
        g_variant_unref(value);
        g_variant_unref(reply);
        if (version < 1)
            return self->Fail("no usable version of " + wxString(kShortcuts));
        self->CreateSession();
    }

    // A request's reply may come after its Response, when the next request
    // is already waiting: the reply must know which request it is for.
    struct PendingRequest {
        State* self;
        std::string predicted;
    };

    static void OnRequestReply(GObject* source, GAsyncResult* result, gpointer data)
    {
        const std::unique_ptr<PendingRequest> pending(static_cast<PendingRequest*>(data));
        GError* error = nullptr;
        GVariant* reply = g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error);
        if (!reply && Cancelled(error))
            return g_error_free(error);
        State* self = pending->self;
        if (!reply)
            return self->Fail(TakeMessage(error));
        const gchar* path = nullptr;
        g_variant_get(reply, "(&o)", &path);
        // Portals older than the handle token answer elsewhere.
        if (self->responseWatch && self->requestPath == pending->predicted && pending->predicted != path)
            self->WaitAt(path);
        g_variant_unref(reply);
    }

    static void OnResponse(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GVariant* params,
                           gpointer data)
    {
        if (!g_variant_is_of_type(params, G_VARIANT_TYPE("(ua{sv})")))
            return;
        auto* self = static_cast<State*>(data);
        guint32 code = 2;
        GVariant* results = nullptr;
        g_variant_get(params, "(u@a{sv})", &code, &results);
        self->StopWaiting();
        Answer then = std::exchange(self->answer, nullptr);
        if (then)
            then(code, results);
        g_variant_unref(results);
    }

    static void OnActivated(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GVariant* params,
                            gpointer data)
    {
        if (!g_variant_is_of_type(params, G_VARIANT_TYPE("(osta{sv})")))
            return;
        auto* self = static_cast<State*>(data);
        const gchar* session = nullptr;
        const gchar* id = nullptr;
        g_variant_get_child(params, 0, "&o", &session);
        g_variant_get_child(params, 1, "&s", &id);
        if (self->session == session && self->activated)
            self->activated(id);
    }

    static wxString RefusalText(guint32 code)
    {
        return code == 1 ? wxString("the user cancelled") : wxString::Format("the request ended (code %u)", code);
    }

    void CreateSession()
    {
        const std::string token = NewToken();
        GVariant* args = g_variant_new("(@a{sv})", TokenOptions({{"handle_token", token},
                                                                 {"session_handle_token", NewToken()}}));
        Request("CreateSession", args, token, [this](guint32 code, GVariant* results) {
            GVariant* handle = g_variant_lookup_value(results, "session_handle", nullptr);
            const bool usable = handle && (g_variant_is_of_type(handle, G_VARIANT_TYPE_STRING) ||
                                           g_variant_is_of_type(handle, G_VARIANT_TYPE_OBJECT_PATH));
            if (usable)
                session = g_variant_get_string(handle, nullptr);
            if (handle)
                g_variant_unref(handle);
            if (code != 0 || session.empty()) {
                Result result;
                result.outcome = Outcome::Refused;
                result.reason = code != 0 ? RefusalText(code) : wxString("no session from the portal");
                return Finish(result);
            }
            activatedWatch = g_dbus_connection_signal_subscribe(bus, kPortal, kShortcuts, "Activated", kPortalPath,
                                                                nullptr, G_DBUS_SIGNAL_FLAGS_NONE,
                                                                &State::OnActivated, this, nullptr);
            BindShortcuts();
        });
    }

    void BindShortcuts()
    {
        GVariantBuilder list;
        g_variant_builder_init(&list, G_VARIANT_TYPE("a(sa{sv})"));
        for (const Shortcut& shortcut : shortcuts) {
            GVariantBuilder options;
            g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
            g_variant_builder_add(&options, "{sv}", "description",
                                  g_variant_new_string(shortcut.description.utf8_str()));
            if (!shortcut.trigger.empty())
                g_variant_builder_add(&options, "{sv}", "preferred_trigger",
                                      g_variant_new_string(shortcut.trigger.c_str()));
            g_variant_builder_add(&list, "(sa{sv})", shortcut.id.c_str(), &options);
        }
        const std::string token = NewToken();
        GVariant* args = g_variant_new("(oa(sa{sv})s@a{sv})", session.c_str(), &list, "",
                                       TokenOptions({{"handle_token", token}}));
        Request("BindShortcuts", args, token, [this](guint32 code, GVariant* results) {
            Result result;
            result.outcome = code == 0 ? Outcome::Bound : Outcome::Refused;
            if (code != 0)
                result.reason = RefusalText(code);
            GVariant* bound = g_variant_lookup_value(results, "shortcuts", G_VARIANT_TYPE("a(sa{sv})"));
            if (bound) {
                GVariantIter iter;
                g_variant_iter_init(&iter, bound);
                const gchar* id = nullptr;
                while (g_variant_iter_next(&iter, "(&s@a{sv})", &id, nullptr))
                    result.bound.insert(id);
                g_variant_unref(bound);
            }
            Finish(result);
        });
    }
};

PortalShortcuts::PortalShortcuts(std::vector<Shortcut> shortcuts, Done done, Activated activated)
    : m_pState(std::make_unique<State>())
{
    m_pState->shortcuts = std::move(shortcuts);
    m_pState->done = std::move(done);
    m_pState->activated = std::move(activated);
    g_bus_get(G_BUS_TYPE_SESSION, m_pState->cancel, &State::OnBus, m_pState.get());
}

PortalShortcuts::~PortalShortcuts() = default;

bool PortalShortcuts::WaylandSession()
{
    const char* session = std::getenv("XDG_SESSION_TYPE");
    return (session && std::strcmp(session, "wayland") == 0) || std::getenv("WAYLAND_DISPLAY");
}
