#pragma once
// Hands memory that the allocator holds free back to the system. Loading a
// large data file builds and frees a whole XML tree; without this the
// process would keep that peak as resident memory for its whole life.

void ReturnFreeMemoryToSystem();
