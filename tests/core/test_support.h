#pragma once
// Shared helpers for the core tests: temporary folders and file reading.

#include <string>

#include <wx/datetime.h>
#include <wx/string.h>

// A fresh folder under the system's temporary folder, removed with its
// contents when the object goes away.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const wxString& Path() const { return m_path; }
    wxString File(const wxString& relative) const;

private:
    wxString m_path;
};

// Whether only the user can reach the file: mode 0600 on POSIX; on Windows an
// access list that admits the user's SID and the system alone.
bool IsPrivateFile(const wxString& path);
// Lets everybody read the file (mode 0644; on Windows: Everyone may read).
void MakeReadableByAll(const wxString& path);

std::string ReadFileBytes(const wxString& path);
void WriteFileBytes(const wxString& path, const std::string& bytes);
// A local moment with milliseconds, in the process's time zone.
wxDateTime Local(int year, int month, int day, int hour, int minute, int second, int ms = 0);
