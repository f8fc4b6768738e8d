#include "core/memory_trim.h"

#include <cstddef>  // defines __GLIBC__ on glibc systems

#if defined(__GLIBC__)
#include <malloc.h>
#endif

void ReturnFreeMemoryToSystem()
{
#if defined(__GLIBC__)
    malloc_trim(0);
#endif
}
