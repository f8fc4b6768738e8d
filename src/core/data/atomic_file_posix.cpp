#include "core/data/atomic_file.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <random>
#include <string>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <wx/filename.h>

namespace {

bool Fail(wxString* error, const wxString& what, const wxString& path)
{
    if (error)
        *error = wxString::Format("%s %s: %s", what, path, wxString(std::strerror(errno)));
    return false;
}

bool WriteAll(int fd, const char* data, std::size_t left)
{
    while (left > 0) {
        const ssize_t n = ::write(fd, data, left);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        data += n;
        left -= static_cast<std::size_t>(n);
    }
    return true;
}

std::string Native(const wxString& path)
{
    const wxCharBuffer buffer = path.fn_str();
    return std::string(buffer.data());
}

wxString FromNative(const std::string& path)
{
    return wxString(path.c_str(), wxConvFile);
}

std::string DirOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// The file a chain of symbolic links ends at (the path itself when it is no
// link): a data file kept elsewhere through a link stays where it is.
std::string FollowLinks(std::string path)
{
    for (int hop = 0; hop < 40; ++hop) {
        struct stat st {};
        if (::lstat(path.c_str(), &st) != 0 || !S_ISLNK(st.st_mode))
            break;
        char target[PATH_MAX];
        const ssize_t n = ::readlink(path.c_str(), target, sizeof target - 1);
        if (n <= 0)
            break;
        const std::string next(target, static_cast<std::size_t>(n));
        path = next[0] == '/' ? next : DirOf(path) + "/" + next;
    }
    return path;
}

constexpr std::size_t kTemporarySuffix = 6;

// Temporary files are named <file>.tmp-XXXXXX. Any left by a save that was
// killed are removed; so is the single <file>.tmp of earlier versions. Links
// are removed as links, never followed.
void RemoveStaleTemporaries(const std::string& dir, const std::string& base)
{
    DIR* d = ::opendir(dir.c_str());
    if (!d)
        return;
    const std::string fixed = base + ".tmp";
    const std::string prefix = fixed + "-";
    while (const dirent* entry = ::readdir(d)) {
        const std::string name = entry->d_name;
        const bool ours = name == fixed || (name.size() == prefix.size() + kTemporarySuffix &&
                                            name.compare(0, prefix.size(), prefix) == 0);
        if (!ours)
            continue;
        const std::string path = dir + "/" + name;
        struct stat st {};
        if (::lstat(path.c_str(), &st) == 0 && (S_ISREG(st.st_mode) || S_ISLNK(st.st_mode)) && st.st_uid == ::getuid())
            ::unlink(path.c_str());
    }
    ::closedir(d);
}

// A new file that did not exist before, never reached through a link,
// readable and writable by the user alone whatever the umask.
int CreatePrivate(const std::string& path)
{
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd >= 0 && ::fchmod(fd, 0600) != 0) {
        const int saved = errno;
        ::close(fd);
        ::unlink(path.c_str());
        errno = saved;
        return -1;
    }
    return fd;
}

int CreateTemporary(const std::string& dir, const std::string& base, std::string& tmp)
{
    static const char kLetters[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    std::random_device device;
    std::uniform_int_distribution<int> pick(0, static_cast<int>(sizeof kLetters) - 2);
    for (int attempt = 0; attempt < 100; ++attempt) {
        std::string suffix(kTemporarySuffix, 'x');
        for (char& c : suffix)
            c = kLetters[pick(device)];
        tmp = dir + "/" + base + ".tmp-" + suffix;
        const int fd = CreatePrivate(tmp);
        if (fd >= 0 || errno != EEXIST)
            return fd;
    }
    errno = EEXIST;
    return -1;
}

bool IsSuffixLetter(wxUniChar c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

bool WriteAndClose(int fd, const std::string& path, const char* data, std::size_t size, wxString* error)
{
    if (!WriteAll(fd, data, size) || ::fsync(fd) != 0) {
        Fail(error, "cannot write", FromNative(path));
        ::close(fd);
        return false;
    }
    if (::close(fd) != 0)
        return Fail(error, "cannot write", FromNative(path));
    return true;
}

}  // namespace

wxString WithoutTemporaryName(const wxString& error)
{
    wxString text = error;
    const wxString marker = ".tmp-";
    for (std::size_t at = text.find(marker); at != wxString::npos; at = text.find(marker, at + 1)) {
        const std::size_t from = at + marker.length();
        std::size_t n = 0;
        while (n < kTemporarySuffix && from + n < text.length() && IsSuffixLetter(text[from + n]))
            ++n;
        if (n == kTemporarySuffix)
            text.replace(from, n, wxString(kTemporarySuffix, 'X'));
    }
    return text;
}

bool EnsurePrivateDir(const wxString& dir, wxString* error)
{
    if (wxFileName::DirExists(dir))
        return true;
    if (!wxFileName::Mkdir(dir, 0700, wxPATH_MKDIR_FULL))
        return Fail(error, "cannot create folder", dir);
    return true;
}

bool WriteFileAtomically(const wxString& path, const std::string& content, wxString* error)
{
    if (!EnsurePrivateDir(wxFileName(path).GetPath(), error))
        return false;
    const std::string named = Native(path);
    const std::string target = FollowLinks(named);
    const std::string dir = DirOf(target);
    const std::string base = target.substr(target.rfind('/') + 1);
    RemoveStaleTemporaries(dir, base);
    if (target != named)
        RemoveStaleTemporaries(DirOf(named), named.substr(named.rfind('/') + 1));

    std::string tmp;
    const int fd = CreateTemporary(dir, base, tmp);
    if (fd < 0)
        return Fail(error, "cannot create a temporary file beside", FromNative(target));
    if (!WriteAndClose(fd, tmp, content.data(), content.size(), error)) {
        ::unlink(tmp.c_str());
        return false;
    }
    if (::rename(tmp.c_str(), target.c_str()) != 0) {
        Fail(error, "cannot replace", FromNative(target));
        ::unlink(tmp.c_str());
        return false;
    }
    // Make the rename itself durable.
    const int dirFd = ::open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dirFd >= 0) {
        ::fsync(dirFd);
        ::close(dirFd);
    }
    return true;
}

bool CopyFilePrivately(const wxString& from, const wxString& to, wxString* error)
{
    const std::string source = Native(from);
    const int in = ::open(source.c_str(), O_RDONLY | O_CLOEXEC);
    if (in < 0)
        return Fail(error, "cannot read", from);
    std::string content;
    char buffer[65536];
    for (;;) {
        const ssize_t n = ::read(in, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0) {
            Fail(error, "cannot read", from);
            ::close(in);
            return false;
        }
        if (n == 0)
            break;
        content.append(buffer, static_cast<std::size_t>(n));
    }
    ::close(in);
    const std::string target = Native(to);
    const int out = CreatePrivate(target);
    if (out < 0)
        return Fail(error, "cannot create", to);
    if (!WriteAndClose(out, target, content.data(), content.size(), error)) {
        ::unlink(target.c_str());
        return false;
    }
    return true;
}

bool MakePrivate(const wxString& path)
{
    return ::chmod(Native(path).c_str(), 0600) == 0;
}

FILE* OpenPrivateFile(const wxString& path, const char* mode)
{
    const std::string m = mode;
    int flags = O_CREAT | O_CLOEXEC | (m.find('+') != std::string::npos ? O_RDWR : O_WRONLY);
    flags |= m[0] == 'a' ? O_APPEND : O_TRUNC;
    const int fd = ::open(Native(path).c_str(), flags, 0600);
    if (fd < 0)
        return nullptr;
    ::fchmod(fd, 0600);
    FILE* file = ::fdopen(fd, mode);
    if (!file)
        ::close(fd);
    return file;
}
