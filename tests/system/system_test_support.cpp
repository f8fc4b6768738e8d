#include "system_test_support.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>
#include <wx/init.h>
#include <wx/log.h>

#include "core/jobs/job.h"
#include "desktop/jobs/system_jobs.h"

namespace {

std::vector<char*> ArgvOf(const std::vector<std::string>& argv)
{
    std::vector<char*> raw;
    for (const std::string& arg : argv)
        raw.push_back(const_cast<char*>(arg.c_str()));
    raw.push_back(nullptr);
    return raw;
}

void Sleep(int ms)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

template <typename Predicate>
bool WaitUntil(Predicate done, int timeoutMs)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        Sleep(30);
    }
    return true;
}

std::string ReadWhole(const std::string& path)
{
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

const char* const kLogindPath = "/org/freedesktop/login1";
const char* const kMockIface = "org.freedesktop.DBus.Mock";

std::string& BusAddressStorage()
{
    static std::string address;
    return address;
}

// Swallows log records: tests that read log lines install their own target.
class NoLog : public wxLog {
protected:
    void DoLogRecord(wxLogLevel, const wxString&, const wxLogRecordInfo&) override {}
};

// wxBase, the private bus and the job actions for the whole program. The
// bus address goes into the environment before anything can open a bus.
class SystemEnvironment : public ::testing::Environment {
public:
    void SetUp() override
    {
        m_init = new wxInitializer;
        delete wxLog::SetActiveTarget(new NoLog);
        int fds[2];
        ASSERT_EQ(::pipe(fds), 0);
        const std::string printAddress = "--print-address=" + std::to_string(fds[1]);
        ASSERT_TRUE(m_daemon.Start({"dbus-daemon", "--session", "--nofork", "--nopidfile", printAddress}));
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
        ASSERT_FALSE(address.empty()) << "dbus-daemon gave no address";
        BusAddressStorage() = address;
        ::setenv("DBUS_SYSTEM_BUS_ADDRESS", address.c_str(), 1);
        ::setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
        RegisterSystemJobActions();
    }
    void TearDown() override
    {
        m_daemon.Stop();
        delete m_init;
    }

private:
    wxInitializer* m_init = nullptr;
    ChildProcess m_daemon;
};

[[maybe_unused]] ::testing::Environment* const g_environment =
    ::testing::AddGlobalTestEnvironment(new SystemEnvironment);

}  // namespace

int RunProcess(const std::vector<std::string>& argv, std::string* output)
{
    int fds[2] = {-1, -1};
    if (output && ::pipe(fds) != 0)
        return -1;
    std::vector<char*> raw = ArgvOf(argv);
    const pid_t pid = ::fork();
    if (pid == 0) {
        const int devNull = ::open("/dev/null", O_WRONLY);
        ::dup2(output ? fds[1] : devNull, STDOUT_FILENO);
        ::dup2(devNull, STDERR_FILENO);
        if (output)
            ::close(fds[0]);
        ::execvp(raw[0], raw.data());
        ::_exit(127);
    }
    if (output) {
        ::close(fds[1]);
        char buffer[4096];
        ssize_t got = 0;
        while ((got = ::read(fds[0], buffer, sizeof buffer)) > 0)
            output->append(buffer, static_cast<std::size_t>(got));
        ::close(fds[0]);
    }
    int status = 0;
    if (pid < 0 || ::waitpid(pid, &status, 0) != pid)
        return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

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

ScopedEnv::ScopedEnv(const char* name, const char* value) : m_name(name)
{
    if (const char* old = std::getenv(name)) {
        m_had = true;
        m_old = old;
    }
    if (value)
        ::setenv(name, value, 1);
    else
        ::unsetenv(name);
}

ScopedEnv::~ScopedEnv()
{
    if (m_had)
        ::setenv(m_name.c_str(), m_old.c_str(), 1);
    else
        ::unsetenv(m_name.c_str());
}

bool ChildProcess::Start(const std::vector<std::string>& argv, const std::string& outputPath)
{
    std::vector<char*> raw = ArgvOf(argv);
    m_pid = ::fork();
    if (m_pid == 0) {
        const int devNull = ::open("/dev/null", O_WRONLY);
        const int out = outputPath.empty() ? devNull : ::open(outputPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        ::dup2(out, STDOUT_FILENO);
        ::dup2(devNull, STDERR_FILENO);
        ::execvp(raw[0], raw.data());
        ::_exit(127);
    }
    return m_pid > 0;
}

void ChildProcess::Stop()
{
    if (m_pid <= 0)
        return;
    ::kill(m_pid, SIGTERM);
    int status = 0;
    ::waitpid(m_pid, &status, 0);
    m_pid = -1;
}

bool ChildProcess::Exited()
{
    if (m_pid <= 0)
        return true;
    int status = 0;
    if (::waitpid(m_pid, &status, WNOHANG) == m_pid) {
        m_pid = -1;
        return true;
    }
    return false;
}

const std::string& TestBusAddress()
{
    return BusAddressStorage();
}

bool BusCall(const std::string& destination, const std::string& path, const std::string& method,
             const std::vector<std::string>& args, std::string* reply)
{
    std::vector<std::string> argv = {"gdbus", "call", "--address", TestBusAddress(), "--dest", destination,
                                     "--object-path", path, "--method", method};
    argv.insert(argv.end(), args.begin(), args.end());
    return RunProcess(argv, reply) == 0;
}

bool NameHasOwner(const std::string& name)
{
    std::string reply;
    return BusCall("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus.NameHasOwner",
                   {Quoted(name)}, &reply) &&
           reply.find("true") != std::string::npos;
}

BusMonitor::BusMonitor(const std::vector<std::string>& destinations)
    : m_file(m_dir.File("monitor.txt").utf8_string()), m_syncDestination(destinations.front())
{
    std::vector<std::string> argv = {"dbus-monitor", "--address", TestBusAddress()};
    for (const std::string& destination : destinations)
        argv.push_back("type='method_call',destination='" + destination + "'");
    if (!m_process.Start(argv, m_file))
        return;
    // The monitor prints NameLost once it is in place.
    m_ready = WaitUntil([this] { return ReadWhole(m_file).find("member=NameLost") != std::string::npos; }, 10000);
}

std::vector<SeenCall> BusMonitor::Parse(bool withControl) const
{
    std::vector<SeenCall> calls;
    std::istringstream lines(ReadWhole(m_file));
    std::string line;
    bool inCall = false;
    auto field = [](const std::string& text, const std::string& key) {
        const std::size_t at = text.find(" " + key + "=");
        if (at == std::string::npos)
            return std::string();
        const std::size_t start = at + key.size() + 2;
        const std::size_t end = text.find_first_of("; ", start);
        return text.substr(start, end == std::string::npos ? std::string::npos : end - start);
    };
    while (std::getline(lines, line)) {
        if (line.rfind("method call ", 0) == 0) {
            SeenCall call;
            call.path = field(line, "path");
            call.interface = field(line, "interface");
            call.member = field(line, "member");
            inCall = withControl || (call.interface != kMockIface &&
                                     call.interface != "org.freedesktop.DBus.Introspectable" &&
                                     call.interface != "org.freedesktop.DBus.Properties" &&
                                     call.interface != "org.freedesktop.DBus.Peer");
            if (inCall)
                calls.push_back(call);
            continue;
        }
        if (line.rfind("   ", 0) != 0 || line.rfind("    ", 0) == 0) {
            if (line.rfind("   ", 0) != 0)
                inCall = false;
            continue;
        }
        if (!inCall)
            continue;
        // "   boolean false", "   string \"c7\"", "   uint32 4242"
        const std::string arg = line.substr(3);
        const std::size_t space = arg.find(' ');
        const std::string type = arg.substr(0, space);
        const std::string value = space == std::string::npos ? "" : arg.substr(space + 1);
        static const std::vector<std::pair<std::string, std::string>> kTypes = {
            {"boolean", "b"}, {"string", "s"}, {"uint32", "u"}, {"int32", "i"},
            {"object", "o"},  {"uint64", "t"}, {"int64", "x"},  {"double", "d"}};
        std::string code = "?";
        for (const auto& known : kTypes)
            if (known.first == type)
                code = known.second;
        calls.back().signature += code;
        calls.back().values.push_back(code == "o" ? value.substr(value.find(' ') + 1) : value);
    }
    return calls;
}

std::vector<SeenCall> BusMonitor::Calls()
{
    // A ping sent now reaches the monitor after everything sent before it.
    const int syncs = ++m_syncs;
    BusCall(m_syncDestination, "/", "org.freedesktop.DBus.Peer.Ping", {});
    WaitUntil(
        [&] {
            int seen = 0;
            for (const SeenCall& call : Parse(true))
                seen += call.member == "Ping" ? 1 : 0;
            return seen >= syncs;
        },
        5000);
    return Parse(false);
}

std::vector<std::string> BusMonitor::Members()
{
    std::vector<std::string> members;
    for (const SeenCall& call : Calls())
        members.push_back(call.member);
    return members;
}

LogindMock::LogindMock()
{
    const auto gone = WaitUntil([] { return !NameHasOwner("org.freedesktop.login1"); }, 5000);
    if (!gone)
        return;
    if (!m_process.Start({"/usr/bin/python3", "-m", "dbusmock", "--template", "logind"}))
        return;
    m_ready = WaitUntil([this] { return !m_process.Exited() && NameHasOwner("org.freedesktop.login1"); }, 20000);
}

LogindMock::~LogindMock()
{
    Stop();
}

void LogindMock::Stop()
{
    m_process.Stop();
    WaitUntil([] { return !NameHasOwner("org.freedesktop.login1"); }, 5000);
}

std::string LogindMock::AddSession(const std::string& id, bool active)
{
    std::string reply;
    BusCall("org.freedesktop.login1", kLogindPath, std::string(kMockIface) + ".AddSession",
            {Quoted(id), Quoted("seat0"), std::to_string(::getuid()), Quoted("tester"), active ? "true" : "false"},
            &reply);
    return std::string(kLogindPath) + "/session/" + id;
}

bool LogindMock::AddMethod(const std::string& path, const std::string& interface, const std::string& name,
                           const std::string& inSignature, const std::string& outSignature, const std::string& code)
{
    return BusCall("org.freedesktop.login1", path, std::string(kMockIface) + ".AddMethod",
                   {Quoted(interface), Quoted(name), Quoted(inSignature), Quoted(outSignature), Quoted(code)});
}

bool LogindMock::AnswerSessionByPid(const std::string& id)
{
    return AddMethod(kLogindPath, "org.freedesktop.login1.Manager", "GetSessionByPID", "u", "o",
                     "ret = '/org/freedesktop/login1/session/" + id + "'");
}

bool LogindMock::LockSetsLockedHint(const std::string& id)
{
    return AddMethod(std::string(kLogindPath) + "/session/" + id, "org.freedesktop.login1.Session", "Lock", "", "",
                     "self.UpdateProperties('org.freedesktop.login1.Session', {'LockedHint': dbus.Boolean(True)})");
}

bool LogindMock::AnswerCan(const std::string& can, const std::string& answer)
{
    return AddMethod(kLogindPath, "org.freedesktop.login1.Manager", can, "", "s", "ret = '" + answer + "'");
}

ScreenSaverMock::ScreenSaverMock()
{
    if (!m_process.Start({"/usr/bin/python3", "-m", "dbusmock", "--session", "org.freedesktop.ScreenSaver",
                          "/org/freedesktop/ScreenSaver", "org.freedesktop.ScreenSaver"}))
        return;
    m_ready = WaitUntil([this] { return !m_process.Exited() && NameHasOwner("org.freedesktop.ScreenSaver"); }, 20000) &&
              BusCall("org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver",
                      std::string(kMockIface) + ".AddMethod", {"''", Quoted("Lock"), "''", "''", "''"});
}

ScreenSaverMock::~ScreenSaverMock()
{
    m_process.Stop();
    WaitUntil([] { return !NameHasOwner("org.freedesktop.ScreenSaver"); }, 5000);
}

CapturedLines::~CapturedLines()
{
    wxLog::FlushActive();
    wxLog::SetActiveTarget(m_previous);
}

std::vector<std::string> CapturedLines::Matching(const std::string& part)
{
    wxLog::FlushActive();
    std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::string> found;
    for (const std::string& line : m_lines)
        if (line.find(part) != std::string::npos)
            found.push_back(line);
    return found;
}

void CapturedLines::DoLogRecord(wxLogLevel, const wxString& msg, const wxLogRecordInfo&)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_lines.push_back(msg.utf8_string());
}

namespace {

std::unique_ptr<Job> MakeJob(std::uint32_t kind, std::int32_t jid, const wxString& description)
{
    std::unique_ptr<Job> job = CreateJob(kind);
    JobParam param;
    param.id = jid;
    param.type = kind;
    param.description = description;
    job->SetParam(param);
    return job;
}

}  // namespace

void RunSystemJob(std::uint32_t kind, std::int32_t jid, const wxString& description)
{
    MakeJob(kind, jid, description)->Execute();
}

wxString SummaryOf(std::uint32_t kind, const wxString& description)
{
    return MakeJob(kind, 1, description)->GetSummary();
}
