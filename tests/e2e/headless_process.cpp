#include "headless_process.h"

#include <chrono>
#include <csignal>
#include <fstream>
#include <sstream>
#include <thread>

#include <fcntl.h>
#include <wx/dir.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

pid_t Spawn(const std::string& home, const std::vector<std::string>& args, const std::string& outputFile,
            const ChildEnvironment& environment = {})
{
    const pid_t pid = ::fork();
    if (pid != 0)
        return pid;
    const int out = ::open(outputFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    ::dup2(out, STDOUT_FILENO);
    ::dup2(out, STDERR_FILENO);
    ::setenv("HOME", home.c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", (home + "/.config").c_str(), 1);
    ::setenv("XDG_DATA_HOME", (home + "/.local/share").c_str(), 1);
    ::unsetenv("DISPLAY");
    ::unsetenv("WAYLAND_DISPLAY");
    // Never the machine's own session bus.
    ::unsetenv("DBUS_SESSION_BUS_ADDRESS");
    ::setenv("XDG_RUNTIME_DIR", home.c_str(), 1);
    for (const auto& [name, value] : environment)
        ::setenv(name.c_str(), value.c_str(), 1);
    std::vector<char*> argv;
    argv.push_back(const_cast<char*>(CADRELLE_BINARY));
    for (const std::string& arg : args)
        argv.push_back(const_cast<char*>(arg.c_str()));
    argv.push_back(nullptr);
    ::execv(CADRELLE_BINARY, argv.data());
    ::_exit(127);
}

int WaitFor(pid_t pid, int limitMs)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(limitMs);
    int status = 0;
    while (std::chrono::steady_clock::now() < end) {
        const pid_t done = ::waitpid(pid, &status, WNOHANG);
        if (done == pid)
            return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    ::kill(pid, SIGKILL);
    ::waitpid(pid, &status, 0);
    return -1;
}

std::string ReadAll(const std::string& path)
{
    std::ifstream in(path);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

}  // namespace

HeadlessProcess::HeadlessProcess(const std::string& appDir, const std::string& home)
    : m_appDir(appDir), m_home(home), m_outputFile(home + "/headless-output.txt")
{
}

HeadlessProcess::~HeadlessProcess()
{
    if (m_pid > 0)
        Stop(SIGKILL, 2000);
}

bool HeadlessProcess::Start(const std::vector<std::string>& extraArgs)
{
    std::vector<std::string> args = {"--headless", "--app-dir", m_appDir};
    args.insert(args.end(), extraArgs.begin(), extraArgs.end());
    m_pid = Spawn(m_home, args, m_outputFile, m_environment);
    return m_pid > 0;
}

bool HeadlessProcess::StartWindow()
{
    m_pid = Spawn(m_home, {"--app-dir", m_appDir}, m_outputFile, m_environment);
    return m_pid > 0;
}

int HeadlessProcess::Stop(int signal, int limitMs)
{
    if (m_pid <= 0)
        return -1;
    ::kill(m_pid, signal);
    const int status = WaitFor(m_pid, limitMs);
    m_pid = -1;
    return status;
}

std::string HeadlessProcess::Output() const
{
    return ReadAll(m_outputFile);
}

int RunCadrelle(const std::string& home, const std::vector<std::string>& args, std::string& output, int limitMs)
{
    const std::string file = home + "/foreground-output.txt";
    const pid_t pid = Spawn(home, args, file);
    const int status = WaitFor(pid, limitMs);
    output = ReadAll(file);
    return status;
}

std::string LogText(const std::string& appDir)
{
    wxArrayString files;
    wxDir::GetAllFiles(wxString::FromUTF8(appDir), &files, "log_*.txt", wxDIR_FILES);
    std::string text;
    for (const wxString& file : files)
        text += ReadAll(std::string(file.utf8_str()));
    return text;
}
