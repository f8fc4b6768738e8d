#include "xvfb_server.h"

#include <csignal>
#include <cstdio>
#include <string>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

XvfbServer::XvfbServer(const std::string& screen)
{
    int fds[2];
    if (::pipe(fds) != 0)
        return;
    m_pid = ::fork();
    if (m_pid == 0) {
        ::close(fds[0]);
        const std::string fd = std::to_string(fds[1]);
        const int devNull = ::open("/dev/null", O_WRONLY);
        ::dup2(devNull, STDERR_FILENO);
        // -displayfd: the server writes the display number it chose. -noreset:
        // a server that resets when its last client leaves refuses the next
        // one for a moment.
        ::execlp("Xvfb", "Xvfb", "-displayfd", fd.c_str(), "-screen", "0", screen.c_str(), "-nolisten", "tcp", "-noreset",
                 static_cast<char*>(nullptr));
        ::_exit(127);
    }
    ::close(fds[1]);
    std::string number;
    pollfd pfd{fds[0], POLLIN, 0};
    while (::poll(&pfd, 1, 10000) > 0) {
        char c = 0;
        if (::read(fds[0], &c, 1) != 1 || c == '\n')
            break;
        number += c;
    }
    ::close(fds[0]);
    if (!number.empty())
        m_display = ":" + number;
}

XvfbServer::~XvfbServer()
{
    if (m_pid > 0) {
        ::kill(m_pid, SIGTERM);
        int status = 0;
        ::waitpid(m_pid, &status, 0);
    }
}
