// Child processes and the environment on POSIX: fork and exec.

#include "harness.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

void SetEnvVar(const char* name, const char* value)
{
    value ? ::setenv(name, value, 1) : ::unsetenv(name);
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
            SetEnvVar(name.c_str(), value ? value->c_str() : nullptr);
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
