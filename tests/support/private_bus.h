#pragma once
// A private D-Bus daemon and python3-dbusmock services on it, for tests that
// must see what the program says on the bus without touching the machine's
// own buses. Both are child processes of the test, stopped by their ids.

#include <memory>
#include <string>
#include <vector>

#include <sys/types.h>

typedef struct _GDBusConnection GDBusConnection;
typedef struct _GVariant GVariant;

class PrivateBus {
public:
    PrivateBus();
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    bool IsRunning() const { return !m_address.empty(); }
    const std::string& Address() const { return m_address; }
    // A connection of the test's own to this bus (not the process's shared
    // session or system bus), owned by this object.
    GDBusConnection* Connection();
    bool NameHasOwner(const std::string& name);

private:
    pid_t m_pid = -1;
    std::string m_address;
    GDBusConnection* m_connection = nullptr;
};

// One method call a mock recorded: its name and its arguments.
struct MockCall {
    std::string method;
    std::string signature;  // the arguments' D-Bus signature, e.g. "b"
    GVariant* args = nullptr;  // the arguments as an array of variants, owned
    MockCall() = default;
    MockCall(const MockCall&) = delete;
    MockCall(MockCall&& other) noexcept;
    ~MockCall();
};

class DbusMock {
public:
    // Starts `python3 -m dbusmock --template <name>` with the private bus as
    // both its session and its system bus, and waits until `busName` is
    // owned. `parameters` is the template's JSON text or "".
    DbusMock(PrivateBus& bus, const std::string& templateName, const std::string& busName,
             const std::string& objectPath, const std::string& parameters = "");
    ~DbusMock();
    DbusMock(const DbusMock&) = delete;
    DbusMock& operator=(const DbusMock&) = delete;

    bool IsRunning() const { return m_ready; }
    // Calls recorded on `objectPath` (the main object when empty), oldest
    // first.
    std::vector<MockCall> Calls(const std::string& objectPath = "");
    void ClearCalls(const std::string& objectPath = "");

private:
    PrivateBus& m_bus;
    std::string m_busName;
    std::string m_objectPath;
    pid_t m_pid = -1;
    bool m_ready = false;
};
