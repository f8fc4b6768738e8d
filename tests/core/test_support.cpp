#include "test_support.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <wx/datetime.h>
#include <wx/dir.h>
#include <wx/filename.h>

TempDir::TempDir()
{
    char pattern[] = "/tmp/cadrelle-test-XXXXXX";
    const char* made = ::mkdtemp(pattern);
    if (!made)
        throw std::runtime_error("mkdtemp failed");
    m_path = wxString::FromUTF8(made);
}

TempDir::~TempDir()
{
    wxFileName::Rmdir(m_path, wxPATH_RMDIR_RECURSIVE);
}

wxString TempDir::File(const wxString& relative) const
{
    return m_path + "/" + relative;
}

std::string ReadFileBytes(const wxString& path)
{
    std::ifstream in(path.fn_str(), std::ios::binary);
    std::ostringstream buffer;
    buffer << in.rdbuf();
    return buffer.str();
}

void WriteFileBytes(const wxString& path, const std::string& bytes)
{
    wxFileName::Mkdir(wxFileName(path).GetPath(), 0700, wxPATH_MKDIR_FULL);
    std::ofstream out(path.fn_str(), std::ios::binary | std::ios::trunc);
    out << bytes;
}

wxDateTime Local(int year, int month, int day, int hour, int minute, int second, int ms)
{
    return wxDateTime(static_cast<wxDateTime::wxDateTime_t>(day), static_cast<wxDateTime::Month>(month - 1), year,
                      static_cast<wxDateTime::wxDateTime_t>(hour), static_cast<wxDateTime::wxDateTime_t>(minute),
                      static_cast<wxDateTime::wxDateTime_t>(second), static_cast<wxDateTime::wxDateTime_t>(ms));
}
