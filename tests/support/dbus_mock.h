#pragma once
// python3-dbusmock services on the launcher's session bus, their calls read
// back from the mock's own log. The test talks through the `gdbus` tool, so
// the code under test is the only GDBus user in the process.

#include <string>
#include <vector>

#include "harness.h"

// `text` as a GVariant string literal, for `gdbus call` arguments.
std::string Quoted(const std::string& text);
// `gdbus call` on the session bus; true when the call succeeded.
bool BusCall(const std::string& destination, const std::string& path, const std::string& method,
             const std::vector<std::string>& args, std::string* reply = nullptr);
bool NameHasOwner(const std::string& name);

// Ready once its name is owned; stopped, and its name gone, when the object goes.
class DbusMock {
public:
    // `args` follow `python3 -m dbusmock`.
    DbusMock(const std::string& busName, const std::vector<std::string>& args);
    ~DbusMock();
    bool IsRunning() const { return m_ready; }
    bool AddMethod(const std::string& path, const std::string& interface, const std::string& name,
                   const std::string& inSignature, const std::string& outSignature, const std::string& code);
    // Oldest first, as gdbus writes values: "GetSessionByPID(uint32 42)".
    std::vector<std::string> Calls(const std::string& path);
    void ClearCalls(const std::string& path);

private:
    std::string m_busName;
    ChildProcess m_process;
    bool m_ready = false;
};
