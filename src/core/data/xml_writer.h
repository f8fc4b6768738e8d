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

private:
    void Indent(int depth) { m_out.append(static_cast<std::size_t>(depth), ' '); }
    std::string& m_out;
};

// Escapes UTF-8 text for element content: "<" and ">" become "&lt;" and
// "&gt;"; "&" becomes "&amp;" unless "amp;" already follows it (kept so that
// text holding "&amp;" is not escaped twice). Characters that XML 1.0 cannot
// hold at all (control characters other than tab, line feed and carriage
// return; U+FFFE, U+FFFF) are dropped, so one bad character can never make the
// whole file unreadable.
void AppendEscapedText(std::string& out, const char* utf8, std::size_t length);
