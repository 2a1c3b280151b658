#include "ProcessMemory.h"

#include <sys/mman.h>
#include <sys/resource.h>

char* PagesBeforeAWall(size_t nPages)
{
    void* const p = ::mmap(nullptr, (nPages + 1) * PAGE_BYTES, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ::mprotect(p, nPages * PAGE_BYTES, PROT_READ | PROT_WRITE);
    return static_cast<char*>(p);
}

unsigned PeakMemoryMb()
{
    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    return static_cast<unsigned>(usage.ru_maxrss / 1024);
}
