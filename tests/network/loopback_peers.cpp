#include "loopback_peers.h"

#include <arpa/inet.h>
#include <chrono>
#include <cstring>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

int MsLeft(Clock::time_point deadline)
{
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return left > 0 ? static_cast<int>(left) : 0;
}

bool WaitReadable(int fd, int ms)
{
    pollfd pfd{fd, POLLIN, 0};
    return ::poll(&pfd, 1, ms) > 0;
}

std::uint16_t LocalPort(int fd)
{
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
    if (address.ss_family == AF_INET6)
        return ntohs(reinterpret_cast<sockaddr_in6&>(address).sin6_port);
    return ntohs(reinterpret_cast<sockaddr_in&>(address).sin_port);
}

int LoopbackTcpListener(int backlog)
{
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (fd < 0 || ::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(fd, backlog) != 0) {
        if (fd >= 0)
            ::close(fd);
        return -1;
    }
    return fd;
}

}  // namespace

UdpReceiver::UdpReceiver(const char* address, std::uint16_t port)
{
    // Numeric addresses only: nothing here may ask a resolver.
    addrinfo hints{};
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    hints.ai_socktype = SOCK_DGRAM;
    addrinfo* found = nullptr;
    if (::getaddrinfo(address, std::to_string(port).c_str(), &hints, &found) != 0)
        return;
    const int fd = ::socket(found->ai_family, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    // The destination address of each (IPv4) datagram tells a broadcast apart.
    ::setsockopt(fd, IPPROTO_IP, IP_PKTINFO, &on, sizeof on);
    if (fd >= 0 && ::bind(fd, found->ai_addr, found->ai_addrlen) == 0) {
        m_fd = fd;
        m_port = LocalPort(fd);
    } else if (fd >= 0) {
        ::close(fd);
    }
    ::freeaddrinfo(found);
}

UdpReceiver::~UdpReceiver()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

std::vector<Datagram> UdpReceiver::Receive(int firstMs)
{
    std::vector<Datagram> datagrams;
    int waitMs = firstMs;
    while (m_fd >= 0 && WaitReadable(m_fd, waitMs)) {
        char buffer[65536];
        char control[256];
        iovec io{buffer, sizeof buffer};
        msghdr message{};
        message.msg_iov = &io;
        message.msg_iovlen = 1;
        message.msg_control = control;
        message.msg_controllen = sizeof control;
        const ssize_t n = ::recvmsg(m_fd, &message, 0);
        if (n < 0)
            break;
        Datagram datagram{std::string(buffer, static_cast<std::size_t>(n)), std::string()};
        for (cmsghdr* c = CMSG_FIRSTHDR(&message); c; c = CMSG_NXTHDR(&message, c)) {
            if (c->cmsg_level != IPPROTO_IP || c->cmsg_type != IP_PKTINFO)
                continue;
            in_pktinfo info;
            char text[INET_ADDRSTRLEN] = "";
            std::memcpy(&info, CMSG_DATA(c), sizeof info);
            datagram.destination = ::inet_ntop(AF_INET, &info.ipi_addr, text, sizeof text) ? text : "";
        }
        datagrams.push_back(std::move(datagram));
        waitMs = 300;
    }
    return datagrams;
}

LoopbackServer::LoopbackServer()
{
    m_fd = LoopbackTcpListener(16);
    if (m_fd < 0)
        return;
    m_port = LocalPort(m_fd);
    m_thread = std::thread([this] { Loop(); });
}

LoopbackServer::~LoopbackServer()
{
    Stop();
}

void LoopbackServer::Stop()
{
    m_stop = true;
    if (m_thread.joinable())
        m_thread.join();
    if (m_fd >= 0)
        ::close(m_fd);
    m_fd = -1;
}

void LoopbackServer::Loop()
{
    while (!m_stop) {
        if (!WaitReadable(m_fd, 50))
            continue;
        const int client = ::accept4(m_fd, nullptr, nullptr, SOCK_CLOEXEC);
        if (client < 0)
            continue;
        std::string got = Serve(client);
        ::close(client);
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_received.push_back(std::move(got));
        }
        m_changed.notify_all();
    }
}

std::string LoopbackServer::Serve(int fd)
{
    std::string got;
    const auto deadline = Clock::now() + std::chrono::seconds(10);
    while (!m_stop && MsLeft(deadline) > 0) {
        if (!WaitReadable(fd, 50))
            continue;
        char buffer[65536];
        const ssize_t n = ::recv(fd, buffer, sizeof buffer, 0);
        if (n <= 0)
            break;
        got.append(buffer, static_cast<std::size_t>(n));
    }
    return got;
}

std::vector<std::string> LoopbackServer::Received(std::size_t count, int waitMs)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait_for(lock, std::chrono::milliseconds(waitMs), [&] { return m_received.size() >= count; });
    return std::vector<std::string>(m_received.begin(),
                                    m_received.begin() + static_cast<long>(std::min(count, m_received.size())));
}

std::string HttpServer::Serve(int fd)
{
    std::string head;
    const auto deadline = Clock::now() + std::chrono::seconds(5);
    while (head.find("\r\n\r\n") == std::string::npos && !Stopping() && MsLeft(deadline) > 0) {
        if (!WaitReadable(fd, 50))
            continue;
        char buffer[4096];
        const ssize_t n = ::recv(fd, buffer, sizeof buffer, 0);
        if (n <= 0)
            return head;
        head.append(buffer, static_cast<std::size_t>(n));
        // Not HTTP (a TLS hello starts with 0x16): hang up.
        if (!(head[0] >= 'A' && head[0] <= 'Z'))
            return head;
    }
    if (head.find("\r\n\r\n") == std::string::npos)
        return head;
    ++m_heads;
    const std::string path = head.substr(0, head.find("\r\n"));
    if (path.find(" /silent ") != std::string::npos) {
        // Held open until the client gives up or the server stops.
        char byte = 0;
        while (!Stopping() && !(WaitReadable(fd, 20) && ::recv(fd, &byte, 1, 0) <= 0)) {
        }
        return head;
    }
    static const std::pair<const char*, const char*> kAnswers[] = {
        {" /missing ", "404 Not Found\r\n"},
        {" /secret ", "401 Unauthorized\r\nWWW-Authenticate: Basic realm=\"x\"\r\n"},
        {" /moved ", "302 Found\r\nLocation: /final\r\n"},
    };
    std::string answer = "200 OK\r\nContent-Type: text/html\r\n";
    for (const auto& [where, what] : kAnswers) {
        if (path.find(where) != std::string::npos)
            answer = what;
    }
    const std::string body = answer[0] == '2' ? "<html>a page</html>\r\n" : "";
    answer = "HTTP/1.1 " + answer + "Content-Length: " + std::to_string(body.size()) +
             "\r\nConnection: close\r\n\r\n" + body;
    ::send(fd, answer.data(), answer.size(), MSG_NOSIGNAL);
    return head;
}

StalledListener::StalledListener()
{
    m_fd = LoopbackTcpListener(0);
    if (m_fd < 0)
        return;
    m_port = LocalPort(m_fd);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(m_port);
    // Connect until one stays unanswered: the queue is then full.
    for (int i = 0; i < 8 && !m_stalled; ++i) {
        const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        m_fillers.push_back(fd);
        if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0)
            continue;
        pollfd pfd{fd, POLLOUT, 0};
        m_stalled = ::poll(&pfd, 1, 200) == 0;
    }
}

StalledListener::~StalledListener()
{
    for (int fd : m_fillers)
        ::close(fd);
    if (m_fd >= 0)
        ::close(m_fd);
}

std::uint16_t ClosedLoopbackPort()
{
    const int fd = LoopbackTcpListener(1);
    const std::uint16_t port = LocalPort(fd);
    ::close(fd);
    return port;
}

std::string Bytes(std::initializer_list<int> values)
{
    std::string bytes;
    for (int v : values)
        bytes += static_cast<char>(v);
    return bytes;
}
