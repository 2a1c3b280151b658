#include "FastPauses.h"

#include "ImportTable.h"

#include <stdexcept>

namespace
{

void WINAPI FastSleep(DWORD dwMilliseconds)
{
    ::SleepEx(dwMilliseconds / 1000, FALSE);
}

} // namespace

CFastPauses::CFastPauses(HMODULE hModule) : m_hModule(hModule)
{
    if (PatchImport(m_hModule, "Sleep", reinterpret_cast<void*>(&FastSleep)) == nullptr)
        throw std::runtime_error("the module does not import Sleep");
}

CFastPauses::~CFastPauses()
{
    PatchImport(m_hModule, "Sleep", reinterpret_cast<void*>(&::Sleep));
}
