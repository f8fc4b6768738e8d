#pragma once
// Our own writer for the data file: the declaration line, one blank of indent
// per level, an element holding only text written on one line.

#include <string>

#include <wx/string.h>

class XmlWriter {
public:
    explicit XmlWriter(std::string& out) : m_out(out) {}

    void Declaration(const char* version, const char* encoding);
    void Open(const char* name, int depth);
    void Close(const char* name, int depth);
    void TextElement(const char* name, const wxString& text, int depth);
    void TextElement(const char* name, const char* text, int depth);
    // Characters left out so far because XML cannot hold them.
    std::size_t Dropped() const { return m_dropped; }

private:
    void Indent(int depth) { m_out.append(static_cast<std::size_t>(depth), ' '); }
    std::string& m_out;
    std::size_t m_dropped = 0;
};

// Escapes UTF-8 text for element content so that the reader gives back
// exactly these characters: "<", ">" and "&" become "&lt;", "&gt;" and
// "&amp;" (always: text that holds "&amp;" keeps it); a carriage return
// becomes "&#13;" (a parser turns a raw one, or CR LF, into a line feed); a
// blank (space, tab, line feed) that starts the text becomes "&#32;", "&#9;"
// or "&#10;" (raw blanks before the first other character are not taken as
// part of the field). Characters that XML 1.0 cannot hold at all (control
// characters other than tab, line feed and carriage return; U+FFFE, U+FFFF)
// are dropped, so one bad character can never make the whole file
// unreadable; the number dropped is returned. Text without any of these
// characters is written as it stands, as older versions wrote it.
std::size_t AppendEscapedText(std::string& out, const char* utf8, std::size_t length);
