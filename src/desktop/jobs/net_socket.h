#pragma once
// The few socket operations the network jobs need, behind a small interface
// so that the job code stays portable: net_socket_linux.cpp implements it
// with POSIX sockets (a Winsock version would sit beside it). Everything is
// blocking with explicit time-outs, so it works on any thread and needs no
// event loop (the headless mode has none).

#include <cstddef>
#include <cstdint>
#include <memory>

#include <wx/string.h>

#include "desktop/jobs/network_payload.h"

// Failure codes numbered like the toolkit's socket errors (wxSocketError), so
// that the "wxSocketError code" log lines read the same on every platform.
enum class NetErrorCode : int {
    None = 0,
    InvalidOperation = 1,
    IoError = 2,
    InvalidAddress = 3,
    InvalidSocket = 4,
    NoHost = 5,
    InvalidPort = 6,
    WouldBlock = 7,
    TimedOut = 8,
    OutOfMemory = 9,
    OptionError = 10,
};

struct NetFailure {
    NetErrorCode code = NetErrorCode::None;
    // What went wrong, for the log, e.g. "connect: Connection refused".
    wxString detail;
};

// An address to send to: an IPv4 or IPv6 literal, or a host name resolved
// by the system (names with characters a host name cannot have are refused
// before any lookup).
struct NetPeer {
    wxString host;        // the address as shown in the log
    std::uint16_t port = 0;
    bool ipv6 = false;
    unsigned char storage[128] = {};  // the platform's socket address
    unsigned int length = 0;
};

bool ResolvePeer(const wxString& host, std::uint16_t port, NetPeer* peer, NetFailure* failure);
// The IPv4 limited broadcast address 255.255.255.255 at `port`.
NetPeer BroadcastPeer(std::uint16_t port);

struct NetEndpoint {
    wxString address;
    std::uint16_t port = 0;
};

class UdpSocket {
public:
    virtual ~UdpSocket() = default;
    // The local address and port the socket is bound to.
    virtual NetEndpoint Local() const = 0;
    // Sends the whole datagram once.
    virtual bool SendTo(const NetPeer& peer, const ByteVector& bytes, NetFailure* failure) = 0;
};

// A datagram socket bound to any local address of the family, with
// broadcasting allowed when asked. Null on failure.
std::unique_ptr<UdpSocket> OpenUdpSocket(bool ipv6, bool broadcast, NetFailure* failure);

class TcpConnection {
public:
    virtual ~TcpConnection() = default;
    // Writes all of `bytes` unless an error or the write time-out stops it;
    // returns how many were written.
    virtual std::size_t WriteAll(const ByteVector& bytes, NetFailure* failure) = 0;
};

// Connects within `connectTimeoutMs`; each write may wait `writeTimeoutMs`
// for the peer to take data. Null on failure.
std::unique_ptr<TcpConnection> ConnectTcp(const NetPeer& peer, int connectTimeoutMs, int writeTimeoutMs,
                                          NetFailure* failure);
