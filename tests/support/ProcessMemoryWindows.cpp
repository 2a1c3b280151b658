#include "ProcessMemory.h"

#include "OvPlatform.h"

#include <psapi.h>

char* PagesBeforeAWall(size_t nPages)
{
    void* const p = ::VirtualAlloc(nullptr, (nPages + 1) * PAGE_BYTES, MEM_RESERVE, PAGE_NOACCESS);
    return static_cast<char*>(::VirtualAlloc(p, nPages * PAGE_BYTES, MEM_COMMIT, PAGE_READWRITE));
}

unsigned PeakMemoryMb()
{
    PROCESS_MEMORY_COUNTERS counters = {};
    ::K32GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof counters);
    return static_cast<unsigned>(counters.PeakWorkingSetSize >> 20);
}
