#include "desktop/control/control_server.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "desktop/control/control_socket.h"
#include "desktop/control/runtime_dir.h"

namespace {

using SteadyClock = std::chrono::steady_clock;

// A request is one short line; a caller that sends nothing for this long is
// dropped (it delays nobody meanwhile). The same limit bounds writing an
// answer to a caller that does not read.
constexpr std::chrono::milliseconds kIoLimit{5000};
constexpr std::size_t kMaxRequest = 256;

struct Connection {
    enum class State { Reading, Waiting, Writing };
    int fd = -1;
    pid_t pid = 0;
    std::uint64_t id = 0;
    State state = State::Reading;
    std::string text;  // what came in while reading; what is left to send while writing
    SteadyClock::time_point deadline;
};

}  // namespace

// Answers from the main thread, handed to the serving thread through a pipe
// that wakes its poll().
struct ControlServer::Mailbox {
    std::mutex mutex;
    std::vector<std::pair<std::uint64_t, std::string>> answers;
    std::atomic<bool> stopping{false};
    int wake[2] = {-1, -1};

    ~Mailbox()
    {
        for (int fd : wake) {
            if (fd >= 0)
                ::close(fd);
        }
    }
    void Wake() const
    {
        const char byte = 0;
        (void)!::write(wake[1], &byte, 1);
    }
    void Deliver(std::uint64_t id, std::string answer)
    {
        {
            std::lock_guard<std::mutex> lock(mutex);
            answers.emplace_back(id, std::move(answer));
        }
        Wake();
    }
};

ControlServer::ControlServer(Handler handler, MainThreadPoster poster)
    : m_handler(std::move(handler)), m_poster(std::move(poster)), m_mailbox(std::make_shared<Mailbox>())
{
}

ControlServer::~ControlServer()
{
    if (m_thread.joinable()) {
        m_mailbox->stopping.store(true);
        m_mailbox->Wake();
        m_thread.join();
    }
    if (m_listenFd >= 0) {
        ::close(m_listenFd);
        // Only the socket we bound: never a file someone put in its place.
        struct stat info {};
        if (::lstat(m_path.c_str(), &info) == 0 && S_ISSOCK(info.st_mode) && info.st_ino == m_socketInode)
            ::unlink(m_path.c_str());
    }
}

bool ControlServer::Start(std::string* error)
{
    auto fail = [&](const std::string& what) {
        if (error)
            *error = what;
        return false;
    };
    auto failErrno = [&](const std::string& what) { return fail(what + ": " + std::strerror(errno)); };
    const RuntimeDirChoice dir = ChooseRuntimeDir(true);
    if (dir.path.empty()) {
        std::string reasons;
        for (const std::string& note : dir.notes)
            reasons += "; " + note;
        return fail("no runtime folder that is only yours" + reasons);
    }
    m_path = ControlSocketPath(dir.path);
    sockaddr_un address;
    if (!ControlSocketAddress(m_path, address)) {
        errno = ENAMETOOLONG;
        return failErrno("cannot use " + m_path);
    }
    bool exists = false;
    const std::string problem = ControlSocketProblem(m_path, &exists);
    if (exists && !problem.empty())
        return fail("refusing " + m_path + ": " + problem + "; it was left as it is (remove it to allow control)");
    m_listenFd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (m_listenFd < 0)
        return failErrno("cannot create the control socket");
    if (exists) {
        // A socket left by an instance that died is replaced; one that still
        // answers belongs to a live program and is left alone.
        const int probe = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const bool live =
            probe >= 0 && ::connect(probe, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
        if (probe >= 0)
            ::close(probe);
        if (live)
            return fail("refusing " + m_path + ": another program is listening on it");
        ::unlink(m_path.c_str());
    }
    if (::bind(m_listenFd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
        return failErrno("cannot bind " + m_path);
    struct stat info {};
    if (::lstat(m_path.c_str(), &info) == 0)
        m_socketInode = info.st_ino;
    // Nobody can connect before listen(), so the mode is right before anyone
    // can reach it.
    if (::chmod(m_path.c_str(), 0600) != 0 || ::listen(m_listenFd, 64) != 0)
        return failErrno("cannot listen on " + m_path);
    if (::pipe2(m_mailbox->wake, O_CLOEXEC | O_NONBLOCK) != 0)
        return failErrno("cannot create a pipe");
    m_thread = std::thread([this] { Serve(); });
    return true;
}

void ControlServer::Serve()
{
    std::vector<Connection> connections;  // oldest first
    std::uint64_t nextId = 1;
    auto startReply = [](Connection& connection, const ControlAnswer& answer) {
        connection.state = Connection::State::Writing;
        connection.text = FormatAnswer(answer);
        connection.deadline = SteadyClock::now() + kIoLimit;
    };
    // The oldest caller still to send its request among those `match` picks.
    auto closeOldestReading = [&](auto match) {
        const auto oldest = std::find_if(connections.begin(), connections.end(), [&](const Connection& c) {
            return c.state == Connection::State::Reading && match(c);
        });
        if (oldest == connections.end())
            return false;
        ::close(oldest->fd);
        connections.erase(oldest);
        return true;
    };
    auto accept = [&] {
        for (;;) {
            const int fd = ::accept4(m_listenFd, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
            if (fd < 0)
                return;
            // Another user can neither read nor steer the instance: it is
            // told nothing at all.
            uid_t uid = 0;
            pid_t pid = 0;
            if (!PeerIds(fd, uid, pid) || uid != ::getuid()) {
                ::close(fd);
                continue;
            }
            const auto waiting = std::count_if(connections.begin(), connections.end(), [&](const Connection& c) {
                return c.state == Connection::State::Reading && c.pid == pid;
            });
            if (static_cast<std::size_t>(waiting) >= kIdlePerCaller)
                closeOldestReading([&](const Connection& c) { return c.pid == pid; });
            if (connections.size() >= kMaxConnections && !closeOldestReading([](const Connection&) { return true; })) {
                ::close(fd);  // every slot waits for the main thread
                continue;
            }
            connections.push_back({fd, pid, nextId++, Connection::State::Reading, {}, SteadyClock::now() + kIoLimit});
        }
    };
    // False when the connection is done with.
    auto readRequest = [&](Connection& connection) {
        char buffer[512];
        const ssize_t got = ::read(connection.fd, buffer, sizeof buffer);
        if (got < 0)
            return errno == EINTR || errno == EAGAIN;
        connection.text.append(buffer, static_cast<std::size_t>(got));
        const std::size_t newline = connection.text.find('\n');
        if (newline == std::string::npos && connection.text.size() < kMaxRequest) {
            // A caller that ends without a whole line is dropped unanswered.
            return got > 0;
        }
        const std::optional<ControlRequest> request = ParseRequest(connection.text.substr(0, newline + 1));
        if (!request) {
            startReply(connection,
                       {kControlExitFailed, "",
                        std::string(_("The running Cadrelle instance does not know this request.\n").utf8_str())});
            return true;
        }
        connection.state = Connection::State::Waiting;
        connection.text.clear();
        // The main thread may be inside a modal dialog for a while: the
        // caller waits as long as the program runs.
        m_poster([mailbox = m_mailbox, handler = m_handler, copy = *request, id = connection.id] {
            mailbox->Deliver(id, FormatAnswer(handler(copy)));
        });
        return true;
    };
    auto writeAnswer = [](Connection& connection) {
        const ssize_t sent = ::send(connection.fd, connection.text.data(), connection.text.size(), MSG_NOSIGNAL);
        if (sent < 0)
            return errno == EINTR || errno == EAGAIN;
        connection.text.erase(0, static_cast<std::size_t>(sent));
        return !connection.text.empty();
    };

    std::vector<pollfd> fds;
    while (!m_mailbox->stopping.load()) {
        fds.assign({{m_listenFd, POLLIN, 0}, {m_mailbox->wake[0], POLLIN, 0}});
        auto next = SteadyClock::time_point::max();
        for (const Connection& connection : connections) {
            short events = 0;
            if (connection.state == Connection::State::Reading)
                events = POLLIN;
            else if (connection.state == Connection::State::Writing)
                events = POLLOUT;
            if (events != 0)
                next = std::min(next, connection.deadline);
            // One waiting for the main thread is not watched: a caller that
            // hung up meanwhile would wake poll() without end.
            fds.push_back({events != 0 ? connection.fd : -1, events, 0});
        }
        int timeout = -1;
        if (next != SteadyClock::time_point::max()) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - SteadyClock::now());
            timeout = static_cast<int>(std::max<std::int64_t>(0, left.count()));
        }
        if (::poll(fds.data(), fds.size(), timeout) < 0 && errno != EINTR)
            break;
        // Connections judged now, by their place in `fds` (offset 2); new
        // ones are appended after them.
        std::vector<bool> done(connections.size(), false);
        const auto now = SteadyClock::now();
        for (std::size_t i = 0; i < connections.size(); ++i) {
            Connection& connection = connections[i];
            const short revents = fds[i + 2].revents;
            if (connection.state == Connection::State::Reading && revents != 0)
                done[i] = !readRequest(connection);
            else if (connection.state == Connection::State::Writing && revents != 0)
                done[i] = !writeAnswer(connection);
            if (!done[i] && connection.state != Connection::State::Waiting && now >= connection.deadline)
                done[i] = true;
        }
        if (fds[1].revents != 0) {
            char drain[64];
            while (::read(m_mailbox->wake[0], drain, sizeof drain) > 0) {
            }
            std::vector<std::pair<std::uint64_t, std::string>> answers;
            {
                std::lock_guard<std::mutex> lock(m_mailbox->mutex);
                answers.swap(m_mailbox->answers);
            }
            for (auto& [id, text] : answers) {
                for (std::size_t i = 0; i < connections.size(); ++i) {
                    if (connections[i].id == id && connections[i].state == Connection::State::Waiting) {
                        connections[i].state = Connection::State::Writing;
                        connections[i].text = std::move(text);
                        connections[i].deadline = now + kIoLimit;
                        done[i] = !writeAnswer(connections[i]);
                    }
                }
            }
        }
        std::size_t kept = 0;
        for (std::size_t i = 0; i < connections.size(); ++i) {
            if (done[i])
                ::close(connections[i].fd);
            else
                connections[kept++] = std::move(connections[i]);
        }
        connections.resize(kept);
        if (fds[0].revents != 0)
            accept();
    }
    for (const Connection& connection : connections)
        ::close(connection.fd);
}
