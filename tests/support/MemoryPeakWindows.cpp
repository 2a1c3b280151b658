#include "MemoryPeak.h"

#include "OvPlatform.h"

#include <psapi.h>

namespace
{

unsigned long PeakKb()
{
    PROCESS_MEMORY_COUNTERS counters = {};
    ::K32GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof counters);
    return static_cast<unsigned long>(counters.PeakWorkingSetSize / 1024);
}

} // namespace

CMemoryPeak::CMemoryPeak() : m_nStartKb(PeakKb()) {}

unsigned CMemoryPeak::RiseMb() const
{
    return static_cast<unsigned>((PeakKb() - m_nStartKb) / 1024);
}
