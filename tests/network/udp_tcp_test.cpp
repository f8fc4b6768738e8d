// Send UDP MSG and Send TCP MSG against real sockets on loopback.

#include "loopback_peers.h"

using UdpJob = NetworkJobTest;
using TcpJob = NetworkJobTest;

TEST_F(UdpJob, SendsToEachListedAddressInOrderOverIpv4AndIpv6)
{
    UdpReceiver first("127.0.0.1");
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
    const wxString port = PortText(receiver.Port());
    // None of these may reach a resolver: they are refused by their form.
    RunJob(NJobTypeSendUdpMsg, {"m", "0", "0", "999.1.2.3;aa:bb:cc;no spaces allowed;127.0.0.1", port});
    const std::vector<Datagram> got = receiver.Receive();
    ASSERT_EQ(got.size(), 1u);
    EXPECT_EQ(got[0].bytes, "m");
    const ParamList refused[] = {{"m", "0", "0", "127.0.0.1", "http"}, {"m", "0", "0", " ; ", port},
                                 {"m", "0", "0", port}};  // a reloaded job whose empty list was dropped
    for (const ParamList& params : refused)
        RunJob(NJobTypeSendUdpMsg, params);
    EXPECT_TRUE(receiver.Receive(300).empty());
    for (const char* line : {"wxSocketError code: 3 (\"999.1.2.3\" is neither an IP address nor a host name)",
                             "wxSocketError code: 3 (\"aa:bb:cc\" is not an IP address)",
                             "wxSocketError code: 3 (\"no spaces allowed\" is neither",
                             "wxSocketError code: 6 (port \"http\" is not a number from 1 to 65535",
                             "The IP address list is empty; nothing sent", "wxSocketError code: 6 (port \"\""})
        EXPECT_TRUE(log.Has(line)) << line;
}

TEST_F(TcpJob, SendsEveryByteWithItsLogLinesInOrder)
{
    LoopbackServer server;
    std::string hex;  // 300000 times "78 ": "x" as a HEX message
    for (int i = 0; i < 300000; ++i)
        hex += "78 ";
    RunReport report;
    RunJob(NJobTypeSendTcpMsg, {wxString(hex), "1", "127.0.0.1", PortText(server.Port())}, 7, "Test job",
           HarnessContext(), &report);
    EXPECT_EQ(server.Received(1), std::vector<std::string>{std::string(300000, 'x')});
    EXPECT_EQ(report.outcome, RunOutcome::Succeeded);
    EXPECT_EQ(report.details, "300000 bytes sent to 127.0.0.1:" + PortText(server.Port()).utf8_string());
    const std::vector<wxString> lines = log.Lines();
    const char* expected[] = {"--- [JID: 7] Connecting......", "--- [JID: 7] Connected. Sending 300000 bytes of data",
                              "--- [JID: 7] Written 300000 bytes, 0 bytes to do"};
    ASSERT_EQ(lines.size(), std::size(expected));
    for (std::size_t i = 0; i < lines.size(); ++i)
        EXPECT_TRUE(lines[i].EndsWith(expected[i])) << lines[i];
}

TEST_F(TcpJob, ARefusedConnectionOrBadAddressIsLoggedAfterConnecting)
{
    const wxString closed = PortText(ClosedLoopbackPort());
    const std::pair<ParamList, wxString> cases[] = {
        {{"hello", "0", "127.0.0.1", closed}, "wxSocketError code: 2 (connect to 127.0.0.1:" + closed + ": Connection refused"},
        {{"x", "0", "127.0.0.1", "99999"}, "wxSocketError code: 6 (port \"99999\""},
        {{"x", "0", "1.2.3", "80"}, "wxSocketError code: 3 (\"1.2.3\" is neither an IP address nor a host name)"},
        {{"x", "0", "", "80"}, "wxSocketError code: 3 (the address is empty)"},
    };
    for (const auto& [params, line] : cases) {
        SCOPED_TRACE(line);
        const std::size_t before = log.Lines().size();
        RunReport report;
        RunJob(NJobTypeSendTcpMsg, params, 7, "Test job", HarnessContext(), &report);
        // The history keeps the socket's reason as the failure.
        EXPECT_EQ(report.outcome, RunOutcome::Failed);
        const std::vector<wxString> lines = log.Lines();
        ASSERT_EQ(lines.size(), before + 2);
        EXPECT_TRUE(lines[before + 1].Contains(wxString::FromUTF8(report.details))) << report.details;
        EXPECT_TRUE(lines[before].EndsWith("Connecting......"));
        EXPECT_TRUE(lines[before + 1].Contains(line)) << lines[before + 1];
    }
}
