#pragma once
// Runs the real cadrelle program as a child process, without a display, and
// collects what it printed.

#include <string>

struct ProgramRun {
    int status = -1;
    std::string out;
    std::string err;
};

// `args` is appended to the command line as it stands (shell quoting applies).
ProgramRun RunProgram(const std::string& args);
