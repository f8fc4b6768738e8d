#include "core/shared_lock.h"

wxCriticalSection& SharedLock()
{
    static wxCriticalSection lock;
    return lock;
}
