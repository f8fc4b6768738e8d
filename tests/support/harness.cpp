#include "harness.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <thread>

#include <gtest/gtest.h>
#include <wx/init.h>

namespace {

// Swallows every record: tests that read log lines install a CapturedLog.
class NoLog : public wxLog {
protected:
    void DoLogRecord(wxLogLevel, const wxString&, const wxLogRecordInfo&) override {}
};

class WxEnvironment : public ::testing::Environment {
    std::unique_ptr<wxInitializer> m_init;
    void SetUp() override { m_init = std::make_unique<wxInitializer>(), delete wxLog::SetActiveTarget(new NoLog); }
    void TearDown() override { m_init.reset(); }
};

[[maybe_unused]] ::testing::Environment* const g_wx = ::testing::AddGlobalTestEnvironment(new WxEnvironment);

void SetEnv(const char* name, const char* value)
{
    value ? ::setenv(name, value, 1) : ::unsetenv(name);
}

}  // namespace

bool WaitUntil(const std::function<bool()>& done, int timeoutMs)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

ChildProcess::~ChildProcess() { Stop(SIGKILL, 2000); }

bool ChildProcess::Start(const std::vector<std::string>& argv, const std::string& outPath,
                         const ChildEnvironment& environment, const std::string& errPath)
{
    std::vector<char*> raw;
    for (const std::string& arg : argv)
        raw.push_back(const_cast<char*>(arg.c_str()));
    raw.push_back(nullptr);
    m_pid = ::fork();
    if (m_pid == 0) {
        auto open = [](const std::string& path) {
            return path.empty() ? ::open("/dev/null", O_WRONLY) : ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        };
        const int out = open(outPath);
        ::dup2(out, STDOUT_FILENO);
        ::dup2(errPath.empty() ? out : open(errPath), STDERR_FILENO);
        for (const auto& [name, value] : environment)
            SetEnv(name.c_str(), value ? value->c_str() : nullptr);
        ::execvp(raw[0], raw.data());
        ::_exit(127);
    }
    return m_pid > 0;
}

bool ChildProcess::StartCall(const std::function<int()>& body)
{
    m_pid = ::fork();
    if (m_pid == 0)
        ::_exit(body());
    return m_pid > 0;
}

int ChildProcess::Stop(int signal, int limitMs)
{
    if (m_pid <= 0)
        return -1;
    if (signal != 0)
        ::kill(m_pid, signal);
    int status = 0;
    const bool ended = WaitUntil([&] { return ::waitpid(m_pid, &status, WNOHANG) == m_pid; }, limitMs);
    if (!ended) {
        ::kill(m_pid, SIGKILL);
        ::waitpid(m_pid, &status, 0);
    }
    m_pid = -1;
    return ended && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool ChildProcess::Exited()
{
    int status = 0;
    if (m_pid > 0 && ::waitpid(m_pid, &status, WNOHANG) == m_pid)
        m_pid = -1;
    return m_pid <= 0;
}

ProcessResult RunProcess(const std::vector<std::string>& argv, const ChildEnvironment& environment, int limitMs)
{
    const TempDir scratch;
    ChildProcess child;
    ProcessResult result;
    if (child.Start(argv, scratch.File("out").utf8_string(), environment, scratch.File("err").utf8_string()))
        result.status = child.Stop(0, limitMs);
    result.out = ReadFileBytes(scratch.File("out"));
    result.err = ReadFileBytes(scratch.File("err"));
    return result;
}

ScopedEnv::ScopedEnv(const char* name, const char* value) : m_name(name)
{
    if (const char* old = std::getenv(name))
        m_old = old;
    SetEnv(name, value);
}

ScopedEnv::~ScopedEnv() { SetEnv(m_name.c_str(), m_old ? m_old->c_str() : nullptr); }

void RecordedMessages::Add(RecordedMessage message)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_messages.push_back(std::move(message));
    m_changed.notify_all();
}

std::vector<RecordedMessage> RecordedMessages::All() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_messages;
}

std::vector<std::string> RecordedMessages::Texts(RecordedMessage::Kind kind) const
{
    std::vector<std::string> texts;
    for (const RecordedMessage& message : All())
        if (message.kind == kind)
            texts.push_back(message.text);
    return texts;
}

bool RecordedMessages::WaitForCount(std::size_t count, std::chrono::milliseconds timeout) const
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_changed.wait_for(lock, timeout, [&] { return m_messages.size() >= count; });
}

SessionContext& HarnessContext()
{
    static SessionContext context;
    return context;
}

wxString RunJob(std::uint32_t kind, const ParamList& params, std::int32_t jid, const wxString& description,
                SessionContext& context, RunReport* report)
{
    RunReport unused;
    const RunReportScope scope(report ? *report : unused);
    std::unique_ptr<Job> job = CreateJob(kind);
    if (!job) {
        ADD_FAILURE() << "no job of kind " << kind;
        return {};
    }
    JobParam param;
    std::tie(param.id, param.type, param.description, param.params) = std::tie(jid, kind, description, params);
    job->SetParam(param);
    context.Actions().Run(*job, context);
    return job->GetSummary();
}
