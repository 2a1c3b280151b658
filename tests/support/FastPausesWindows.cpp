#include "FastPauses.h"

#include "ImportTable.h"

namespace
{

void WINAPI FastSleep(DWORD dwMilliseconds)
{
    ::SleepEx(dwMilliseconds / 1000, FALSE);
}

const void* const s_pFastSleep = reinterpret_cast<const void*>(&FastSleep);

} // namespace

CFastPauses::CFastPauses(HMODULE hModule) : m_hModule(hModule)
{
    ReplaceImport(m_hModule, SystemFunction("kernel32", "Sleep"), s_pFastSleep);
}

CFastPauses::~CFastPauses()
{
    ReplaceImport(m_hModule, s_pFastSleep, SystemFunction("kernel32", "Sleep"));
}
