#include "desktop/control/runtime_dir.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// A base folder from the environment; relative values are ignored, as the
// XDG rules ask.
std::string AbsoluteEnv(const char* name)
{
    const char* value = std::getenv(name);
    return value && value[0] == '/' ? value : "";
}

std::string Octal(mode_t mode)
{
    char text[8];
    std::snprintf(text, sizeof text, "%04o", static_cast<unsigned>(mode & 07777));
    return text;
}

std::string OwnerProblem(const struct stat& info)
{
    if (info.st_uid == ::getuid())
        return {};
    return "it belongs to user " + std::to_string(info.st_uid) + ", not to you (user " + std::to_string(::getuid()) +
           ")";
}

std::string Parent(const std::string& path)
{
    const std::size_t slash = path.find_last_of('/');
    return slash == 0 || slash == std::string::npos ? "/" : path.substr(0, slash);
}

// Someone who can write to the folder above ours can rename ours away and
// put theirs in its place: callers would then refuse it, so it is worth a
// warning. A sticky folder (/tmp) forbids that, but $XDG_RUNTIME_DIR is meant
// to be private.
void NoteUnsafeParent(const std::string& dir, std::vector<std::string>& notes)
{
    const std::string parent = Parent(dir);
    struct stat info {};
    if (::stat(parent.c_str(), &info) != 0 || (info.st_mode & 0022) == 0)
        return;
    const std::string runtime = AbsoluteEnv("XDG_RUNTIME_DIR");
    if (!runtime.empty() && parent == Parent(runtime + "/cadrelle"))
        notes.push_back("warning: XDG_RUNTIME_DIR (" + runtime + ") can be written by other users (mode " +
                        Octal(info.st_mode) + "); it should be private to you (0700)");
    else if ((info.st_mode & S_ISVTX) == 0)
        notes.push_back("warning: " + parent + " can be written by other users (mode " + Octal(info.st_mode) +
                        "): they can replace " + dir);
}

// With `parents`, the missing folders above it too (the cache folder may not
// exist yet); $XDG_RUNTIME_DIR and the temporary folder are never made here.
bool MakePrivateDirs(const std::string& dir, bool parents, std::string& why)
{
    for (std::size_t slash = parents ? dir.find('/', 1) : std::string::npos;; slash = dir.find('/', slash + 1)) {
        const std::string part = slash == std::string::npos ? dir : dir.substr(0, slash);
        if (::mkdir(part.c_str(), 0700) != 0 && errno != EEXIST) {
            why = "cannot create " + part + ": " + std::strerror(errno);
            return false;
        }
        if (slash == std::string::npos)
            return true;
    }
}

}  // namespace

std::vector<std::string> RuntimeDirCandidates()
{
    std::vector<std::string> candidates;
    const std::string runtime = AbsoluteEnv("XDG_RUNTIME_DIR");
    if (!runtime.empty()) {
        candidates.push_back(runtime + "/cadrelle");
    } else {
        const std::string tmp = AbsoluteEnv("TMPDIR");
        candidates.push_back((tmp.empty() ? "/tmp" : tmp) + "/cadrelle-" + std::to_string(::getuid()));
    }
    std::string cache = AbsoluteEnv("XDG_CACHE_HOME");
    if (cache.empty() && !AbsoluteEnv("HOME").empty())
        cache = AbsoluteEnv("HOME") + "/.cache";
    if (!cache.empty()) {
        // A home folder shared between machines must not share one lock.
        char host[256] = "";
        ::gethostname(host, sizeof host - 1);
        for (char* c = host; *c; ++c) {
            if (*c == '/')
                *c = '_';
        }
        candidates.push_back(cache + "/cadrelle/run-" + host);
    }
    return candidates;
}

std::string RuntimeDirProblem(const std::string& dir, bool* exists)
{
    *exists = false;
    struct stat info {};
    if (::lstat(dir.c_str(), &info) != 0) {
        if (errno == ENOENT)
            return {};
        return std::string("cannot examine it: ") + std::strerror(errno);
    }
    *exists = true;
    if (S_ISLNK(info.st_mode))
        return "it is a symbolic link";
    if (!S_ISDIR(info.st_mode))
        return "it is not a folder";
    if (const std::string owner = OwnerProblem(info); !owner.empty())
        return owner;
    if ((info.st_mode & 0022) != 0)
        return "other users can write to it (mode " + Octal(info.st_mode) + ")";
    const std::string lock = InstanceLockPath(dir);
    if (::lstat(lock.c_str(), &info) != 0)
        return errno == ENOENT ? "" : "cannot examine its instance.lock: " + std::string(std::strerror(errno));
    if (S_ISLNK(info.st_mode))
        return "its instance.lock is a symbolic link";
    if (!S_ISREG(info.st_mode))
        return "its instance.lock is not a plain file";
    if (const std::string owner = OwnerProblem(info); !owner.empty())
        return "its instance.lock: " + owner;
    return {};
}

RuntimeDirChoice ChooseRuntimeDir(bool create)
{
    RuntimeDirChoice choice;
    const std::vector<std::string> candidates = RuntimeDirCandidates();
    for (const std::string& dir : candidates) {
        bool exists = false;
        std::string problem = RuntimeDirProblem(dir, &exists);
        if (problem.empty() && !exists && create) {
            // Made here, or by a rival between the look and now: judged again.
            if (MakePrivateDirs(dir, &dir != &candidates.front(), problem))
                problem = RuntimeDirProblem(dir, &exists);
        }
        if (!problem.empty()) {
            choice.notes.push_back("not using " + dir + ": " + problem);
            continue;
        }
        if (create) {
            // Ours and not writable by others: only reading is closed off,
            // on what was opened, never through a link put there meanwhile.
            const int fd = ::open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            struct stat info {};
            if (fd >= 0 && ::fstat(fd, &info) == 0 && info.st_uid == ::getuid() && (info.st_mode & 0777) != 0700)
                (void)!::fchmod(fd, 0700);
            if (fd >= 0)
                ::close(fd);
            NoteUnsafeParent(dir, choice.notes);
        }
        choice.path = dir;
        break;
    }
    return choice;
}

std::string RuntimeDirPath()
{
    return ChooseRuntimeDir(false).path;
}

std::string ControlSocketPath(const std::string& dir)
{
    return dir + "/control.sock";
}

std::string InstanceLockPath(const std::string& dir)
{
    return dir + "/instance.lock";
}
