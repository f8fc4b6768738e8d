#include "desktop/control/runtime_dir.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <sys/stat.h>
#include <unistd.h>

std::string RuntimeDirPath()
{
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime && *runtime)
        return std::string(runtime) + "/cadrelle";
    const char* tmp = std::getenv("TMPDIR");
    const std::string base = tmp && *tmp ? tmp : "/tmp";
    return base + "/cadrelle-" + std::to_string(::getuid());
}

bool EnsureRuntimeDir(std::string* error)
{
    const std::string dir = RuntimeDirPath();
    if (::mkdir(dir.c_str(), 0700) != 0 && errno != EEXIST) {
        if (error)
            *error = "cannot create " + dir + ": " + std::strerror(errno);
        return false;
    }
    struct stat info {};
    if (::lstat(dir.c_str(), &info) != 0 || !S_ISDIR(info.st_mode) || info.st_uid != ::getuid()) {
        if (error)
            *error = dir + " is not a folder of this user";
        return false;
    }
    if ((info.st_mode & 0777) != 0700 && ::chmod(dir.c_str(), 0700) != 0) {
        if (error)
            *error = "cannot make " + dir + " private: " + std::strerror(errno);
        return false;
    }
    return true;
}

std::string ControlSocketPath()
{
    return RuntimeDirPath() + "/control.sock";
}

std::string InstanceLockPath()
{
    return RuntimeDirPath() + "/instance.lock";
}
