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
    AppendEscapedText(m_out, text, std::strlen(text));
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
    AppendEscapedText(m_out, utf8.data(), utf8.length());
    m_out += "</";
    m_out += name;
    m_out += ">\n";
}

void AppendEscapedText(std::string& out, const char* utf8, std::size_t length)
{
    for (std::size_t i = 0; i < length; ++i) {
        const unsigned char c = static_cast<unsigned char>(utf8[i]);
        switch (c) {
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '&':
            if (length - i > 4 && std::memcmp(utf8 + i + 1, "amp;", 4) == 0)
                out += '&';
            else
                out += "&amp;";
            break;
        default:
            if (c < 0x20 && c != '\t' && c != '\n' && c != '\r')
                break;
            // U+FFFE and U+FFFF: EF BF BE / EF BF BF.
            if (c == 0xEF && length - i >= 3 && static_cast<unsigned char>(utf8[i + 1]) == 0xBF &&
                (static_cast<unsigned char>(utf8[i + 2]) & 0xFE) == 0xBE) {
                i += 2;
                break;
            }
            out += static_cast<char>(c);
        }
    }
}
