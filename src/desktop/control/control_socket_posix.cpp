#include "desktop/control/control_socket.h"

#include <cerrno>
#include <cstring>

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

bool ControlSocketAddress(const std::string& path, sockaddr_un& address)
{
    address = sockaddr_un{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        return false;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return true;
}

std::string ControlSocketProblem(const std::string& path, bool* exists)
{
    *exists = false;
    struct stat info {};
    if (::lstat(path.c_str(), &info) != 0)
        return errno == ENOENT ? "" : std::string("cannot examine it: ") + std::strerror(errno);
    *exists = true;
    if (S_ISLNK(info.st_mode))
        return "it is a symbolic link";
    if (S_ISREG(info.st_mode))
        return "it is a plain file, not a socket";
    if (!S_ISSOCK(info.st_mode))
        return "it is not a socket";
    if (info.st_uid != ::getuid())
        return "it belongs to user " + std::to_string(info.st_uid) + ", not to you";
    if ((info.st_mode & 0022) != 0)
        return "other users can write to it";
    return {};
}

bool PeerIds(int fd, uid_t& uid, pid_t& pid)
{
    ucred peer{};
    socklen_t length = sizeof peer;
    if (::getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &length) != 0 || length != sizeof peer)
        return false;
    uid = peer.uid;
    pid = peer.pid;
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
