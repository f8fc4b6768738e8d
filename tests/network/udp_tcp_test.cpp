// Send UDP MSG and Send TCP MSG against real sockets on loopback.

#include <chrono>
#include <thread>

#include <gtest/gtest.h>

#include "desktop/jobs/network_send.h"
#include "loopback_peers.h"

namespace {

using std::chrono::steady_clock;

// Accepts and never reads, so the sender's buffers fill up.
class NonReadingServer : public LoopbackServer {
public:
    ~NonReadingServer() override { Stop(); }

protected:
    std::string Serve(int) override
    {
        while (!Stopping())
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        return std::string();
    }
};

}  // namespace

using UdpJob = NetworkJobTest;
using TcpJob = NetworkJobTest;

TEST_F(UdpJob, SendsToEachListedAddressInOrderOverIpv4AndIpv6)
{
    UdpReceiver first("127.0.0.1");
    ASSERT_TRUE(first.IsOpen());
    UdpReceiver second("127.0.0.2", first.Port());
    ASSERT_TRUE(second.IsOpen()) << "127.0.0.2 must be usable on lo";
    const wxString port = PortText(first.Port());
    RunJob(NJobTypeSendUdpMsg, {"48 69", "1", "0", "127.0.0.1;;127.0.0.2", port});
    for (UdpReceiver* receiver : {&first, &second}) {
        const std::vector<Datagram> got = receiver->Receive();
        ASSERT_EQ(got.size(), 1u);
        EXPECT_EQ(got[0].bytes, "Hi");
    }
    EXPECT_EQ(log.Matching("[JID: 7] Created UDP socket at 0.0.0.0:").size(), 2u);
    const int toFirst = log.IndexOf("[JID: 7] Testing UDP with peer at 127.0.0.1:" + port);
    ASSERT_GE(toFirst, 0);
    EXPECT_GT(log.IndexOf("Testing UDP with peer at 127.0.0.2:" + port), toFirst);
    EXPECT_EQ(log.Matching("Testing UDP with peer").size(), 2u);

    UdpReceiver six("::1");
    if (!six.IsOpen())
        GTEST_SKIP() << "no IPv6 loopback on this machine";
    RunJob(NJobTypeSendUdpMsg, {"six", "0", "0", "[::1];::1", PortText(six.Port())});
    EXPECT_EQ(six.Receive().size(), 2u);
    EXPECT_EQ(log.Matching("Created UDP socket at :::").size(), 2u);
    EXPECT_TRUE(log.Has("Testing UDP with peer at ::1:" + PortText(six.Port())));
}

TEST_F(UdpJob, BadAddressesAndPortsAreLoggedAndTheRestIsStillSent)
{
    UdpReceiver receiver("127.0.0.1");
    ASSERT_TRUE(receiver.IsOpen());
    const wxString port = PortText(receiver.Port());
    // None of these may reach a resolver: they are refused by their form.
    RunJob(NJobTypeSendUdpMsg, {"m", "0", "0", "999.1.2.3;aa:bb:cc;no spaces allowed;127.0.0.1", port});
    const std::vector<Datagram> got = receiver.Receive();
    ASSERT_EQ(got.size(), 1u);
    EXPECT_EQ(got[0].bytes, "m");
    EXPECT_TRUE(log.Has("wxSocketError code: 3 (\"999.1.2.3\" is neither an IP address nor a host name)"));
    EXPECT_TRUE(log.Has("wxSocketError code: 3 (\"aa:bb:cc\" is not an IP address)"));
    EXPECT_TRUE(log.Has("wxSocketError code: 3 (\"no spaces allowed\" is neither"));

    const struct {
        ParamList params;
        const char* line;
    } refused[] = {
        {{"m", "0", "0", "127.0.0.1", "http"}, "wxSocketError code: 6 (port \"http\" is not a number from 1 to 65535"},
        {{"m", "0", "0", "127.0.0.1", "0"}, "wxSocketError code: 6 (port \"0\""},
        {{"m", "0", "0", " ; ", port}, "The IP address list is empty; nothing sent"},
        // A reloaded job whose empty list was dropped has only four parameters.
        {{"m", "0", "0", port}, "wxSocketError code: 6 (port \"\""},
    };
    for (const auto& r : refused) {
        SCOPED_TRACE(r.line);
        RunJob(NJobTypeSendUdpMsg, r.params);
        EXPECT_TRUE(log.Has(r.line));
    }
    EXPECT_TRUE(receiver.Receive(300).empty());
}

TEST_F(TcpJob, SendsEveryByteWithItsLogLinesInOrder)
{
    LoopbackServer server;
    const wxString port = PortText(server.Port());
    const std::string big(300000, 'x');
    std::string hex;  // the same bytes as a HEX message: "78 78 ..."
    for (std::size_t i = 0; i < big.size(); ++i)
        hex += "78 ";
    RunJob(NJobTypeSendTcpMsg, {wxString(hex), "1", "127.0.0.1", port}, 7);
    EXPECT_EQ(server.Received(1), std::vector<std::string>{big});

    const std::vector<wxString> lines = log.Lines();
    const std::vector<wxString> expected = {
        "--- [JID: 7] Connecting......",
        "--- [JID: 7] Connected. Sending 300000 bytes of data",
        "--- [JID: 7] Written 300000 bytes, 0 bytes to do",
    };
    ASSERT_EQ(lines.size(), expected.size());
    for (std::size_t i = 0; i < lines.size(); ++i)
        EXPECT_TRUE(lines[i].EndsWith(expected[i])) << lines[i];
}

TEST_F(TcpJob, ARefusedConnectionOrBadAddressIsLoggedAfterConnecting)
{
    const std::uint16_t closed = ClosedLoopbackPort();
    const struct {
        ParamList params;
        wxString line;
    } cases[] = {
        {{"hello", "0", "127.0.0.1", PortText(closed)},
         "wxSocketError code: 2 (connect to 127.0.0.1:" + PortText(closed) + ": Connection refused"},
        {{"x", "0", "127.0.0.1", "99999"}, "wxSocketError code: 6 (port \"99999\""},
        {{"x", "0", "1.2.3", "80"}, "wxSocketError code: 3 (\"1.2.3\" is neither an IP address nor a host name)"},
        {{"x", "0", "", "80"}, "wxSocketError code: 3 (the address is empty)"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        const std::size_t before = log.Lines().size();
        const auto start = steady_clock::now();
        RunJob(NJobTypeSendTcpMsg, c.params);
        EXPECT_LT(steady_clock::now() - start, std::chrono::seconds(2));
        const std::vector<wxString> lines = log.Lines();
        ASSERT_EQ(lines.size(), before + 2);
        EXPECT_TRUE(lines[before].EndsWith("Connecting......"));
        EXPECT_TRUE(lines[before + 1].Contains(c.line)) << lines[before + 1];
    }
}

TEST_F(TcpJob, PeerThatNeverAnswersTimesOut)
{
    StalledListener stalled;
    if (!stalled.IsStalled())
        GTEST_SKIP() << "the kernel answered every connect; cannot make a silent peer";
    const auto start = steady_clock::now();
    EXPECT_FALSE(SendTcp(4, "127.0.0.1", stalled.Port(), ByteVector{1, 2, 3}, 300));
    const auto took = steady_clock::now() - start;
    EXPECT_GE(took, std::chrono::milliseconds(290));
    EXPECT_LT(took, std::chrono::seconds(3));
    EXPECT_TRUE(log.Has("wxSocketError code: 8 (connect to 127.0.0.1:"));
    EXPECT_TRUE(log.Has("no connection within 300 ms"));
}

TEST_F(TcpJob, PeerThatStopsReadingEndsInAWriteError)
{
    NonReadingServer server;
    const ByteVector lots(64u << 20, 'z');
    const auto start = steady_clock::now();
    EXPECT_FALSE(SendTcp(4, "127.0.0.1", server.Port(), lots, 1000, 300));
    EXPECT_LT(steady_clock::now() - start, std::chrono::seconds(5));
    const std::vector<wxString> written = log.Matching("Written ");
    ASSERT_EQ(written.size(), 1u);
    EXPECT_FALSE(written[0].EndsWith(", 0 bytes to do")) << written[0];
    EXPECT_GT(log.IndexOf("Socket Write error"), log.IndexOf("Written "));
    EXPECT_TRUE(log.Has("wxSocketError code: 8 (send: "));
}
