// Session and power requests through logind (org.freedesktop.login1) on the
// system bus.
//
// Each request opens a connection of its own instead of GIO's shared system
// bus: the shared one is cached for the life of the process and exits the
// process when the bus goes away, and a job that runs once a day gains
// nothing from keeping it.

#include "desktop/platform/session_control.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <thread>

#include <gio/gio.h>
#include <unistd.h>

namespace {

constexpr const char* kLogind = "org.freedesktop.login1";
constexpr const char* kLogindPath = "/org/freedesktop/login1";
constexpr const char* kManager = "org.freedesktop.login1.Manager";
constexpr const char* kSession = "org.freedesktop.login1.Session";
constexpr int kQueryTimeoutMs = 5000;
constexpr int kActionTimeoutMs = 15000;
// How long a screen locker gets to report the lock before we ask the
// session's screen saver ourselves.
constexpr auto kLockedHintWait = std::chrono::milliseconds(2000);

struct ErrorHolder {
    GError* error = nullptr;
    ~ErrorHolder() { Clear(); }
    void Clear()
    {
        if (error)
            g_error_free(error);
        error = nullptr;
    }
    GError** Out()
    {
        Clear();
        return &error;
    }
    // The message without GDBus's "GDBus.Error:name: " prefix.
    std::string Text() const
    {
        if (!error)
            return "unknown error";
        if (g_dbus_error_is_remote_error(error)) {
            GError* copy = g_error_copy(error);
            g_dbus_error_strip_remote_error(copy);
            std::string text = copy->message;
            g_error_free(copy);
            return text;
        }
        return error->message;
    }
    bool Is(GQuark domain, int code) const { return error && g_error_matches(error, domain, code); }
    bool RemoteNameIs(const char* name) const
    {
        if (!error)
            return false;
        gchar* remote = g_dbus_error_get_remote_error(error);
        const bool same = remote && g_strcmp0(remote, name) == 0;
        g_free(remote);
        return same;
    }
};

struct Reply {
    GVariant* value = nullptr;
    ~Reply()
    {
        if (value)
            g_variant_unref(value);
    }
};

class BusConnection {
public:
    ~BusConnection()
    {
        if (m_connection) {
            g_dbus_connection_close_sync(m_connection, nullptr, nullptr);
            g_object_unref(m_connection);
        }
    }
    bool Open(GBusType type, ErrorHolder& error)
    {
        gchar* address = g_dbus_address_get_for_bus_sync(type, nullptr, error.Out());
        if (!address)
            return false;
        m_connection = g_dbus_connection_new_for_address_sync(
            address,
            static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
            nullptr, nullptr, error.Out());
        g_free(address);
        return m_connection != nullptr;
    }
    // `args` is consumed (floating); `replyType` like "(s)" or "()".
    bool Call(const char* destination, const char* path, const char* iface, const char* method, GVariant* args,
              const char* replyType, int timeoutMs, Reply& reply, ErrorHolder& error)
    {
        reply.value = g_dbus_connection_call_sync(m_connection, destination, path, iface, method, args,
                                                  G_VARIANT_TYPE(replyType), G_DBUS_CALL_FLAGS_NO_AUTO_START,
                                                  timeoutMs, nullptr, error.Out());
        return reply.value != nullptr;
    }

private:
    GDBusConnection* m_connection = nullptr;
};

std::string Unreachable(const ErrorHolder& error)
{
    return "logind is not reachable on the system bus: " + error.Text();
}

bool IsUnreachable(const ErrorHolder& error)
{
    return error.Is(G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN) ||
           error.Is(G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER);
}

// A failed logind call as an outcome: the error number says which kind of
// failure, the text keeps logind's own words.
SystemOutcome CallFailure(const std::string& what, const ErrorHolder& error)
{
    if (IsUnreachable(error))
        return SystemOutcome::Failure(ECONNREFUSED, Unreachable(error));
    if (error.Is(G_IO_ERROR, G_IO_ERROR_TIMED_OUT) || error.Is(G_DBUS_ERROR, G_DBUS_ERROR_TIMEOUT) ||
        error.Is(G_DBUS_ERROR, G_DBUS_ERROR_NO_REPLY))
        return SystemOutcome::Failure(ETIMEDOUT, what + ": logind did not answer in time: " + error.Text());
    if (error.Is(G_DBUS_ERROR, G_DBUS_ERROR_ACCESS_DENIED) ||
        error.RemoteNameIs("org.freedesktop.DBus.Error.InteractiveAuthorizationRequired"))
        return SystemOutcome::Failure(EACCES, what + ": logind refused it: " + error.Text());
    return SystemOutcome::Failure(EIO, what + ": logind answered with an error: " + error.Text());
}

SystemOutcome OpenSystemBus(BusConnection& bus)
{
    ErrorHolder error;
    if (!bus.Open(G_BUS_TYPE_SYSTEM, error))
        return SystemOutcome::Failure(ECONNREFUSED, Unreachable(error));
    return SystemOutcome::Done();
}

struct OwnSession {
    std::string path;
    std::string id;
};

// The logind session of this process: by our process id first, which is
// right even when the variable was inherited from somewhere else, then by
// $XDG_SESSION_ID (a process started outside the session, e.g. by a
// service manager, has no session of its own).
SystemOutcome FindOwnSession(BusConnection& bus, OwnSession& session)
{
    ErrorHolder error;
    Reply reply;
    std::string byPidText;
    if (bus.Call(kLogind, kLogindPath, kManager, "GetSessionByPID",
                 g_variant_new("(u)", static_cast<guint32>(::getpid())), "(o)", kQueryTimeoutMs, reply, error)) {
        const gchar* path = nullptr;
        g_variant_get(reply.value, "(&o)", &path);
        session.path = path;
        Reply idReply;
        if (bus.Call(kLogind, session.path.c_str(), "org.freedesktop.DBus.Properties", "Get",
                     g_variant_new("(ss)", kSession, "Id"), "(v)", kQueryTimeoutMs, idReply, error)) {
            GVariant* inner = nullptr;
            g_variant_get(idReply.value, "(v)", &inner);
            if (g_variant_is_of_type(inner, G_VARIANT_TYPE_STRING))
                session.id = g_variant_get_string(inner, nullptr);
            g_variant_unref(inner);
        }
        if (!session.id.empty())
            return SystemOutcome::Done();
        byPidText = "the session " + session.path + " has no Id";
    } else {
        if (IsUnreachable(error))
            return SystemOutcome::Failure(ECONNREFUSED, Unreachable(error));
        byPidText = error.Text();
    }

    const char* envId = std::getenv("XDG_SESSION_ID");
    if (!envId || !*envId) {
        return SystemOutcome::Failure(ENOENT, "this program runs in no logind session (GetSessionByPID: " + byPidText +
                                                  "; XDG_SESSION_ID is not set)");
    }
    Reply byId;
    if (!bus.Call(kLogind, kLogindPath, kManager, "GetSession", g_variant_new("(s)", envId), "(o)", kQueryTimeoutMs,
                  byId, error)) {
        return SystemOutcome::Failure(ENOENT, "this program runs in no logind session (GetSessionByPID: " + byPidText +
                                                  "; GetSession(\"" + envId + "\"): " + error.Text() + ")");
    }
    const gchar* path = nullptr;
    g_variant_get(byId.value, "(&o)", &path);
    session.path = path;
    session.id = envId;
    return SystemOutcome::Done();
}

bool SessionLockedHint(BusConnection& bus, const std::string& path)
{
    ErrorHolder error;
    Reply reply;
    if (!bus.Call(kLogind, path.c_str(), "org.freedesktop.DBus.Properties", "Get",
                  g_variant_new("(ss)", kSession, "LockedHint"), "(v)", kQueryTimeoutMs, reply, error))
        return false;
    GVariant* inner = nullptr;
    g_variant_get(reply.value, "(v)", &inner);
    const bool locked = g_variant_is_of_type(inner, G_VARIANT_TYPE_BOOLEAN) && g_variant_get_boolean(inner);
    g_variant_unref(inner);
    return locked;
}

bool WaitForLockedHint(BusConnection& bus, const std::string& path)
{
    const auto deadline = std::chrono::steady_clock::now() + kLockedHintWait;
    while (true) {
        if (SessionLockedHint(bus, path))
            return true;
        if (std::chrono::steady_clock::now() >= deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
}

// The desktop's screen saver on the session bus, for sessions whose locker
// does not listen to logind. Desktops register it under either path.
SystemOutcome LockThroughScreenSaver()
{
    BusConnection bus;
    ErrorHolder error;
    if (!bus.Open(G_BUS_TYPE_SESSION, error))
        return SystemOutcome::Failure(ECONNREFUSED, "the session bus is not reachable: " + error.Text());
    std::string firstError;
    for (const char* path : {"/org/freedesktop/ScreenSaver", "/ScreenSaver"}) {
        Reply reply;
        if (bus.Call("org.freedesktop.ScreenSaver", path, "org.freedesktop.ScreenSaver", "Lock", nullptr, "()",
                     kQueryTimeoutMs, reply, error))
            return SystemOutcome::Done();
        if (firstError.empty())
            firstError = error.Text();
        if (error.Is(G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN) ||
            error.Is(G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER))
            break;
    }
    return SystemOutcome::Failure(ENOSYS, "org.freedesktop.ScreenSaver could not lock it: " + firstError);
}

struct PowerCall {
    const char* can;
    const char* method;
    const char* what;  // for texts: "suspend the machine"
};

PowerCall PowerCallOf(PowerAction action)
{
    switch (action) {
    case PowerAction::Suspend:
        return {"CanSuspend", "Suspend", "suspend"};
    case PowerAction::Hibernate:
        return {"CanHibernate", "Hibernate", "hibernate"};
    case PowerAction::PowerOff:
        return {"CanPowerOff", "PowerOff", "power off"};
    case PowerAction::Reboot:
        break;
    }
    return {"CanReboot", "Reboot", "reboot"};
}

// logind's Can* answers other than "yes", in words.
SystemOutcome Refusal(const PowerCall& call, const std::string& answer)
{
    const std::string said = std::string("logind answered ") + call.can + " \"" + answer + "\": ";
    if (answer == "na")
        return SystemOutcome::Failure(ENOTSUP, said + "this machine cannot " + call.what +
                                                   " (not supported by the hardware, or switched off in the "
                                                   "system's configuration).");
    if (answer == "no")
        return SystemOutcome::Failure(EPERM, said + "this user is not allowed to " + call.what + " the machine.");
    if (answer == "challenge")
        return SystemOutcome::Failure(EACCES, said + "to " + call.what +
                                                  " the machine this user must authenticate (for example because "
                                                  "other users are logged in), which a scheduled job cannot do.");
    return SystemOutcome::Failure(EPERM, said + "logind does not allow this user to " + call.what +
                                             " the machine now.");
}

}  // namespace

SystemOutcome LockOwnSession()
{
    BusConnection bus;
    SystemOutcome outcome = OpenSystemBus(bus);
    OwnSession session;
    if (outcome.ok)
        outcome = FindOwnSession(bus, session);
    std::string logindText;
    if (outcome.ok) {
        ErrorHolder error;
        Reply reply;
        if (bus.Call(kLogind, session.path.c_str(), kSession, "Lock", nullptr, "()", kQueryTimeoutMs, reply, error)) {
            if (WaitForLockedHint(bus, session.path))
                return SystemOutcome{true, 0, "logind locked session " + session.id};
            logindText = "logind passed the lock on to session " + session.id +
                         ", but no screen locker reported the session locked";
        } else {
            outcome = CallFailure("Lock", error);
        }
    }
    if (logindText.empty())
        logindText = outcome.reason;
    const SystemOutcome saver = LockThroughScreenSaver();
    if (saver.ok)
        return SystemOutcome{true, 0, logindText + "; org.freedesktop.ScreenSaver locked the session"};
    const int code = outcome.ok ? saver.code : outcome.code;
    return SystemOutcome::Failure(code, logindText + "; " + saver.reason);
}

SystemOutcome RequestPowerAction(PowerAction action)
{
    const PowerCall call = PowerCallOf(action);
    BusConnection bus;
    SystemOutcome outcome = OpenSystemBus(bus);
    if (!outcome.ok)
        return outcome;
    ErrorHolder error;
    Reply answer;
    if (!bus.Call(kLogind, kLogindPath, kManager, call.can, nullptr, "(s)", kQueryTimeoutMs, answer, error))
        return CallFailure(call.can, error);
    const gchar* text = nullptr;
    g_variant_get(answer.value, "(&s)", &text);
    if (g_strcmp0(text, "yes") != 0)
        return Refusal(call, text ? text : "");
    // interactive = false: never wait for a password dialog.
    Reply reply;
    if (!bus.Call(kLogind, kLogindPath, kManager, call.method, g_variant_new("(b)", FALSE), "()", kActionTimeoutMs,
                  reply, error))
        return CallFailure(call.method, error);
    return SystemOutcome::Done();
}

SystemOutcome LogOffOwnSession()
{
    BusConnection bus;
    SystemOutcome outcome = OpenSystemBus(bus);
    if (!outcome.ok)
        return outcome;
    OwnSession session;
    outcome = FindOwnSession(bus, session);
    if (!outcome.ok)
        return outcome;
    ErrorHolder error;
    Reply reply;
    if (!bus.Call(kLogind, kLogindPath, kManager, "TerminateSession", g_variant_new("(s)", session.id.c_str()), "()",
                  kActionTimeoutMs, reply, error))
        return CallFailure("TerminateSession", error);
    return SystemOutcome{true, 0, "logind ended session " + session.id};
}
