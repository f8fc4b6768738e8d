#include "desktop/jobs/network_payload.h"

#include <wx/strconv.h>
#include <wx/tokenzr.h>

namespace {

int HexDigitValue(wxUniChar c)
{
    const wxUniChar::value_type v = c.GetValue();
    if (v >= '0' && v <= '9')
        return static_cast<int>(v - '0');
    if (v >= 'a' && v <= 'f')
        return static_cast<int>(v - 'a' + 10);
    if (v >= 'A' && v <= 'F')
        return static_cast<int>(v - 'A' + 10);
    return -1;
}

// Cut at any of `separators`, trim each piece, drop the empty ones.
std::vector<wxString> Pieces(const wxString& text, const wxString& separators)
{
    std::vector<wxString> pieces;
    wxStringTokenizer tokens(text, separators, wxTOKEN_STRTOK);
    while (tokens.HasMoreTokens()) {
        wxString piece = tokens.GetNextToken();
        piece.Trim(true).Trim(false);
        if (!piece.empty())
            pieces.push_back(piece);
    }
    return pieces;
}

}  // namespace

ByteVector AsciiPayload(const wxString& message)
{
    if (message.empty())
        return {};
    wxScopedCharBuffer narrow = message.mb_str(wxConvLibc);
    if (narrow.length() == 0)
        narrow = message.utf8_str();
    const auto* data = reinterpret_cast<const std::uint8_t*>(narrow.data());
    return ByteVector(data, data + narrow.length());
}

std::uint8_t HexPieceByte(const wxString& piece)
{
    // The piece is read as "0x" followed by it, so it must be hexadecimal
    // digits only; its low byte is its last two digits, which also keeps a
    // long piece from overflowing.
    int low = 0;
    int high = 0;
    for (wxUniChar c : piece) {
        const int digit = HexDigitValue(c);
        if (digit < 0)
            return 0;
        high = low;
        low = digit;
    }
    return static_cast<std::uint8_t>(high * 16 + low);
}

ByteVector HexPayload(const wxString& message)
{
    ByteVector bytes;
    for (const wxString& piece : Pieces(message, " \t\r\n"))
        bytes.push_back(HexPieceByte(piece));
    return bytes;
}

ByteVector MessagePayload(const wxString& message, const wxString& format)
{
    return format == "1" ? HexPayload(message) : AsciiPayload(message);
}

std::vector<wxString> SplitAddressList(const wxString& list)
{
    return Pieces(list, ";");
}

std::optional<std::uint16_t> ParsePort(const wxString& text)
{
    wxString trimmed = text;
    trimmed.Trim(true).Trim(false);
    if (trimmed.empty() || trimmed.length() > 5)
        return std::nullopt;
    long value = 0;
    for (wxUniChar c : trimmed) {
        if (c < '0' || c > '9')
            return std::nullopt;
        value = value * 10 + static_cast<long>(c.GetValue() - '0');
    }
    if (value < 1 || value > 65535)
        return std::nullopt;
    return static_cast<std::uint16_t>(value);
}

MacAddress ParseMacAddress(const wxString& text)
{
    MacAddress mac;
    std::vector<wxString> pieces = Pieces(text, "-:");
    // Twelve digits without separators, as some routers print them.
    if (pieces.size() == 1 && pieces[0].length() == 12)
        pieces = {pieces[0].Mid(0, 2), pieces[0].Mid(2, 2), pieces[0].Mid(4, 2),
                  pieces[0].Mid(6, 2), pieces[0].Mid(8, 2), pieces[0].Mid(10, 2)};
    mac.pieces = pieces.size();
    if (mac.IsValid()) {
        for (std::size_t i = 0; i < pieces.size(); ++i)
            mac.bytes[i] = HexPieceByte(pieces[i]);
    }
    return mac;
}

ByteVector WakeOnLanPacket(const MacBytes& mac)
{
    ByteVector packet(6, 0xFF);
    packet.reserve(kWakeOnLanPacketSize);
    for (int repeat = 0; repeat < 16; ++repeat)
        packet.insert(packet.end(), mac.begin(), mac.end());
    return packet;
}
