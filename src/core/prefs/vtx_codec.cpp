#include "core/prefs/vtx_codec.h"

#include <string>

namespace {

const char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
const char kMarker[] = "v1";

unsigned char KeyByte(std::size_t position)
{
    return static_cast<unsigned char>(0xA5 ^ ((position * 29 + 11) & 0xFF));
}

int AlphabetIndex(wxUniChar ch)
{
    const wxUint32 c = ch.GetValue();
    if (c >= 'A' && c <= 'Z')
        return static_cast<int>(c - 'A');
    if (c >= 'a' && c <= 'z')
        return static_cast<int>(c - 'a' + 26);
    if (c >= '0' && c <= '9')
        return static_cast<int>(c - '0' + 52);
    if (c == '-')
        return 62;
    if (c == '_')
        return 63;
    return -1;
}

}  // namespace

wxString VtxEncode(const wxString& text)
{
    const wxScopedCharBuffer utf8 = text.utf8_str();
    std::string bytes(utf8.data(), utf8.length());
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(static_cast<unsigned char>(bytes[i]) ^ KeyByte(i));

    std::string out = kMarker;
    std::size_t i = 0;
    for (; i + 3 <= bytes.size(); i += 3) {
        const unsigned v = (static_cast<unsigned char>(bytes[i]) << 16) |
                           (static_cast<unsigned char>(bytes[i + 1]) << 8) | static_cast<unsigned char>(bytes[i + 2]);
        out += kAlphabet[(v >> 18) & 63];
        out += kAlphabet[(v >> 12) & 63];
        out += kAlphabet[(v >> 6) & 63];
        out += kAlphabet[v & 63];
    }
    const std::size_t rest = bytes.size() - i;
    if (rest > 0) {
        unsigned v = static_cast<unsigned char>(bytes[i]) << 16;
        if (rest == 2)
            v |= static_cast<unsigned char>(bytes[i + 1]) << 8;
        out += kAlphabet[(v >> 18) & 63];
        out += kAlphabet[(v >> 12) & 63];
        if (rest == 2)
            out += kAlphabet[(v >> 6) & 63];
    }
    return wxString::FromAscii(out.c_str());
}

wxString VtxDecode(const wxString& encoded, bool* ok)
{
    if (ok)
        *ok = false;
    if (!encoded.StartsWith(kMarker))
        return wxString();
    const wxString body = encoded.Mid(2);
    if (body.length() % 4 == 1)
        return wxString();
    std::string bytes;
    unsigned buffer = 0;
    int bits = 0;
    for (wxUniChar ch : body) {
        const int index = AlphabetIndex(ch);
        if (index < 0)
            return wxString();
        buffer = (buffer << 6) | static_cast<unsigned>(index);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            bytes += static_cast<char>((buffer >> bits) & 0xFF);
        }
    }
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(static_cast<unsigned char>(bytes[i]) ^ KeyByte(i));
    const wxString text = wxString::FromUTF8(bytes.data(), bytes.size());
    if (text.empty() && !bytes.empty())
        return wxString();  // not UTF-8: not ours
    if (ok)
        *ok = true;
    return text;
}
