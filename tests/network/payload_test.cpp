// The bytes the network jobs build from their parameters, without sockets.

#include <gtest/gtest.h>

#include "desktop/jobs/network_payload.h"

namespace {

std::string AsString(const ByteVector& bytes)
{
    return std::string(bytes.begin(), bytes.end());
}

}  // namespace

TEST(NetworkPayload, MessagesInAsciiAndHex)
{
    const struct {
        const char* message;
        const char* format;
        std::string expected;
    } cases[] = {
        {"  keeps its blanks ", "0", "  keeps its blanks "},
        {"48 65 6c 6c 6f", "1", "Hello"},
        {"01 02 ff", "1", "\x01\x02\xFF"},
        {"  4F\t4b\r\n", "1", "OK"},
        // The low byte of a longer number; not hexadecimal gives 0, and a
        // "0x" of one's own makes the piece not hexadecimal.
        {"1ff 123456789abcdef01 zz 0x10 4g", "1", std::string("\xFF\x01\0\0\0", 5)},
        {"   ", "1", ""},
        {"", "0", ""},
        // Any format other than "1" is ASCII.
        {"41", "2", "41"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "message \"" << c.message << "\" format " << c.format);
        EXPECT_EQ(AsString(MessagePayload(c.message, c.format)), c.expected);
    }
}

TEST(NetworkPayload, TextTheLocaleCannotHoldIsSentAsUtf8)
{
    // The test program keeps the "C" locale, which has no ü or ß.
    EXPECT_EQ(AsString(AsciiPayload(wxString::FromUTF8("gr\xC3\xBC\xC3\x9F"))), "gr\xC3\xBC\xC3\x9F");
}

TEST(NetworkPayload, AddressListsAndPorts)
{
    EXPECT_EQ(SplitAddressList(" 127.0.0.1 ;;127.0.0.2; "), (std::vector<wxString>{"127.0.0.1", "127.0.0.2"}));
    EXPECT_EQ(SplitAddressList("::1;host.example"), (std::vector<wxString>{"::1", "host.example"}));
    EXPECT_TRUE(SplitAddressList(" ; ;").empty());

    const struct {
        const char* text;
        int port;  // 0: not a port
    } ports[] = {
        {"7788", 7788}, {" 9 ", 9}, {"65535", 65535}, {"1", 1}, {"00080", 80},
        {"", 0}, {"0", 0}, {"65536", 0}, {"-1", 0}, {"80x", 0}, {"http", 0}, {"123456", 0}, {"8 0", 0},
    };
    for (const auto& p : ports) {
        SCOPED_TRACE(p.text);
        const std::optional<std::uint16_t> port = ParsePort(p.text);
        EXPECT_EQ(port.has_value(), p.port != 0);
        if (port) {
            EXPECT_EQ(*port, p.port);
        }
    }
}

TEST(NetworkPayload, MacAddressesAreCutAtDashesOrColons)
{
    const struct {
        const char* text;
        std::size_t pieces;
    } cases[] = {
        {"aa-bb-cc-dd-ff-ee", 6},
        {" AA - bb --cc-dd-ee-01 ", 6},
        {"aa:bb:cc:dd:ee:ff", 6},
        {"aabbccddeeff", 6},
        {"aabbccddeeff00", 1},
        {"aa:bb:cc:dd:ee", 5},
        {"aa-bb-cc-dd-ee", 5},
        {"aa-bb-cc-dd-ee-ff-00", 7},
        {"", 0},
        {"---", 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const MacAddress mac = ParseMacAddress(c.text);
        EXPECT_EQ(mac.pieces, c.pieces);
        EXPECT_EQ(mac.IsValid(), c.pieces == 6);
    }
    EXPECT_EQ(ParseMacAddress(" AA - bb --cc-dd-ee-01 ").bytes, (MacBytes{0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0x01}));
    EXPECT_EQ(ParseMacAddress("AA:bb:cc:dd:ee:01").bytes, (MacBytes{0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0x01}));
    EXPECT_EQ(ParseMacAddress("AAbbccddee01").bytes, (MacBytes{0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0x01}));
    // A piece that is not hexadecimal is a zero byte, as in a HEX message.
    EXPECT_EQ(ParseMacAddress("aa-zz-cc-dd-ee-ff").bytes, (MacBytes{0xAA, 0x00, 0xCC, 0xDD, 0xEE, 0xFF}));
}
