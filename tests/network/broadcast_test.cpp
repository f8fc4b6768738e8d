// Send UDP MSG with Broadcast on, and Wake On Lan, send to 255.255.255.255.
// That only ever happens in a child of this program started under
// `unshare -rn`: a user and network namespace of its own, with its loopback
// brought up and a broadcast route on it, and the listener inside too.

#include <iterator>
#include <cstdlib>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "broadcast_namespace.h"
#include "loopback_peers.h"

namespace {

std::string SelfPath()
{
    char path[4096];
    const ssize_t n = ::readlink("/proc/self/exe", path, sizeof path - 1);
    return n > 0 ? std::string(path, static_cast<std::size_t>(n)) : std::string();
}

unsigned long OwnNamespaceInode()
{
    struct stat own {};
    return ::stat("/proc/self/ns/net", &own) == 0 ? static_cast<unsigned long>(own.st_ino) : 0;
}

// Runs `command` in a shell; its exit status, and what it printed.
int RunCommand(const std::string& command, std::string* output)
{
    const ProcessResult run = RunProcess({"sh", "-c", command});
    *output = run.out + run.err;
    return run.status;
}

std::string ExpectedWakeOnLanPacket()
{
    std::string packet(6, '\xFF');
    for (int i = 0; i < 16; ++i)
        packet += Bytes({0xAA, 0xBB, 0xCC, 0xDD, 0xFF, 0xEE});
    return packet;
}

class InNamespace : public NetworkJobTest {
public:
    enum class Case {
        UdpBroadcastIgnoresTheList,
        WakeOnLanPacket,
        WakeOnLanBadPortSendsNothing,
        WakeOnLanBadMacShowsTheMessage,
    };
    explicit InNamespace(Case which) : m_case(which) {}

    void TestBody() override
    {
        UdpReceiver receiver("0.0.0.0");
        ASSERT_TRUE(receiver.IsOpen());
        const wxString port = PortText(receiver.Port());
        switch (m_case) {
        case Case::UdpBroadcastIgnoresTheList: {
            RunJob(NJobTypeSendUdpMsg, {"to all", "0", "1", "127.0.0.1;127.0.0.2", port});
            const std::vector<Datagram> got = receiver.Receive();
            ASSERT_EQ(got.size(), 1u);
            EXPECT_EQ(got[0].bytes, "to all");
            EXPECT_EQ(got[0].destination, "255.255.255.255");
            EXPECT_TRUE(log.Has("Testing UDP with peer at 255.255.255.255:" + port));
            EXPECT_FALSE(log.Has("Testing UDP with peer at 127."));
            break;
        }
        case Case::WakeOnLanPacket: {
            RunJob(NJobTypeWakeOnLan, {"aa-bb-cc-dd-ff-ee", port});
            const std::vector<Datagram> got = receiver.Receive();
            ASSERT_EQ(got.size(), 1u);
            EXPECT_EQ(got[0].bytes, ExpectedWakeOnLanPacket());
            EXPECT_EQ(got[0].destination, "255.255.255.255");
            EXPECT_TRUE(messages.All().empty());
            break;
        }
        case Case::WakeOnLanBadPortSendsNothing:
            RunJob(NJobTypeWakeOnLan, {"aa-bb-cc-dd-ff-ee", "70000"});
            EXPECT_TRUE(receiver.Receive(500).empty());
            EXPECT_TRUE(log.Has("wxSocketError code: 6 (port \"70000\""));
            break;
        case Case::WakeOnLanBadMacShowsTheMessage: {
            // Here rather than outside: a fault that sent anyway would
            // broadcast.
            const struct {
                ParamList params;
                const char* text;
            } cases[] = {
                {{"aa:bb:cc:dd:ee:ff", port}, "Mac Address is not correct, Address size is 1"},
                {{"aa-bb-cc-dd-ee", port}, "Mac Address is not correct, Address size is 5"},
                {{"aa-bb-cc-dd-ee-ff-01", port}, "Mac Address is not correct, Address size is 7"},
                // An empty MAC is dropped on reload; the port moves to its place.
                {{port}, "Mac Address is not correct, Address size is 1"},
            };
            for (const auto& c : cases)
                RunJob(NJobTypeWakeOnLan, c.params);
            const std::vector<RecordedMessage> shown = messages.All();
            ASSERT_EQ(shown.size(), std::size(cases));
            for (std::size_t i = 0; i < shown.size(); ++i) {
                EXPECT_EQ(shown[i].text, cases[i].text);
                EXPECT_EQ(shown[i].caption, "Cadrelle");
            }
            EXPECT_TRUE(receiver.Receive(500).empty());
            EXPECT_FALSE(log.Has("UDP socket"));
            break;
        }
        }
    }

private:
    Case m_case;
};

}  // namespace

void RegisterNamespaceBroadcastTests()
{
    const std::pair<const char*, InNamespace::Case> cases[] = {
        {"UdpBroadcastIgnoresTheList", InNamespace::Case::UdpBroadcastIgnoresTheList},
        {"WakeOnLanPacket", InNamespace::Case::WakeOnLanPacket},
        {"WakeOnLanBadPortSendsNothing", InNamespace::Case::WakeOnLanBadPortSendsNothing},
        {"WakeOnLanBadMacShowsTheMessage", InNamespace::Case::WakeOnLanBadMacShowsTheMessage},
    };
    for (const auto& [name, which] : cases) {
        const InNamespace::Case chosen = which;
        ::testing::RegisterTest("InNamespace", name, nullptr, nullptr, __FILE__, __LINE__,
                                [chosen]() -> NetworkJobTest* { return new InNamespace(chosen); });
    }
}

TEST(Broadcast, RunsOnlyInsideAPrivateNetworkNamespace)
{
    std::string probe;
    if (RunCommand("unshare -rn true", &probe) != 0)
        GTEST_SKIP() << "`unshare -rn` is not permitted here (" << probe
                     << "); broadcasts are tested only inside a private network namespace";
    if (RunCommand("command -v ip", &probe) != 0)
        GTEST_SKIP() << "the `ip` tool (iproute2) is missing; it sets up the private namespace";

    const std::string command =
        "timeout -k 5 60 unshare -rn sh -c "
        "'ip link set lo up && ip route add broadcast 255.255.255.255 dev lo && exec \"$0\" " +
        std::string(kNamespaceChildFlag) + " " + std::to_string(OwnNamespaceInode()) + "' '" + SelfPath() + "'";
    std::string output;
    const int status = RunCommand(command, &output);
    EXPECT_EQ(status, 0) << output;
    EXPECT_NE(output.find("[  PASSED  ] 4 tests."), std::string::npos) << output;
}

TEST(Broadcast, TheChildRefusesToRunInTheNamespaceItWasStartedFrom)
{
    std::string output;
    const std::string command =
        "timeout -k 5 30 '" + SelfPath() + "' " + kNamespaceChildFlag + " " + std::to_string(OwnNamespaceInode());
    EXPECT_EQ(RunCommand(command, &output), 3) << output;
    EXPECT_NE(output.find("no broadcast is sent"), std::string::npos) << output;
}
