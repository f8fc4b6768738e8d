#include "private_bus.h"

#include <chrono>
#include <csignal>
#include <thread>

#include <fcntl.h>
#include <gio/gio.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

void StopChild(pid_t pid)
{
    if (pid <= 0)
        return;
    ::kill(pid, SIGTERM);
    int status = 0;
    ::waitpid(pid, &status, 0);
}

void SilenceOutput()
{
    const int devNull = ::open("/dev/null", O_WRONLY);
    ::dup2(devNull, STDOUT_FILENO);
    ::dup2(devNull, STDERR_FILENO);
}

}  // namespace

PrivateBus::PrivateBus()
{
    int fds[2];
    if (::pipe(fds) != 0)
        return;
    m_pid = ::fork();
    if (m_pid == 0) {
        ::close(fds[0]);
        const std::string printAddress = "--print-address=" + std::to_string(fds[1]);
        SilenceOutput();
        ::execlp("dbus-daemon", "dbus-daemon", "--session", "--nofork", "--nopidfile", printAddress.c_str(),
                 static_cast<char*>(nullptr));
        ::_exit(127);
    }
    ::close(fds[1]);
    std::string address;
    pollfd pfd{fds[0], POLLIN, 0};
    while (::poll(&pfd, 1, 10000) > 0) {
        char c = 0;
        if (::read(fds[0], &c, 1) != 1 || c == '\n')
            break;
        address += c;
    }
    ::close(fds[0]);
    m_address = address;
}

PrivateBus::~PrivateBus()
{
    if (m_connection) {
        g_dbus_connection_close_sync(m_connection, nullptr, nullptr);
        g_object_unref(m_connection);
    }
    StopChild(m_pid);
}

GDBusConnection* PrivateBus::Connection()
{
    if (!m_connection && IsRunning()) {
        m_connection = g_dbus_connection_new_for_address_sync(
            m_address.c_str(),
            static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
            nullptr, nullptr, nullptr);
    }
    return m_connection;
}

bool PrivateBus::NameHasOwner(const std::string& name)
{
    GDBusConnection* connection = Connection();
    if (!connection)
        return false;
    GVariant* reply = g_dbus_connection_call_sync(connection, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                  "org.freedesktop.DBus", "NameHasOwner",
                                                  g_variant_new("(s)", name.c_str()), G_VARIANT_TYPE("(b)"),
                                                  G_DBUS_CALL_FLAGS_NONE, 2000, nullptr, nullptr);
    if (!reply)
        return false;
    gboolean owned = FALSE;
    g_variant_get(reply, "(b)", &owned);
    g_variant_unref(reply);
    return owned;
}

MockCall::MockCall(MockCall&& other) noexcept
    : method(std::move(other.method)), signature(std::move(other.signature)), args(other.args)
{
    other.args = nullptr;
}

MockCall::~MockCall()
{
    if (args)
        g_variant_unref(args);
}

DbusMock::DbusMock(PrivateBus& bus, const std::string& templateName, const std::string& busName,
                   const std::string& objectPath, const std::string& parameters)
    : m_bus(bus), m_objectPath(objectPath)
{
    if (!bus.IsRunning())
        return;
    m_pid = ::fork();
    if (m_pid == 0) {
        ::setenv("DBUS_SESSION_BUS_ADDRESS", bus.Address().c_str(), 1);
        ::setenv("DBUS_SYSTEM_BUS_ADDRESS", bus.Address().c_str(), 1);
        SilenceOutput();
        if (parameters.empty()) {
            ::execl("/usr/bin/python3", "python3", "-m", "dbusmock", "--template", templateName.c_str(),
                    static_cast<char*>(nullptr));
        } else {
            ::execl("/usr/bin/python3", "python3", "-m", "dbusmock", "--template", templateName.c_str(), "-p",
                    parameters.c_str(), static_cast<char*>(nullptr));
        }
        ::_exit(127);
    }
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (std::chrono::steady_clock::now() < deadline) {
        if (bus.NameHasOwner(busName)) {
            m_ready = true;
            break;
        }
        int status = 0;
        if (::waitpid(m_pid, &status, WNOHANG) == m_pid) {
            m_pid = -1;
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    m_busName = busName;
}

DbusMock::~DbusMock()
{
    StopChild(m_pid);
}

std::vector<MockCall> DbusMock::Calls(const std::string& objectPath)
{
    std::vector<MockCall> calls;
    GDBusConnection* connection = m_bus.Connection();
    if (!connection || !m_ready)
        return calls;
    const std::string path = objectPath.empty() ? m_objectPath : objectPath;
    GVariant* reply = g_dbus_connection_call_sync(connection, m_busName.c_str(), path.c_str(),
                                                  "org.freedesktop.DBus.Mock", "GetCalls", nullptr,
                                                  G_VARIANT_TYPE("(a(tsav))"), G_DBUS_CALL_FLAGS_NONE, 5000, nullptr,
                                                  nullptr);
    if (!reply)
        return calls;
    GVariant* list = g_variant_get_child_value(reply, 0);
    const gsize count = g_variant_n_children(list);
    for (gsize i = 0; i < count; ++i) {
        GVariant* entry = g_variant_get_child_value(list, i);
        MockCall call;
        GVariant* name = g_variant_get_child_value(entry, 1);
        call.method = g_variant_get_string(name, nullptr);
        g_variant_unref(name);
        call.args = g_variant_get_child_value(entry, 2);
        const gsize argCount = g_variant_n_children(call.args);
        for (gsize a = 0; a < argCount; ++a) {
            GVariant* boxed = g_variant_get_child_value(call.args, a);
            GVariant* value = g_variant_get_variant(boxed);
            call.signature += g_variant_get_type_string(value);
            g_variant_unref(value);
            g_variant_unref(boxed);
        }
        g_variant_unref(entry);
        calls.push_back(std::move(call));
    }
    g_variant_unref(list);
    g_variant_unref(reply);
    return calls;
}

void DbusMock::ClearCalls(const std::string& objectPath)
{
    GDBusConnection* connection = m_bus.Connection();
    if (!connection || !m_ready)
        return;
    const std::string path = objectPath.empty() ? m_objectPath : objectPath;
    GVariant* reply = g_dbus_connection_call_sync(connection, m_busName.c_str(), path.c_str(),
                                                  "org.freedesktop.DBus.Mock", "ClearCalls", nullptr, nullptr,
                                                  G_DBUS_CALL_FLAGS_NONE, 5000, nullptr, nullptr);
    if (reply)
        g_variant_unref(reply);
}
