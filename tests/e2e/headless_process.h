#pragma once
// The real `cadrelle --headless` as a child process with its own application
// folder and home, stopped by its process id.

#include <string>
#include <utility>
#include <vector>

#include <sys/types.h>

// Variables set in the child after the defaults (no DISPLAY, no session bus).
using ChildEnvironment = std::vector<std::pair<std::string, std::string>>;

class HeadlessProcess {
public:
    // `home` becomes HOME and the XDG folders' parent, so the program's
    // preferences and instance lock stay inside the test's folder.
    HeadlessProcess(const std::string& appDir, const std::string& home);
    ~HeadlessProcess();
    HeadlessProcess(const HeadlessProcess&) = delete;
    HeadlessProcess& operator=(const HeadlessProcess&) = delete;

    void SetEnvironment(ChildEnvironment environment) { m_environment = std::move(environment); }
    bool Start(const std::vector<std::string>& extraArgs = {});
    // The window instead of the headless mode (needs DISPLAY in the
    // environment).
    bool StartWindow();
    // Sends `signal` and waits; returns the exit status (-1 if it did not
    // exit normally within the limit).
    int Stop(int signal, int limitMs = 10000);
    pid_t Pid() const { return m_pid; }
    std::string Output() const;  // stdout and stderr so far

private:
    std::string m_appDir;
    std::string m_home;
    std::string m_outputFile;
    ChildEnvironment m_environment;
    pid_t m_pid = -1;
};

// Runs the program in the foreground with the same environment and returns
// its exit status; stdout and stderr go to `output`.
int RunCadrelle(const std::string& home, const std::vector<std::string>& args, std::string& output, int limitMs = 10000);

// Everything written to the weekday log files (log_*.txt) of an app folder.
std::string LogText(const std::string& appDir);
