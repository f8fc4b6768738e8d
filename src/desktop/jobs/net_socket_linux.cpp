// POSIX sockets for the network jobs. Blocking calls with time-outs only:
// the callers are job threads, or the headless mode without an event loop.

#include "desktop/jobs/net_socket.h"

#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

static_assert(sizeof(NetPeer::storage) >= sizeof(sockaddr_storage), "NetPeer cannot hold a socket address");

wxString ErrnoText(int err)
{
    char buffer[256];
    // The GNU strerror_r returns the text, not always in `buffer`.
    const char* text = strerror_r(err, buffer, sizeof buffer);
    return wxString::Format("%s (errno %d)", wxString(text), err);
}

NetErrorCode CodeForErrno(int err)
{
    switch (err) {
    case ETIMEDOUT:
    case EAGAIN:
        return NetErrorCode::TimedOut;
    case EADDRNOTAVAIL:
    case EAFNOSUPPORT:
    case EDESTADDRREQ:
        return NetErrorCode::InvalidAddress;
    case ENOMEM:
    case ENOBUFS:
        return NetErrorCode::OutOfMemory;
    case EBADF:
    case ENOTSOCK:
        return NetErrorCode::InvalidSocket;
    default:
        return NetErrorCode::IoError;
    }
}

bool Fail(NetFailure* failure, NetErrorCode code, const wxString& detail)
{
    if (failure) {
        failure->code = code;
        failure->detail = detail;
    }
    return false;
}

bool FailErrno(NetFailure* failure, const wxString& what, int err)
{
    return Fail(failure, CodeForErrno(err), what + ": " + ErrnoText(err));
}

wxString NumericHost(const sockaddr* address, socklen_t length)
{
    char host[NI_MAXHOST] = "";
    if (::getnameinfo(address, length, host, sizeof host, nullptr, 0, NI_NUMERICHOST) != 0)
        return "?";
    return wxString(host);
}

std::uint16_t PortOf(const sockaddr_storage& address)
{
    if (address.ss_family == AF_INET6)
        return ntohs(reinterpret_cast<const sockaddr_in6&>(address).sin6_port);
    return ntohs(reinterpret_cast<const sockaddr_in&>(address).sin_port);
}

void SetPort(sockaddr_storage& address, std::uint16_t port)
{
    if (address.ss_family == AF_INET6)
        reinterpret_cast<sockaddr_in6&>(address).sin6_port = htons(port);
    else
        reinterpret_cast<sockaddr_in&>(address).sin_port = htons(port);
}

void StorePeer(NetPeer* peer, const sockaddr* address, socklen_t length, std::uint16_t port)
{
    sockaddr_storage copy{};
    std::memcpy(&copy, address, length);
    SetPort(copy, port);
    std::memcpy(peer->storage, &copy, length);
    peer->length = length;
    peer->port = port;
    peer->ipv6 = copy.ss_family == AF_INET6;
    peer->host = NumericHost(reinterpret_cast<const sockaddr*>(&copy), length);
}

// Letters, digits, "-", "." and "_" with at least one letter: a name worth
// asking the resolver about. Everything else (blanks, "999.1.2.3", a MAC
// address typed by mistake) is refused without a lookup.
bool LooksLikeHostName(const wxString& host)
{
    if (host.length() > 253)
        return false;
    bool letter = false;
    for (wxUniChar c : host) {
        const wxUniChar::value_type v = c.GetValue();
        const bool isLetter = (v >= 'a' && v <= 'z') || (v >= 'A' && v <= 'Z');
        letter = letter || isLetter;
        if (!isLetter && !(v >= '0' && v <= '9') && v != '-' && v != '.' && v != '_')
            return false;
    }
    return letter;
}

bool Lookup(const wxString& host, int flags, addrinfo** result)
{
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_DGRAM;
    hints.ai_flags = flags;
    return ::getaddrinfo(host.utf8_str(), nullptr, &hints, result) == 0 && *result;
}

class FdHolder {
public:
    explicit FdHolder(int fd) : m_fd(fd) {}
    ~FdHolder()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    FdHolder(const FdHolder&) = delete;
    FdHolder& operator=(const FdHolder&) = delete;
    int Get() const { return m_fd; }
    int Release()
    {
        const int fd = m_fd;
        m_fd = -1;
        return fd;
    }

private:
    int m_fd;
};

bool SetSendTimeout(int fd, int timeoutMs)
{
    timeval tv{};
    tv.tv_sec = timeoutMs / 1000;
    tv.tv_usec = (timeoutMs % 1000) * 1000;
    return ::setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &tv, sizeof tv) == 0;
}

// A UDP send rarely waits; this only bounds a full send buffer.
constexpr int kUdpSendTimeoutMs = 5000;

class PosixUdpSocket final : public UdpSocket {
public:
    explicit PosixUdpSocket(int fd) : m_fd(fd) {}

    NetEndpoint Local() const override
    {
        sockaddr_storage address{};
        socklen_t length = sizeof address;
        if (::getsockname(m_fd.Get(), reinterpret_cast<sockaddr*>(&address), &length) != 0)
            return {};
        return {NumericHost(reinterpret_cast<const sockaddr*>(&address), length), PortOf(address)};
    }

    bool SendTo(const NetPeer& peer, const ByteVector& bytes, NetFailure* failure) override
    {
        for (;;) {
            const ssize_t sent = ::sendto(m_fd.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL,
                                          reinterpret_cast<const sockaddr*>(peer.storage), peer.length);
            if (sent == static_cast<ssize_t>(bytes.size()))
                return true;
            if (sent >= 0)
                return Fail(failure, NetErrorCode::IoError,
                            wxString::Format("sendto %s:%u: only %zd of %zu bytes sent", peer.host,
                                             static_cast<unsigned>(peer.port), sent, bytes.size()));
            if (errno != EINTR)
                return FailErrno(failure,
                                 wxString::Format("sendto %s:%u", peer.host, static_cast<unsigned>(peer.port)),
                                 errno);
        }
    }

private:
    FdHolder m_fd;
};

class PosixTcpConnection final : public TcpConnection {
public:
    explicit PosixTcpConnection(int fd) : m_fd(fd) {}
    ~PosixTcpConnection() override { ::shutdown(m_fd.Get(), SHUT_WR); }

    std::size_t WriteAll(const ByteVector& bytes, NetFailure* failure) override
    {
        std::size_t written = 0;
        while (written < bytes.size()) {
            const ssize_t n = ::send(m_fd.Get(), bytes.data() + written, bytes.size() - written, MSG_NOSIGNAL);
            if (n > 0) {
                written += static_cast<std::size_t>(n);
                continue;
            }
            if (n < 0 && errno == EINTR)
                continue;
            if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
                Fail(failure, NetErrorCode::TimedOut, "send: the peer took no data within the write time-out");
                break;
            }
            FailErrno(failure, "send", n < 0 ? errno : EIO);
            break;
        }
        return written;
    }

private:
    FdHolder m_fd;
};

// Waits for a non-blocking connect to finish; the time-out covers signals too.
bool FinishConnect(int fd, const NetPeer& peer, int timeoutMs, NetFailure* failure)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    const wxString where = wxString::Format("connect to %s:%u", peer.host, static_cast<unsigned>(peer.port));
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now()).count();
        if (left <= 0)
            return Fail(failure, NetErrorCode::TimedOut,
                        wxString::Format("%s: no connection within %d ms", where, timeoutMs));
        pollfd pfd{fd, POLLOUT, 0};
        const int ready = ::poll(&pfd, 1, static_cast<int>(left));
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready < 0)
            return FailErrno(failure, where, errno);
        if (ready == 0)
            continue;  // the deadline check above reports it
        int err = 0;
        socklen_t length = sizeof err;
        if (::getsockopt(fd, SOL_SOCKET, SO_ERROR, &err, &length) != 0)
            err = errno;
        if (err != 0)
            return FailErrno(failure, where, err);
        return true;
    }
}

}  // namespace

bool ResolvePeer(const wxString& text, std::uint16_t port, NetPeer* peer, NetFailure* failure)
{
    wxString host = text;
    host.Trim(true).Trim(false);
    if (host.StartsWith("[") && host.EndsWith("]"))
        host = host.Mid(1, host.length() - 2);
    if (host.empty())
        return Fail(failure, NetErrorCode::InvalidAddress, "the address is empty");

    sockaddr_in v4{};
    if (::inet_pton(AF_INET, host.utf8_str(), &v4.sin_addr) == 1) {
        v4.sin_family = AF_INET;
        StorePeer(peer, reinterpret_cast<const sockaddr*>(&v4), sizeof v4, port);
        return true;
    }
    addrinfo* found = nullptr;
    // IPv6 literals, with a zone ("fe80::1%eth0") if given.
    if (host.Contains(":")) {
        if (!Lookup(host, AI_NUMERICHOST, &found))
            return Fail(failure, NetErrorCode::InvalidAddress,
                        wxString::Format("\"%s\" is not an IP address", host));
    } else {
        if (!LooksLikeHostName(host))
            return Fail(failure, NetErrorCode::InvalidAddress,
                        wxString::Format("\"%s\" is neither an IP address nor a host name", host));
        if (!Lookup(host, 0, &found))
            return Fail(failure, NetErrorCode::NoHost, wxString::Format("host \"%s\" cannot be resolved", host));
    }
    StorePeer(peer, found->ai_addr, found->ai_addrlen, port);
    ::freeaddrinfo(found);
    return true;
}

NetPeer BroadcastPeer(std::uint16_t port)
{
    sockaddr_in v4{};
    v4.sin_family = AF_INET;
    v4.sin_addr.s_addr = htonl(INADDR_BROADCAST);
    NetPeer peer;
    StorePeer(&peer, reinterpret_cast<const sockaddr*>(&v4), sizeof v4, port);
    return peer;
}

std::unique_ptr<UdpSocket> OpenUdpSocket(bool ipv6, bool broadcast, NetFailure* failure)
{
    FdHolder fd(::socket(ipv6 ? AF_INET6 : AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (fd.Get() < 0) {
        FailErrno(failure, "socket", errno);
        return nullptr;
    }
    const int on = 1;
    if (broadcast && ::setsockopt(fd.Get(), SOL_SOCKET, SO_BROADCAST, &on, sizeof on) != 0) {
        Fail(failure, NetErrorCode::OptionError, "SO_BROADCAST: " + ErrnoText(errno));
        return nullptr;
    }
    if (!SetSendTimeout(fd.Get(), kUdpSendTimeoutMs)) {
        Fail(failure, NetErrorCode::OptionError, "SO_SNDTIMEO: " + ErrnoText(errno));
        return nullptr;
    }
    sockaddr_storage any{};
    socklen_t length = 0;
    if (ipv6) {
        auto& a = reinterpret_cast<sockaddr_in6&>(any);
        a.sin6_family = AF_INET6;
        a.sin6_addr = in6addr_any;
        length = sizeof a;
    } else {
        auto& a = reinterpret_cast<sockaddr_in&>(any);
        a.sin_family = AF_INET;
        a.sin_addr.s_addr = htonl(INADDR_ANY);
        length = sizeof a;
    }
    if (::bind(fd.Get(), reinterpret_cast<const sockaddr*>(&any), length) != 0) {
        FailErrno(failure, "bind", errno);
        return nullptr;
    }
    return std::make_unique<PosixUdpSocket>(fd.Release());
}

std::unique_ptr<TcpConnection> ConnectTcp(const NetPeer& peer, int connectTimeoutMs, int writeTimeoutMs,
                                          NetFailure* failure)
{
    FdHolder fd(::socket(peer.ipv6 ? AF_INET6 : AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (fd.Get() < 0) {
        FailErrno(failure, "socket", errno);
        return nullptr;
    }
    if (::connect(fd.Get(), reinterpret_cast<const sockaddr*>(peer.storage), peer.length) != 0) {
        if (errno != EINPROGRESS) {
            FailErrno(failure, wxString::Format("connect to %s:%u", peer.host, static_cast<unsigned>(peer.port)),
                      errno);
            return nullptr;
        }
        if (!FinishConnect(fd.Get(), peer, connectTimeoutMs, failure))
            return nullptr;
    }
    // Writes block (bounded by SO_SNDTIMEO) until everything is sent.
    const int flags = ::fcntl(fd.Get(), F_GETFL);
    if (flags < 0 || ::fcntl(fd.Get(), F_SETFL, flags & ~O_NONBLOCK) != 0 || !SetSendTimeout(fd.Get(), writeTimeoutMs)) {
        Fail(failure, NetErrorCode::OptionError, "socket options: " + ErrnoText(errno));
        return nullptr;
    }
    return std::make_unique<PosixTcpConnection>(fd.Release());
}
