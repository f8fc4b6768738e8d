#pragma once
// Real peers on loopback for the network job tests, each on a port the
// system picks: a UDP receiver, a TCP sink, an HTTP server, a peer that
// never completes a handshake, and a port where nothing listens.

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "harness.h"

struct Datagram {
    std::string bytes;
    std::string destination;  // the address the sender aimed at
};

class UdpReceiver {
public:
    // Binds `address` ("127.0.0.1", "::1", "0.0.0.0") at `port` (0: any free
    // one). IsOpen() tells whether that worked.
    explicit UdpReceiver(const char* address, std::uint16_t port = 0);
    ~UdpReceiver();
    UdpReceiver(const UdpReceiver&) = delete;
    UdpReceiver& operator=(const UdpReceiver&) = delete;
    bool IsOpen() const { return m_fd >= 0; }
    std::uint16_t Port() const { return m_port; }
    // Waits up to `firstMs` for a datagram, then collects further ones until
    // 300 ms pass without one.
    std::vector<Datagram> Receive(int firstMs = 2000);

private:
    int m_fd = -1;
    std::uint16_t m_port = 0;
};

// Accepts connections on 127.0.0.1 on its own thread; serves each one with
// Serve(), which by default keeps everything until the peer closes.
class LoopbackServer {
public:
    LoopbackServer();
    virtual ~LoopbackServer();
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;
    std::uint16_t Port() const { return m_port; }
    // What the first `count` connections brought, waiting up to `waitMs`;
    // fewer if they did not come.
    std::vector<std::string> Received(std::size_t count, int waitMs = 5000);

protected:
    // Call at the end of a derived destructor, so Serve() never runs on a
    // half-destroyed object.
    void Stop();
    virtual std::string Serve(int fd);
    bool Stopping() const { return m_stop.load(); }

private:
    void Loop();
    int m_fd = -1;
    std::uint16_t m_port = 0;
    std::atomic<bool> m_stop{false};
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::string> m_received;
    std::thread m_thread;
};

// Reads each request head and answers per the path:
//   /missing -> 404, /secret -> 401, /moved -> 302 to /final,
//   /silent -> no answer until the client hangs up or the server stops,
//   anything else -> 200.
// A peer that does not speak HTTP (a TLS hello) is dropped.
class HttpServer : public LoopbackServer {
public:
    ~HttpServer() override { Stop(); }
    // Request heads read so far, answered or not.
    int HeadsSeen() const { return m_heads.load(); }

protected:
    std::string Serve(int fd) override;

private:
    std::atomic<int> m_heads{0};
};

// A listener whose accept queue is full: a connect to it stays unanswered.
class StalledListener {
public:
    StalledListener();
    ~StalledListener();
    StalledListener(const StalledListener&) = delete;
    StalledListener& operator=(const StalledListener&) = delete;
    bool IsStalled() const { return m_stalled; }
    std::uint16_t Port() const { return m_port; }

private:
    int m_fd = -1;
    std::uint16_t m_port = 0;
    bool m_stalled = false;
    std::vector<int> m_fillers;
};

// A port on 127.0.0.1 where nothing listens (bound, then closed).
std::uint16_t ClosedLoopbackPort();

// Each network test with its own log and message captures.
class NetworkJobTest : public ::testing::Test {
protected:
    CapturedLog log;
    RecordedMessages messages;
};

std::string Bytes(std::initializer_list<int> values);
inline wxString PortText(std::uint16_t port)
{
    return wxString::Format("%u", static_cast<unsigned>(port));
}

// Broadcast tests run only in a child of the test program started under
// `unshare -rn` with this flag as argv[1] and the parent's NetworkNamespace()
// as argv[2]; only the verified child registers them.
constexpr const char* kNamespaceChildFlag = "--netns-child";
inline std::string NetworkNamespace()  // "net:[<inode>]"; "" if unknown
{
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/ns/net", error).string();
}
void RegisterNamespaceBroadcastTests();
