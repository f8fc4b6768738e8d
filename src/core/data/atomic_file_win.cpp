#include "core/data/atomic_file.h"

#include <fcntl.h>
#include <io.h>

#include <random>
#include <string>

#include <windows.h>

#include <sddl.h>

#include <wx/filename.h>

// "Readable by the user alone" is an access list that admits only the
// user's SID and inherits nothing from the folder (what mode 0600 is on
// POSIX). Replacing is MoveFileExW(MOVEFILE_REPLACE_EXISTING |
// MOVEFILE_WRITE_THROUGH) after FlushFileBuffers: the file is either the old
// one or the new one. Symbolic links to the data file are not followed here
// (Windows users rarely have them; a link would be replaced by the file).

namespace {

wxString LastErrorText(DWORD code)
{
    wchar_t* text = nullptr;
    const DWORD n = ::FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
                                         FORMAT_MESSAGE_IGNORE_INSERTS,
                                     nullptr, code, 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    wxString result = n && text ? wxString(text, n) : wxString::Format("error %lu", static_cast<unsigned long>(code));
    ::LocalFree(text);
    return result.Trim();
}

bool Fail(wxString* error, const wxString& what, const wxString& path, DWORD code = ::GetLastError())
{
    if (error)
        *error = wxString::Format("%s %s: %s", what, path, LastErrorText(code));
    ::SetLastError(code);
    return false;
}

// The current user's SID as text ("S-1-5-21-..."), or "" when unknown.
std::wstring UserSid()
{
    HANDLE token = nullptr;
    if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &token))
        return {};
    std::wstring sid;
    DWORD size = 0;
    ::GetTokenInformation(token, TokenUser, nullptr, 0, &size);
    std::string buffer(size, '\0');
    if (size && ::GetTokenInformation(token, TokenUser, buffer.data(), size, &size)) {
        wchar_t* text = nullptr;
        if (::ConvertSidToStringSidW(reinterpret_cast<TOKEN_USER*>(buffer.data())->User.Sid, &text)) {
            sid = text;
            ::LocalFree(text);
        }
    }
    ::CloseHandle(token);
    return sid;
}

// A protected access list (nothing inherited) with full access for the user.
class PrivateSecurity {
public:
    PrivateSecurity()
    {
        const std::wstring sid = UserSid();
        if (sid.empty())
            return;
        const std::wstring sddl = L"D:P(A;;FA;;;" + sid + L")";
        if (::ConvertStringSecurityDescriptorToSecurityDescriptorW(sddl.c_str(), SDDL_REVISION_1, &m_descriptor,
                                                                     nullptr))
            m_attributes.lpSecurityDescriptor = m_descriptor;
    }
    ~PrivateSecurity() { ::LocalFree(m_descriptor); }
    PrivateSecurity(const PrivateSecurity&) = delete;
    PrivateSecurity& operator=(const PrivateSecurity&) = delete;

    SECURITY_ATTRIBUTES* Attributes() { return m_descriptor ? &m_attributes : nullptr; }
    bool Apply(const std::wstring& path) const
    {
        return m_descriptor &&
               ::SetFileSecurityW(path.c_str(), DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION,
                                  m_descriptor);
    }

private:
    PSECURITY_DESCRIPTOR m_descriptor = nullptr;
    SECURITY_ATTRIBUTES m_attributes{sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
};

std::wstring Wide(const wxString& path)
{
    return std::wstring(path.wc_str());
}

std::wstring DirOf(const std::wstring& path)
{
    const std::size_t slash = path.find_last_of(L"\\/");
    if (slash == std::wstring::npos)
        return L".";
    return slash == 0 ? path.substr(0, 1) : path.substr(0, slash);
}

// Temporary files are named <file>.tmp-XXXXXX. Any left by a save that was
// killed are removed; so is the single <file>.tmp of earlier versions.
// Links and folders are left alone.
void RemoveStaleTemporaries(const std::wstring& dir, const std::wstring& base)
{
    const std::wstring fixed = base + L".tmp";
    const std::wstring prefix = fixed + L"-";
    WIN32_FIND_DATAW found;
    const HANDLE search = ::FindFirstFileW((dir + L"\\" + fixed + L"*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return;
    do {
        const std::wstring name = found.cFileName;
        const bool ours = name == fixed || (name.size() == prefix.size() + 6 && name.compare(0, prefix.size(), prefix) == 0);
        const bool plain = !(found.dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT));
        if (ours && plain)
            ::DeleteFileW((dir + L"\\" + name).c_str());
    } while (::FindNextFileW(search, &found));
    ::FindClose(search);
}

// A new file that did not exist before, readable by the user alone.
HANDLE CreatePrivate(const std::wstring& path, PrivateSecurity& security)
{
    return ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, security.Attributes(), CREATE_NEW,
                         FILE_ATTRIBUTE_NORMAL, nullptr);
}

HANDLE CreateTemporary(const std::wstring& dir, const std::wstring& base, std::wstring& tmp,
                       PrivateSecurity& security)
{
    static const wchar_t kLetters[] = L"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    std::random_device device;
    std::uniform_int_distribution<int> pick(0, static_cast<int>(sizeof kLetters / sizeof kLetters[0]) - 2);
    for (int attempt = 0; attempt < 100; ++attempt) {
        std::wstring suffix(6, L'x');
        for (wchar_t& c : suffix)
            c = kLetters[pick(device)];
        tmp = dir + L"\\" + base + L".tmp-" + suffix;
        const HANDLE file = CreatePrivate(tmp, security);
        if (file != INVALID_HANDLE_VALUE || ::GetLastError() != ERROR_FILE_EXISTS)
            return file;
    }
    ::SetLastError(ERROR_FILE_EXISTS);
    return INVALID_HANDLE_VALUE;
}

bool WriteFlushClose(HANDLE file, const std::wstring& path, const char* data, std::size_t size, wxString* error)
{
    bool ok = true;
    while (ok && size > 0) {
        const DWORD chunk = size > (1u << 30) ? (1u << 30) : static_cast<DWORD>(size);
        DWORD written = 0;
        ok = ::WriteFile(file, data, chunk, &written, nullptr) && written > 0;
        data += written;
        size -= written;
    }
    ok = ok && ::FlushFileBuffers(file);
    const DWORD code = ::GetLastError();
    ::CloseHandle(file);
    if (!ok)
        return Fail(error, "cannot write", wxString(path), code);
    return true;
}

// Moves `tmp` over `target`. A program that has the target open without
// sharing deletion (a virus scanner, an indexer, an editor) makes the move
// fail for as long as it holds it: a few tries over half a second.
bool ReplaceWith(const std::wstring& tmp, const std::wstring& target)
{
    for (int attempt = 0;; ++attempt) {
        if (::MoveFileExW(tmp.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
            return true;
        const DWORD code = ::GetLastError();
        const DWORD attributes = ::GetFileAttributesW(target.c_str());
        const bool folder = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
        if (attempt == 9 || folder || (code != ERROR_ACCESS_DENIED && code != ERROR_SHARING_VIOLATION)) {
            ::SetLastError(code);
            return false;
        }
        ::Sleep(50);
    }
}

}  // namespace

bool EnsurePrivateDir(const wxString& dir, wxString* error)
{
    if (wxFileName::DirExists(dir))
        return true;
    // Folders under the user's profile are the user's already; the files in
    // them get their own private access lists.
    if (!wxFileName::Mkdir(dir, 0700, wxPATH_MKDIR_FULL))
        return Fail(error, "cannot create folder", dir);
    return true;
}

bool WriteFileAtomically(const wxString& path, const std::string& content, wxString* error)
{
    wxFileName name(path);
    name.MakeAbsolute();
    if (!EnsurePrivateDir(name.GetPath(), error))
        return false;
    const std::wstring target = Wide(name.GetFullPath());
    const std::wstring dir = DirOf(target);
    const std::wstring base = Wide(name.GetFullName());
    RemoveStaleTemporaries(dir, base);

    PrivateSecurity security;
    std::wstring tmp;
    const HANDLE file = CreateTemporary(dir, base, tmp, security);
    if (file == INVALID_HANDLE_VALUE)
        return Fail(error, "cannot create a temporary file beside", wxString(target));
    if (!WriteFlushClose(file, tmp, content.data(), content.size(), error)) {
        ::DeleteFileW(tmp.c_str());
        return false;
    }
    if (!ReplaceWith(tmp, target)) {
        const DWORD code = ::GetLastError();
        ::DeleteFileW(tmp.c_str());
        return Fail(error, "cannot replace", wxString(target), code);
    }
    return true;
}

bool CopyFilePrivately(const wxString& from, const wxString& to, wxString* error)
{
    const HANDLE in = ::CreateFileW(Wide(from).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (in == INVALID_HANDLE_VALUE)
        return Fail(error, "cannot read", from);
    std::string content;
    char buffer[65536];
    for (;;) {
        DWORD n = 0;
        if (!::ReadFile(in, buffer, sizeof buffer, &n, nullptr)) {
            const DWORD code = ::GetLastError();
            ::CloseHandle(in);
            return Fail(error, "cannot read", from, code);
        }
        if (n == 0)
            break;
        content.append(buffer, n);
    }
    ::CloseHandle(in);
    PrivateSecurity security;
    const std::wstring target = Wide(to);
    const HANDLE out = CreatePrivate(target, security);
    if (out == INVALID_HANDLE_VALUE)
        return Fail(error, "cannot create", to);
    if (!WriteFlushClose(out, target, content.data(), content.size(), error)) {
        ::DeleteFileW(target.c_str());
        return false;
    }
    return true;
}

bool MakePrivate(const wxString& path)
{
    return PrivateSecurity().Apply(Wide(path));
}

FILE* OpenPrivateFile(const wxString& path, const char* mode)
{
    const std::string m = mode;
    const bool update = m.find('+') != std::string::npos;
    const bool append = m[0] == 'a';
    PrivateSecurity security;
    const std::wstring wide = Wide(path);
    // Other readers (and the log's own rotation) may open the file meanwhile.
    const HANDLE file = ::CreateFileW(wide.c_str(), GENERIC_WRITE | (update ? GENERIC_READ : 0),
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, security.Attributes(),
                                      append ? OPEN_ALWAYS : CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return nullptr;
    if (::GetLastError() == ERROR_ALREADY_EXISTS)  // created files have the list already
        security.Apply(wide);
    int flags = _O_BINARY | (update ? _O_RDWR : _O_WRONLY) | (append ? _O_APPEND : 0);
    const int fd = ::_open_osfhandle(reinterpret_cast<intptr_t>(file), flags);
    if (fd < 0) {
        ::CloseHandle(file);
        return nullptr;
    }
    const std::string binaryMode = m.find('b') == std::string::npos ? m + "b" : m;
    FILE* stream = ::_fdopen(fd, binaryMode.c_str());
    if (!stream)
        ::_close(fd);
    return stream;
}
