#pragma once
// Real peers on loopback for the network job tests, on ports the system picks.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "harness.h"

inline bool Readable(int fd, int ms)
{
    pollfd p{fd, POLLIN, 0};
    return ::poll(&p, 1, ms) > 0;
}

// A socket bound to a numeric `address` (no resolver is ever asked); `port`
// 0 takes a free one and returns it. -1 if that failed.
inline int BindNumeric(int type, const char* address, std::uint16_t& port)
{
    sockaddr_storage a{};
    auto& v4 = reinterpret_cast<sockaddr_in&>(a);
    auto& v6 = reinterpret_cast<sockaddr_in6&>(a);
    socklen_t length = sizeof v4;
    a.ss_family = AF_INET;
    if (::inet_pton(AF_INET6, address, &v6.sin6_addr) == 1) {
        a.ss_family = AF_INET6;
        length = sizeof v6;
    } else {
        ::inet_pton(AF_INET, address, &v4.sin_addr);
    }
    v4.sin_port = htons(port);  // at the same place in both
    const int fd = ::socket(a.ss_family, type | SOCK_CLOEXEC, 0);
    if (fd < 0 || ::bind(fd, reinterpret_cast<sockaddr*>(&a), length) != 0 ||
        (type == SOCK_STREAM && ::listen(fd, 16) != 0)) {
        if (fd >= 0)
            ::close(fd);
        return -1;
    }
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&a), &length);
    port = ntohs(v4.sin_port);
    return fd;
}

struct Datagram {
    std::string bytes;
    std::string destination;  // the address the sender aimed at (IPv4)
};

class UdpReceiver {
public:
    explicit UdpReceiver(const char* address, std::uint16_t port = 0) : m_port(port)
    {
        m_fd = BindNumeric(SOCK_DGRAM, address, m_port);
        const int on = 1;
        ::setsockopt(m_fd, IPPROTO_IP, IP_PKTINFO, &on, sizeof on);
    }
    ~UdpReceiver() { ::close(m_fd); }
    bool IsOpen() const { return m_fd >= 0; }
    std::uint16_t Port() const { return m_port; }
    // Up to `firstMs` for the first datagram, then until 300 ms bring none.
    std::vector<Datagram> Receive(int firstMs = 2000)
    {
        std::vector<Datagram> got;
        for (int wait = firstMs; m_fd >= 0 && Readable(m_fd, wait); wait = 300) {
            char buffer[65536], control[256], text[INET_ADDRSTRLEN] = "";
            iovec io{buffer, sizeof buffer};
            msghdr m{nullptr, 0, &io, 1, control, sizeof control, 0};
            const ssize_t n = ::recvmsg(m_fd, &m, 0);
            if (n < 0)
                break;
            for (cmsghdr* c = CMSG_FIRSTHDR(&m); c; c = CMSG_NXTHDR(&m, c)) {
                in_pktinfo info;
                std::memcpy(&info, CMSG_DATA(c), sizeof info);
                if (c->cmsg_level == IPPROTO_IP && c->cmsg_type == IP_PKTINFO)
                    ::inet_ntop(AF_INET, &info.ipi_addr, text, sizeof text);
            }
            got.push_back({std::string(buffer, static_cast<std::size_t>(n)), text});
        }
        return got;
    }

private:
    int m_fd;
    std::uint16_t m_port;
};

// Accepts connections on 127.0.0.1 one after another on its own thread. A
// sink keeps all each one brings until it closes; an HTTP peer reads the
// request head and answers by path: /missing 404, /secret 401, /moved 302 to
// /final, /silent nothing until the client hangs up, anything else 200.
class LoopbackServer {
public:
    explicit LoopbackServer(bool http = false) : m_http(http)
    {
        m_fd = BindNumeric(SOCK_STREAM, "127.0.0.1", m_port);
        m_thread = std::thread([this] {
            while (!m_stop) {
                const int client = Readable(m_fd, 50) ? ::accept4(m_fd, nullptr, nullptr, SOCK_CLOEXEC) : -1;
                if (client < 0)
                    continue;
                std::string got = Serve(client);
                ::close(client);
                std::lock_guard<std::mutex> lock(m_mutex);
                m_received.push_back(std::move(got));
                m_changed.notify_all();
            }
        });
    }
    ~LoopbackServer()
    {
        m_stop = true;
        m_thread.join();
        ::close(m_fd);
    }
    std::uint16_t Port() const { return m_port; }
    // What the first `count` connections brought; fewer if they did not come.
    std::vector<std::string> Received(std::size_t count)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait_for(lock, std::chrono::seconds(5), [&] { return m_received.size() >= count; });
        return std::vector<std::string>(m_received.begin(), m_received.begin() + std::min(count, m_received.size()));
    }
    std::atomic<int> heads{0};  // HTTP request heads read, answered or not

private:
    std::string Serve(int fd)
    {
        std::string got;
        char buffer[65536];
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (!m_stop && std::chrono::steady_clock::now() < deadline &&
               !(m_http && got.find("\r\n\r\n") != std::string::npos)) {
            if (!Readable(fd, 50))
                continue;
            const ssize_t n = ::recv(fd, buffer, sizeof buffer, 0);
            if (n <= 0)
                return got;
            got.append(buffer, static_cast<std::size_t>(n));
        }
        if (!m_http || got.find("\r\n\r\n") == std::string::npos)
            return got;
        ++heads;
        const std::string line = got.substr(0, got.find("\r\n"));
        const auto has = [&](const char* path) { return line.find(path) != std::string::npos; };
        while (has(" /silent ") && !m_stop && !(Readable(fd, 20) && ::recv(fd, buffer, 1, 0) <= 0)) {
        }
        std::string answer = has(" /missing ") ? "404 Not Found\r\n"
                             : has(" /secret ") ? "401 Unauthorized\r\nWWW-Authenticate: Basic realm=\"x\"\r\n"
                             : has(" /moved ")  ? "302 Found\r\nLocation: /final\r\n"
                                                : "200 OK\r\nContent-Type: text/html\r\n";
        const std::string body = answer[0] == '2' ? "<html>a page</html>" : "";
        answer = "HTTP/1.1 " + answer + "Content-Length: " + std::to_string(body.size()) +
                 "\r\nConnection: close\r\n\r\n" + body;
        if (!has(" /silent "))
            ::send(fd, answer.data(), answer.size(), MSG_NOSIGNAL);
        return got;
    }

    const bool m_http;
    int m_fd = -1;
    std::uint16_t m_port = 0;
    std::atomic<bool> m_stop{false};
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::string> m_received;
    std::thread m_thread;
};

// A port on 127.0.0.1 where nothing listens (bound, then closed).
inline std::uint16_t ClosedLoopbackPort()
{
    std::uint16_t port = 0;
    ::close(BindNumeric(SOCK_STREAM, "127.0.0.1", port));
    return port;
}

class NetworkJobTest : public ::testing::Test {
protected:
    CapturedLog log;
    RecordedMessages messages;
};

inline wxString PortText(std::uint16_t port)
{
    return wxString::Format("%u", static_cast<unsigned>(port));
}

// Broadcast tests run only in a child of the test program started under
// `unshare -rn` with this flag and the parent's NetworkNamespace(); only the
// verified child registers them.
constexpr const char* kNamespaceChildFlag = "--netns-child";
inline std::string NetworkNamespace()  // "net:[<inode>]"; "" if unknown
{
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/ns/net", error).string();
}
void RegisterNamespaceBroadcastTests();
