#include "desktop/single_instance.h"

#include <cerrno>
#include <cstring>
#include <iostream>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "desktop/control/runtime_dir.h"

SingleInstanceGuard::SingleInstanceGuard()
{
    const RuntimeDirChoice dir = ChooseRuntimeDir(true);
    for (const std::string& note : dir.notes)
        std::cerr << "cadrelle: " << note << std::endl;
    if (dir.path.empty()) {
        m_problem = "no instance lock that can be trusted: no runtime folder is only yours (see above)";
        return;
    }
    const std::string path = InstanceLockPath(dir.path);
    // Close-on-exec: a program started by a job must not keep the lock alive
    // after we end. No following links, and only a plain file of ours.
    const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NOCTTY, 0600);
    struct stat info {};
    if (fd < 0 || ::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode) || info.st_uid != ::getuid()) {
        m_problem = "no instance lock that can be trusted: cannot open " + path + " as a plain file of yours" +
                    (fd < 0 ? std::string(": ") + std::strerror(errno) : std::string());
        if (fd >= 0)
            ::close(fd);
        return;
    }
    while (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        if (errno == EINTR)
            continue;
        if (errno == EWOULDBLOCK)
            m_bAnotherRunning = true;
        else
            m_problem = "no instance lock that can be trusted: cannot lock " + path + ": " + std::strerror(errno);
        ::close(fd);
        return;
    }
    m_fd = fd;
}

SingleInstanceGuard::~SingleInstanceGuard()
{
    if (m_fd >= 0)
        ::close(m_fd);
}
