#include "core/data/xml_writer.h"

#include <cstring>

void XmlWriter::Declaration(const char* version, const char* encoding)
{
    m_out += "<?xml version=\"";
    m_out += version;
    m_out += "\" encoding=\"";
    m_out += encoding;
    m_out += "\"?>\n";
}

void XmlWriter::Open(const char* name, int depth)
{
    Indent(depth);
    m_out += '<';
    m_out += name;
    m_out += ">\n";
}

void XmlWriter::Close(const char* name, int depth)
{
    Indent(depth);
    m_out += "</";
    m_out += name;
    m_out += ">\n";
}

void XmlWriter::TextElement(const char* name, const char* text, int depth)
{
    Indent(depth);
    m_out += '<';
    m_out += name;
    m_out += '>';
    m_dropped += AppendEscapedText(m_out, text, std::strlen(text));
    m_out += "</";
    m_out += name;
    m_out += ">\n";
}

void XmlWriter::TextElement(const char* name, const wxString& text, int depth)
{
    const wxScopedCharBuffer utf8 = text.utf8_str();
    Indent(depth);
    m_out += '<';
    m_out += name;
    m_out += '>';
    m_dropped += AppendEscapedText(m_out, utf8.data(), utf8.length());
    m_out += "</";
    m_out += name;
    m_out += ">\n";
}

std::size_t AppendEscapedText(std::string& out, const char* utf8, std::size_t length)
{
    std::size_t dropped = 0;
    const std::size_t start = out.size();
    for (std::size_t i = 0; i < length; ++i) {
        const unsigned char c = static_cast<unsigned char>(utf8[i]);
        switch (c) {
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '&': out += "&amp;"; break;
        case '\r': out += "&#13;"; break;
        case ' ': out += out.size() == start ? "&#32;" : " "; break;
        case '\t': out += out.size() == start ? "&#9;" : "\t"; break;
        case '\n': out += out.size() == start ? "&#10;" : "\n"; break;
        default:
            if (c < 0x20) {
                ++dropped;
                break;
            }
            // U+FFFE and U+FFFF: EF BF BE / EF BF BF.
            if (c == 0xEF && length - i >= 3 && static_cast<unsigned char>(utf8[i + 1]) == 0xBF &&
                (static_cast<unsigned char>(utf8[i + 2]) & 0xFE) == 0xBE) {
                i += 2;
                ++dropped;
                break;
            }
            out += static_cast<char>(c);
        }
    }
    return dropped;
}
