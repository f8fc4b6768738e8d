#include "core/data/atomic_file.h"

#include <cerrno>
#include <cstring>

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

bool WriteAll(int fd, const std::string& content)
{
    const char* data = content.data();
    std::size_t left = content.size();
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

}  // namespace

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
    const wxFileName target(path);
    if (!EnsurePrivateDir(target.GetPath(), error))
        return false;

    // A fixed temporary name: a save killed half-way leaves at most one stale
    // temporary, which the next save truncates and reuses.
    const wxString tmp = path + ".tmp";
    const wxCharBuffer tmpName = tmp.fn_str();
    const int fd = ::open(tmpName, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0)
        return Fail(error, "cannot create", tmp);
    if (!WriteAll(fd, content) || ::fsync(fd) != 0) {
        Fail(error, "cannot write", tmp);
        ::close(fd);
        ::unlink(tmpName);
        return false;
    }
    if (::close(fd) != 0) {
        Fail(error, "cannot close", tmp);
        ::unlink(tmpName);
        return false;
    }
    if (::rename(tmpName, path.fn_str()) != 0) {
        Fail(error, "cannot replace", path);
        ::unlink(tmpName);
        return false;
    }
    // Make the rename itself durable.
    const int dirFd = ::open(target.GetPath().fn_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dirFd >= 0) {
        ::fsync(dirFd);
        ::close(dirFd);
    }
    return true;
}
