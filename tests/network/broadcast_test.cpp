// Send UDP MSG with Broadcast on, and Wake On Lan, send to 255.255.255.255:
// only ever in a child of this program started under `unshare -rn` (its own
// user and network namespace, loopback up with a broadcast route).

#include "loopback_peers.h"

namespace {

// One test, so that one namespace serves every broadcast case.
class InNamespace : public NetworkJobTest {
public:
    void TestBody() override
    {
        UdpReceiver receiver("0.0.0.0");
        ASSERT_TRUE(receiver.IsOpen());
        const wxString port = PortText(receiver.Port());
        RunJob(NJobTypeSendUdpMsg, {"to all", "0", "1", "127.0.0.1;127.0.0.2", port});
        RunJob(NJobTypeWakeOnLan, {"aa-bb-cc-dd-ff-ee", port});
        std::string packet(6, '\xFF');
        for (int i = 0; i < 16; ++i)
            packet += "\xAA\xBB\xCC\xDD\xFF\xEE";
        const std::vector<Datagram> got = receiver.Receive();
        ASSERT_EQ(got.size(), 2u) << "broadcast ignores the address list";
        EXPECT_EQ(got[0].bytes, "to all");
        EXPECT_EQ(got[1].bytes, packet);
        EXPECT_EQ(got[0].destination, "255.255.255.255");
        EXPECT_EQ(got[1].destination, "255.255.255.255");
        EXPECT_TRUE(log.Has("Testing UDP with peer at 255.255.255.255:" + port));
        EXPECT_FALSE(log.Has("Testing UDP with peer at 127."));

        // Refused ones here rather than outside: a fault that sent anyway
        // would broadcast.
        RunJob(NJobTypeWakeOnLan, {"aa-bb-cc-dd-ff-ee", "70000"});
        EXPECT_TRUE(log.Has("wxSocketError code: 6 (port \"70000\""));
        RunJob(NJobTypeWakeOnLan, {"aa:bb:cc:dd:ee", port});
        RunJob(NJobTypeWakeOnLan, {"aa-bb-cc-dd-ee-ff-01", port});
        RunJob(NJobTypeWakeOnLan, {port});  // an empty MAC is dropped on reload
        const std::vector<RecordedMessage> shown = messages.All();
        ASSERT_EQ(shown.size(), 3u);
        for (std::size_t i = 0; i < shown.size(); ++i) {
            EXPECT_EQ(shown[i].text.substr(0, shown[i].text.find("\n\nJob: Test job (JID 7)\nTime: ")),
                      std::string("Mac Address is not correct, Address size is ") + "571"[i]);
            EXPECT_EQ(shown[i].caption, "Cadrelle");
        }
        EXPECT_TRUE(receiver.Receive(500).empty());
    }
};

}  // namespace

void RegisterNamespaceBroadcastTests()
{
    ::testing::RegisterTest("InNamespace", "BroadcastsReachTheLoopback", nullptr, nullptr, __FILE__, __LINE__,
                            []() -> NetworkJobTest* { return new InNamespace; });
}

TEST(Broadcast, RunsOnlyInsideAPrivateNetworkNamespace)
{
    if (RunProcess({"unshare", "-rn", "ip", "link"}).status != 0)
        GTEST_SKIP() << "`unshare -rn` or `ip` unavailable; broadcasts are tested only in a private namespace";
    const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
    const ProcessResult run = RunProcess(
        {"timeout", "-k", "5", "60", "unshare", "-rn", "sh", "-c",
         "ip link set lo up && ip route add broadcast 255.255.255.255 dev lo && exec \"$0\" \"$@\"", self,
         kNamespaceChildFlag, NetworkNamespace()});
    EXPECT_EQ(run.status, 0) << run.out << run.err;
    EXPECT_NE(run.out.find("[  PASSED  ] 1 test."), std::string::npos) << run.out;

    // Started in this namespace, the child refuses to send anything.
    const ProcessResult refused = RunProcess({"timeout", "-k", "5", "30", self, kNamespaceChildFlag, NetworkNamespace()});
    EXPECT_EQ(refused.status, 3);
    EXPECT_NE(refused.err.find("no broadcast is sent"), std::string::npos) << refused.err;
}
