#include "program_run.h"

#include <cstdio>

#include <sys/wait.h>

#include "test_support.h"

ProgramRun RunProgram(const std::string& args)
{
    TempDir scratch;
    const std::string errFile = std::string(scratch.File("stderr").utf8_str());
    // No DISPLAY: these commands must not need one.
    const std::string command =
        "env -u DISPLAY -u WAYLAND_DISPLAY " CADRELLE_BINARY " " + args + " 2>" + errFile;
    ProgramRun run;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (!pipe)
        return run;
    char buffer[4096];
    std::size_t got = 0;
    while ((got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0)
        run.out.append(buffer, got);
    const int status = ::pclose(pipe);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    run.err = ReadFileBytes(scratch.File("stderr"));
    return run;
}
