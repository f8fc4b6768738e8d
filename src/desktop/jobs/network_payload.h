#pragma once
// What the network jobs put on the wire, built from their parameters without
// touching a socket: message payloads, the address list, the port, the MAC
// address and the Wake-on-LAN packet.

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include <wx/string.h>

using ByteVector = std::vector<std::uint8_t>;
using MacBytes = std::array<std::uint8_t, 6>;

// The message in the system's narrow character set, without a terminating
// zero. A message the current locale cannot represent is sent as UTF-8
// rather than dropped.
ByteVector AsciiPayload(const wxString& message);
// Pieces at white space, each read as hexadecimal and giving its low byte;
// a piece that is not hexadecimal gives 0. "48 65 6c 6c 6f" is "Hello".
ByteVector HexPayload(const wxString& message);
// Format "1" is HEX, anything else ASCII.
ByteVector MessagePayload(const wxString& message, const wxString& format);
// One hexadecimal piece as a byte, by the HEX payload's rule.
std::uint8_t HexPieceByte(const wxString& piece);

// Cut at ";", each piece trimmed, empty pieces dropped.
std::vector<wxString> SplitAddressList(const wxString& list);

// A decimal port from 1 to 65535 (blanks around it allowed); anything else
// is no port.
std::optional<std::uint16_t> ParsePort(const wxString& text);

// A MAC address cut at "-" or ":" (trimmed, empty pieces dropped), or
// twelve digits in a row. It is usable when there are exactly six pieces;
// `pieces` is what the bad-address message reports.
struct MacAddress {
    std::size_t pieces = 0;
    MacBytes bytes{};
    bool IsValid() const { return pieces == bytes.size(); }
};
MacAddress ParseMacAddress(const wxString& text);

constexpr std::size_t kWakeOnLanPacketSize = 102;
// Six 0xFF bytes, then the MAC address sixteen times.
ByteVector WakeOnLanPacket(const MacBytes& mac);
