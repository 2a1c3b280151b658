// What code built with -fstack-protector asks for. The compiler's own library would make the guard with the system's
// random numbers, for which it loads libraries while this one is being loaded.
#include <windows.h>

extern "C"
{
    DWORD __stack_chk_guard = 0xBB40E64E; // until OvMakeStackGuard has run
    [[noreturn]] void __stack_chk_fail();
    [[noreturn]] void __chk_fail();
}

namespace
{

const DWORD s_dwOverrun = 0xC0000409; // what the system itself reports for an overrun of a stack buffer

/// Before any other constructor. What it is made of another program on the machine can guess in part, never whole.
__attribute__((constructor(101), no_stack_protector)) void OvMakeStackGuard()
{
    LARGE_INTEGER counter = {};
    FILETIME time = {};
    ::QueryPerformanceCounter(&counter);
    ::GetSystemTimeAsFileTime(&time);
    const DWORD dwPlace = reinterpret_cast<DWORD>(&counter) ^ (reinterpret_cast<DWORD>(&OvMakeStackGuard) << 8);
    const DWORD dwTime =
        time.dwLowDateTime ^ time.dwHighDateTime ^ counter.LowPart ^ static_cast<DWORD>(counter.HighPart);
    const DWORD dwMixed = (__stack_chk_guard ^ dwPlace ^ dwTime ^ ::GetCurrentProcessId()) * 0x9E3779B1;
    __stack_chk_guard = (dwMixed ^ ::GetCurrentThreadId() ^ (dwMixed >> 15)) & 0xFFFFFF00; // ends texts that overrun
}

/// Nothing of the process can be trusted any more: no handler, no clean-up.
[[noreturn]] void End()
{
    ::TerminateProcess(::GetCurrentProcess(), s_dwOverrun);
    for (;;)
        ;
}

} // namespace

void __stack_chk_fail()
{
    End();
}

void __chk_fail()
{
    End();
}
