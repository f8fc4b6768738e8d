#include "core/data/xml_check.h"

#include <cstdio>
#include <memory>

#include <expat.h>
#include <wx/filename.h>

XmlCheckResult CheckXmlWellFormed(const wxString& path)
{
    XmlCheckResult result;
    result.exists = wxFileName::FileExists(path);
    if (!result.exists) {
        result.problem = "the file does not exist";
        return result;
    }
    std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.fn_str(), "rb"), &std::fclose);
    if (!file) {
        result.problem = "the file cannot be opened";
        return result;
    }
    std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(XML_ParserCreate(nullptr), &XML_ParserFree);
    char buffer[1024];
    for (;;) {
        const std::size_t got = std::fread(buffer, 1, sizeof buffer, file.get());
        const bool last = got < sizeof buffer;
        if (last && std::ferror(file.get())) {
            result.problem = "the file cannot be read";
            return result;
        }
        if (XML_Parse(parser.get(), buffer, static_cast<int>(got), last) == XML_STATUS_ERROR) {
            result.problem = wxString::Format("%s at line %lu", XML_ErrorString(XML_GetErrorCode(parser.get())),
                                              static_cast<unsigned long>(XML_GetCurrentLineNumber(parser.get())));
            return result;
        }
        if (last)
            break;
    }
    result.ok = true;
    return result;
}
