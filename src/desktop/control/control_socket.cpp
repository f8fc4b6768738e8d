#include "desktop/control/control_socket.h"

#include <cerrno>
#include <cstring>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "desktop/control/runtime_dir.h"

bool ControlSocketAddress(sockaddr_un& address)
{
    const std::string path = ControlSocketPath();
    address = sockaddr_un{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        return false;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return true;
}

bool ReadWithin(int fd, std::string& text, std::chrono::milliseconds limit,
                const std::function<bool(const std::string&)>& complete)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!complete(text)) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        pollfd pfd{fd, POLLIN, 0};
        if (left.count() <= 0 || ::poll(&pfd, 1, static_cast<int>(left.count())) <= 0)
            return false;
        char buffer[512];
        const ssize_t got = ::read(fd, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return false;
        if (got == 0)
            return true;
        text.append(buffer, static_cast<std::size_t>(got));
    }
    return true;
}
