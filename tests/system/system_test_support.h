#pragma once
// A private D-Bus daemon that stands in for both the system and the session
// bus of the whole test program, python3-dbusmock services on it, and a
// dbus-monitor that records every method call addressed to them exactly as
// it crossed the bus (member, argument types and values). All are child
// processes of the test, stopped by their ids.
//
// The test program talks to the mocks through the `gdbus` tool rather than
// GIO so that the program under test is the only GDBus user in the process.

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include <sys/types.h>
#include <wx/log.h>

#include "../core/test_support.h"

// Runs `argv` (no shell), returns its exit status; its standard output goes
// to `output` when given.
int RunProcess(const std::vector<std::string>& argv, std::string* output = nullptr);
// `text` as a GVariant string literal, for `gdbus call` arguments.
std::string Quoted(const std::string& text);

// Sets or unsets one environment variable for the life of the object.
class ScopedEnv {
public:
    ScopedEnv(const char* name, const char* value);  // nullptr unsets
    ~ScopedEnv();
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    std::string m_name;
    bool m_had = false;
    std::string m_old;
};

class ChildProcess {
public:
    ChildProcess() = default;
    ~ChildProcess() { Stop(); }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    // Starts `argv` with standard output to `outputPath` ("" = /dev/null).
    bool Start(const std::vector<std::string>& argv, const std::string& outputPath = "");
    void Stop();
    bool Exited();
    pid_t Pid() const { return m_pid; }

private:
    pid_t m_pid = -1;
};

// The one private bus of the test program; its address is in both
// DBUS_SYSTEM_BUS_ADDRESS and DBUS_SESSION_BUS_ADDRESS before any test runs.
const std::string& TestBusAddress();
bool NameHasOwner(const std::string& name);
// `gdbus call` on the test bus; true when the call succeeded.
bool BusCall(const std::string& destination, const std::string& path, const std::string& method,
             const std::vector<std::string>& args, std::string* reply = nullptr);

// One method call seen on the bus.
struct SeenCall {
    std::string path;
    std::string interface;
    std::string member;
    std::string signature;            // e.g. "b", "" for no arguments
    std::vector<std::string> values;  // as dbus-monitor prints them: false, "c7", 4242
};

class BusMonitor {
public:
    // Records method calls to `destinations` from now on.
    explicit BusMonitor(const std::vector<std::string>& destinations);
    bool IsRunning() const { return m_ready; }
    // Every call recorded up to now (calls to the mocks' own control
    // interface, introspection and property reads left out), oldest first.
    // First makes sure that everything sent before is on record.
    std::vector<SeenCall> Calls();
    std::vector<std::string> Members();

private:
    std::vector<SeenCall> Parse(bool withControl) const;

    TempDir m_dir;
    std::string m_file;
    std::string m_syncDestination;
    int m_syncs = 0;
    ChildProcess m_process;
    bool m_ready = false;
};

// python3-dbusmock's logind template on the test bus.
class LogindMock {
public:
    LogindMock();
    ~LogindMock();
    bool IsRunning() const { return m_ready; }
    // A session of the calling user; returns its object path.
    std::string AddSession(const std::string& id, bool active = true);
    // Adds or replaces a method of the object at `path`.
    bool AddMethod(const std::string& path, const std::string& interface, const std::string& name,
                   const std::string& inSignature, const std::string& outSignature, const std::string& code);
    // Makes Manager.GetSessionByPID answer with the session `id`.
    bool AnswerSessionByPid(const std::string& id);
    // The session's Lock sets its LockedHint, as a screen locker would.
    bool LockSetsLockedHint(const std::string& id);
    // Makes Manager.<can> answer `answer`.
    bool AnswerCan(const std::string& can, const std::string& answer);
    void Stop();

private:
    ChildProcess m_process;
    bool m_ready = false;
};

// A desktop screen saver (org.freedesktop.ScreenSaver with Lock) on the
// test bus, which also serves as the session bus.
class ScreenSaverMock {
public:
    ScreenSaverMock();
    ~ScreenSaverMock();
    bool IsRunning() const { return m_ready; }

private:
    ChildProcess m_process;
    bool m_ready = false;
};

// Keeps the log lines written while it is installed.
class CapturedLines : public wxLog {
public:
    CapturedLines() : m_previous(wxLog::SetActiveTarget(this)) {}
    ~CapturedLines() override;
    // Lines that contain `part`.
    std::vector<std::string> Matching(const std::string& part);

protected:
    void DoLogRecord(wxLogLevel level, const wxString& msg, const wxLogRecordInfo& info) override;

private:
    wxLog* m_previous;
    std::mutex m_mutex;
    std::vector<std::string> m_lines;
};

// Runs a job of `kind` (no parameters) on the calling thread.
void RunSystemJob(std::uint32_t kind, std::int32_t jid, const wxString& description);
// What GetSummary() gives for a job with that description and no parameters.
wxString SummaryOf(std::uint32_t kind, const wxString& description);
