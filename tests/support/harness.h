#pragma once
// The one harness of the test programs (temporary folders and file bytes in
// test_support.h, the log capture in captured_log.h). It also starts wxBase
// once on the main thread, so worker log records queue for it as in the program.

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <sys/types.h>

#include "../core/test_support.h"
#include "captured_log.h"
#include "core/history/run_report.h"
#include "core/jobs/job.h"
#include "core/session/session_context.h"
#include "core/user_messages.h"

// Polls `done` until it holds or `timeoutMs` passed; returns done().
bool WaitUntil(const std::function<bool()>& done, int timeoutMs = 10000);

// Sets (nullptr: removes) one variable of this process's environment.
void SetEnvVar(const char* name, const char* value);

// The signal that cannot be caught (SIGKILL; Windows has no such name).
inline constexpr int kSignalKill = 9;

// Variables set (or, with no value, removed) in a child on top of ours.
using ChildEnvironment = std::vector<std::pair<std::string, std::optional<std::string>>>;

// A child process, killed by its id if still running when the object goes
// (harness_posix.cpp: fork and exec; harness_win.cpp: CreateProcessW, where
// every signal but 0 ends the child at once with TerminateProcess).
class ChildProcess {
public:
    ChildProcess() = default;
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    // stdout to `outPath`, stderr to `errPath` ("": as stdout; both "": /dev/null).
    bool Start(const std::vector<std::string>& argv, const std::string& outPath = "",
               const ChildEnvironment& environment = {}, const std::string& errPath = "");
    // Runs `body` in a forked copy of this process, which exits with its
    // result (a peer of another user: the body may setuid).
    bool StartCall(const std::function<int()>& body);
    // Sends `signal` (0: none) and waits up to `limitMs`, then kills. The
    // exit status; -1 when it ended by a signal or was not running.
    int Stop(int signal = SIGTERM, int limitMs = 10000);
    bool Exited();
    pid_t Pid() const { return m_pid; }

private:
    pid_t m_pid = -1;
    void* m_process = nullptr;  // Windows: the process handle
};

struct ProcessResult {
    int status = -1;  // exit status; -1 after a signal or the time limit
    std::string out;
    std::string err;
};
// Runs `argv` to its end, at most `limitMs`.
ProcessResult RunProcess(const std::vector<std::string>& argv, const ChildEnvironment& environment = {},
                         int limitMs = 60000);

// Sets (nullptr: removes) one environment variable for the object's life.
class ScopedEnv {
public:
    ScopedEnv(const char* name, const char* value);
    ~ScopedEnv();
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    std::string m_name;
    std::optional<std::string> m_old;
};

struct RecordedMessage {
    enum class Kind { Box, Notice, Reminder };
    Kind kind;
    std::string text;     // UTF-8
    std::string caption;  // message boxes only
    std::uint32_t jobId = 0;
    bool important = false;
};

// The session context of the harness's RunJob (the system clock): tests
// register the actions they exercise into its table.
SessionContext& HarnessContext();

// What jobs tell the user (from any thread), recorded while the object lives
// as the messages of `context`.
class RecordedMessages final : public UserMessages {
public:
    explicit RecordedMessages(SessionContext& context = HarnessContext()) : m_context(context)
    {
        m_context.SetMessages(this);
    }
    ~RecordedMessages() override { m_context.SetMessages(nullptr); }
    RecordedMessages(const RecordedMessages&) = delete;
    RecordedMessages& operator=(const RecordedMessages&) = delete;

    void ShowMessage(const wxString& text, const wxString& caption) override
    { Add({RecordedMessage::Kind::Box, text.utf8_string(), caption.utf8_string(), 0, false}); }
    void ShowNotice(std::uint32_t jobId, const wxString& text) override
    { Add({RecordedMessage::Kind::Notice, text.utf8_string(), {}, jobId, false}); }
    void ShowReminder(std::uint32_t jobId, const wxString& text, bool important) override
    { Add({RecordedMessage::Kind::Reminder, text.utf8_string(), {}, jobId, important}); }

    std::vector<RecordedMessage> All() const;
    std::vector<std::string> Texts(RecordedMessage::Kind kind) const;
    std::vector<std::string> Boxes() const { return Texts(RecordedMessage::Kind::Box); }
    bool WaitForCount(std::size_t count, std::chrono::milliseconds timeout) const;

private:
    void Add(RecordedMessage message);

    SessionContext& m_context;
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed;
    std::vector<RecordedMessage> m_messages;
};

// Runs a job of `kind` on the calling thread, as a job thread does, with
// the actions registered in the harness context; returns its summary. What
// the action reports for the run history goes to `report` when given.
wxString RunJob(std::uint32_t kind, const ParamList& params = {}, std::int32_t jid = 7,
                const wxString& description = "Test job", SessionContext& context = HarnessContext(),
                RunReport* report = nullptr);
