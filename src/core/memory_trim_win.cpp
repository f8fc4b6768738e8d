#include "core/memory_trim.h"

#include <malloc.h>

void ReturnFreeMemoryToSystem()
{
    // The C runtime's heap gives its free blocks back to the system.
    _heapmin();
}
