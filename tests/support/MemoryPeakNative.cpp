#include "MemoryPeak.h"

#include <fstream>
#include <string>

namespace
{

unsigned long StatusKb(const std::string& name)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.compare(0, name.size(), name) == 0)
            return std::stoul(line.substr(name.size()));
    return 0;
}

} // namespace

CMemoryPeak::CMemoryPeak()
{
    std::ofstream("/proc/self/clear_refs") << "5"; // forgets the peak
    m_nStartKb = StatusKb("VmRSS:");
}

unsigned CMemoryPeak::RiseMb() const
{
    const unsigned long nPeakKb = StatusKb("VmHWM:");
    return nPeakKb > m_nStartKb ? static_cast<unsigned>((nPeakKb - m_nStartKb) / 1024) : 0;
}
