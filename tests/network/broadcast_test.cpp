// Send UDP MSG with Broadcast on, and Wake On Lan, send to 255.255.255.255.
// That only ever happens in a child of this program started under
// `unshare -rn`: a user and network namespace of its own, with its loopback
// brought up and a broadcast route on it, and the listener inside too.

#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "loopback_peers.h"

namespace {

std::string SelfPath()
{
    return std::filesystem::read_symlink("/proc/self/exe").string();
}

ProcessResult Shell(const std::string& command)
{
    return RunProcess({"sh", "-c", command});
}

// One test, so that one namespace serves every broadcast case.
class InNamespace : public NetworkJobTest {
public:
    void TestBody() override
    {
        UdpReceiver receiver("0.0.0.0");
        ASSERT_TRUE(receiver.IsOpen());
        const wxString port = PortText(receiver.Port());

        RunJob(NJobTypeSendUdpMsg, {"to all", "0", "1", "127.0.0.1;127.0.0.2", port});
        std::vector<Datagram> got = receiver.Receive();
        ASSERT_EQ(got.size(), 1u) << "broadcast ignores the address list";
        EXPECT_EQ(got[0].bytes, "to all");
        EXPECT_EQ(got[0].destination, "255.255.255.255");
        EXPECT_TRUE(log.Has("Testing UDP with peer at 255.255.255.255:" + port));
        EXPECT_FALSE(log.Has("Testing UDP with peer at 127."));

        RunJob(NJobTypeWakeOnLan, {"aa-bb-cc-dd-ff-ee", port});
        got = receiver.Receive();
        std::string packet(6, '\xFF');
        for (int i = 0; i < 16; ++i)
            packet += Bytes({0xAA, 0xBB, 0xCC, 0xDD, 0xFF, 0xEE});
        ASSERT_EQ(got.size(), 1u);
        EXPECT_EQ(got[0].bytes, packet);
        EXPECT_EQ(got[0].destination, "255.255.255.255");

        // Refused ones are tested here rather than outside: a fault that sent
        // anyway would broadcast.
        RunJob(NJobTypeWakeOnLan, {"aa-bb-cc-dd-ff-ee", "70000"});
        EXPECT_TRUE(log.Has("wxSocketError code: 6 (port \"70000\""));
        const struct {
            ParamList params;
            const char* text;
        } badMacs[] = {
            {{"aa:bb:cc:dd:ee:ff", port}, "Mac Address is not correct, Address size is 1"},
            {{"aa-bb-cc-dd-ee-ff-01", port}, "Mac Address is not correct, Address size is 7"},
            // An empty MAC is dropped on reload; the port moves to its place.
            {{port}, "Mac Address is not correct, Address size is 1"},
        };
        for (const auto& c : badMacs)
            RunJob(NJobTypeWakeOnLan, c.params);
        const std::vector<RecordedMessage> shown = messages.All();
        ASSERT_EQ(shown.size(), std::size(badMacs));
        for (std::size_t i = 0; i < shown.size(); ++i) {
            EXPECT_EQ(shown[i].text, badMacs[i].text);
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
    if (Shell("unshare -rn true").status != 0 || Shell("command -v ip").status != 0)
        GTEST_SKIP() << "`unshare -rn` or `ip` unavailable; broadcasts are tested only in a private namespace";
    const ProcessResult run = RunProcess(
        {"timeout", "-k", "5", "60", "unshare", "-rn", "sh", "-c",
         "ip link set lo up && ip route add broadcast 255.255.255.255 dev lo && exec \"$0\" \"$@\"", SelfPath(),
         kNamespaceChildFlag, NetworkNamespace()});
    EXPECT_EQ(run.status, 0) << run.out << run.err;
    EXPECT_NE(run.out.find("[  PASSED  ] 1 test."), std::string::npos) << run.out;

    // Started in this namespace, the child refuses to send anything.
    const ProcessResult refused = RunProcess({"timeout", "-k", "5", "30", SelfPath(), kNamespaceChildFlag,
                                              NetworkNamespace()});
    EXPECT_EQ(refused.status, 3);
    EXPECT_NE(refused.err.find("no broadcast is sent"), std::string::npos) << refused.err;
}
