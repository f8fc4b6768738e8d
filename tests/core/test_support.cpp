#include "test_support.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>

#include <wx/datetime.h>
#include <wx/dir.h>
#include <wx/filename.h>

TempDir::TempDir()
{
    // A name nobody has: create_directory says whether it was there before.
    static const char kLetters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    std::random_device device;
    std::uniform_int_distribution<int> pick(0, static_cast<int>(sizeof kLetters) - 2);
    const std::filesystem::path base = std::filesystem::temp_directory_path();
    for (int attempt = 0; attempt < 100; ++attempt) {
        std::string name = "cadrelle-test-XXXXXX";
        for (std::size_t i = name.size() - 6; i < name.size(); ++i)
            name[i] = kLetters[pick(device)];
        const std::filesystem::path path = base / name;
        std::error_code error;
        if (std::filesystem::create_directory(path, error)) {
            std::filesystem::permissions(path, std::filesystem::perms::owner_all, error);
            m_path = wxString(path.wstring());
            return;
        }
        if (error)
            throw std::runtime_error("cannot create a temporary folder: " + error.message());
    }
    throw std::runtime_error("cannot create a temporary folder");
}

TempDir::~TempDir()
{
    wxFileName::Rmdir(m_path, wxPATH_RMDIR_RECURSIVE);
}

wxString TempDir::File(const wxString& relative) const
{
    // In the platform's own spelling ("\\" on Windows), as the code under
    // test makes its paths.
    return wxFileName(m_path + "/" + relative).GetFullPath();
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
