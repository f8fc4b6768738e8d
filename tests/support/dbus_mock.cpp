#include "dbus_mock.h"

#include <algorithm>
#include <regex>

static const std::string kMockIface = "org.freedesktop.DBus.Mock";

std::string Quoted(const std::string& text)
{
    std::string quoted = "'";
    for (char c : text) {
        if (c == '\'' || c == '\\')
            quoted += '\\';
        quoted += c;
    }
    return quoted + "'";
}

bool BusCall(const std::string& destination, const std::string& path, const std::string& method,
             const std::vector<std::string>& args, std::string* reply)
{
    std::vector<std::string> argv = {"gdbus", "call", "--session", "--dest", destination, "--object-path", path,
                                     "--method", method};
    argv.insert(argv.end(), args.begin(), args.end());
    const ProcessResult run = RunProcess(argv);
    if (reply)
        *reply = run.out;
    return run.status == 0;
}

bool NameHasOwner(const std::string& name)
{
    std::string reply;
    return BusCall("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus.NameHasOwner",
                   {Quoted(name)}, &reply) &&
           reply.find("true") != std::string::npos;
}

DbusMock::DbusMock(const std::string& busName, const std::vector<std::string>& args) : m_busName(busName)
{
    if (!WaitUntil([&] { return !NameHasOwner(busName); }, 5000))
        return;
    std::vector<std::string> argv = {"/usr/bin/python3", "-m", "dbusmock"};
    argv.insert(argv.end(), args.begin(), args.end());
    m_ready = m_process.Start(argv) &&
              WaitUntil([&] { return !m_process.Exited() && NameHasOwner(busName); }, 20000);
}

DbusMock::~DbusMock()
{
    m_process.Stop();
    WaitUntil([&] { return !NameHasOwner(m_busName); }, 5000);
}

bool DbusMock::AddMethod(const std::string& path, const std::string& interface, const std::string& name,
                         const std::string& inSignature, const std::string& outSignature, const std::string& code)
{
    return BusCall(m_busName, path, kMockIface + ".AddMethod",
                   {Quoted(interface), Quoted(name), Quoted(inSignature), Quoted(outSignature), Quoted(code)});
}

std::vector<std::string> DbusMock::Calls(const std::string& path)
{
    // ([(uint64 1700000000, 'Suspend', [<false>]), (uint64 ..., 'CanSuspend', @av [])],)
    std::string reply;
    BusCall(m_busName, path, kMockIface + ".GetCalls", {}, &reply);
    // An entry ends at "])" before the next entry or the end of the list.
    static const std::regex call(R"(\((?:uint64 )?\d+, '(\w+)', (?:@av )?\[(.*?)\]\)(?=, \(|\]))");
    std::vector<std::string> calls;
    for (std::sregex_iterator it(reply.begin(), reply.end(), call), end; it != end; ++it) {
        std::string args = (*it)[2];
        args.erase(std::remove_if(args.begin(), args.end(), [](char c) { return c == '<' || c == '>'; }), args.end());
        calls.push_back((*it)[1].str() + "(" + args + ")");
    }
    return calls;
}

void DbusMock::ClearCalls(const std::string& path)
{
    BusCall(m_busName, path, kMockIface + ".ClearCalls", {});
}
