#include "OvPlatform.h"
#include "ScaledTime.h"

#include <atomic>

namespace
{

std::atomic<DWORD> s_dwDivisor(1);

void WINAPI ScaledSleep(DWORD dwMilliseconds)
{
    ::SleepEx(dwMilliseconds == INFINITE ? INFINITE : dwMilliseconds / s_dwDivisor, FALSE);
}

} // namespace

// The import of Sleep, defined here so that the program's own code, linked with it, sleeps through the function above.
extern "C" void(WINAPI* const OvSleepImport)(DWORD) __asm__("__imp__Sleep@4");
extern "C" void(WINAPI* const OvSleepImport)(DWORD) = &ScaledSleep;

CScaledTime::CScaledTime(unsigned nDivisor)
{
    s_dwDivisor = nDivisor;
}

CScaledTime::~CScaledTime()
{
    s_dwDivisor = 1;
}
