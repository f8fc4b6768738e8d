#include "desktop/control/control_server.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <future>
#include <memory>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "desktop/control/control_socket.h"
#include "desktop/control/runtime_dir.h"

namespace {

// A request is one short line; a caller that sends nothing is dropped.
constexpr int kReadLimitMs = 2000;
constexpr std::size_t kMaxRequest = 256;

bool ReadLine(int fd, std::string& line)
{
    const bool read = ReadWithin(fd, line, std::chrono::milliseconds(kReadLimitMs), [](const std::string& text) {
        return text.find('\n') != std::string::npos || text.size() >= kMaxRequest;
    });
    return read && !line.empty();
}

void WriteAll(int fd, const std::string& text)
{
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t sent = ::send(fd, text.data() + done, text.size() - done, MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR)
            continue;
        if (sent <= 0)
            return;
        done += static_cast<std::size_t>(sent);
    }
}

}  // namespace

ControlServer::ControlServer(Handler handler, MainThreadPoster poster)
    : m_handler(std::move(handler)), m_poster(std::move(poster))
{
}

ControlServer::~ControlServer()
{
    if (m_thread.joinable()) {
        m_bStopping.store(true);
        const char byte = 0;
        (void)!::write(m_wakePipe[1], &byte, 1);
        m_thread.join();
    }
    for (int fd : {m_listenFd, m_wakePipe[0], m_wakePipe[1]}) {
        if (fd >= 0)
            ::close(fd);
    }
    if (m_listenFd >= 0)
        ::unlink(m_path.c_str());
}

bool ControlServer::Start(std::string* error)
{
    auto fail = [&](const std::string& what) {
        if (error)
            *error = what + ": " + std::strerror(errno);
        return false;
    };
    if (!EnsureRuntimeDir(error))
        return false;
    m_path = ControlSocketPath();
    sockaddr_un address;
    if (!ControlSocketAddress(address)) {
        errno = ENAMETOOLONG;
        return fail("cannot use " + m_path);
    }
    m_listenFd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (m_listenFd < 0)
        return fail("cannot create the control socket");
    // A socket left by an instance that died; the instance lock says we are
    // the only one now.
    ::unlink(m_path.c_str());
    if (::bind(m_listenFd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
        return fail("cannot bind " + m_path);
    // Nobody can connect before listen(), so the mode is right before anyone
    // can reach it.
    if (::chmod(m_path.c_str(), 0600) != 0 || ::listen(m_listenFd, 8) != 0)
        return fail("cannot listen on " + m_path);
    if (::pipe2(m_wakePipe, O_CLOEXEC) != 0)
        return fail("cannot create a pipe");
    m_thread = std::thread([this] { Serve(); });
    return true;
}

void ControlServer::Serve()
{
    while (!m_bStopping.load()) {
        pollfd fds[2] = {{m_listenFd, POLLIN, 0}, {m_wakePipe[0], POLLIN, 0}};
        if (::poll(fds, 2, -1) < 0) {
            if (errno == EINTR)
                continue;
            return;
        }
        if (fds[1].revents != 0)
            return;
        const int fd = ::accept4(m_listenFd, nullptr, nullptr, SOCK_CLOEXEC);
        if (fd < 0)
            continue;
        HandleConnection(fd);
        ::close(fd);
    }
}

void ControlServer::HandleConnection(int fd)
{
    // Another user can neither read nor steer the instance: it is told
    // nothing at all.
    ucred peer{};
    socklen_t length = sizeof peer;
    if (::getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &length) != 0 || peer.uid != ::getuid())
        return;
    std::string line;
    if (!ReadLine(fd, line))
        return;
    const std::optional<ControlRequest> request = ParseRequest(line.substr(0, line.find('\n') + 1));
    ControlAnswer answer;
    if (!request) {
        answer.exitCode = kControlExitFailed;
        answer.err = std::string(_("The running Cadrelle instance does not know this request.\n").utf8_str());
    } else {
        auto promise = std::make_shared<std::promise<ControlAnswer>>();
        std::future<ControlAnswer> future = promise->get_future();
        Handler handler = m_handler;
        ControlRequest copy = *request;
        m_poster([promise, handler, copy] { promise->set_value(handler(copy)); });
        // The main thread may be inside a modal dialog for a while; give up
        // only when the program is ending.
        while (future.wait_for(std::chrono::milliseconds(100)) != std::future_status::ready) {
            if (m_bStopping.load())
                return;
        }
        try {
            answer = future.get();
        } catch (const std::future_error&) {
            return;  // the program ended before the main thread got to it
        }
    }
    WriteAll(fd, FormatAnswer(answer));
}
