#include "desktop/single_instance.h"

#include <cerrno>
#include <iostream>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "desktop/control/runtime_dir.h"

SingleInstanceGuard::SingleInstanceGuard()
{
    std::string error;
    if (!EnsureRuntimeDir(&error)) {
        std::cerr << "cadrelle: no instance lock: " << error << std::endl;
        return;
    }
    // Close-on-exec: a program started by a job must not keep the lock alive
    // after we end.
    m_fd = ::open(InstanceLockPath().c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (m_fd < 0) {
        std::cerr << "cadrelle: no instance lock: cannot open " << InstanceLockPath() << std::endl;
        return;
    }
    while (::flock(m_fd, LOCK_EX | LOCK_NB) != 0) {
        if (errno == EINTR)
            continue;
        if (errno == EWOULDBLOCK)
            m_bAnotherRunning = true;
        else
            std::cerr << "cadrelle: no instance lock: flock failed" << std::endl;
        ::close(m_fd);
        m_fd = -1;
        return;
    }
}

SingleInstanceGuard::~SingleInstanceGuard()
{
    if (m_fd >= 0)
        ::close(m_fd);
}
