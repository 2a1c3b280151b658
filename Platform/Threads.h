// Threads and time. Sleeps are divided by Control's time scale, and the tick counts run as much faster, so that a
// caller who measures a sleep finds what it asked for.
#pragma once

#include "Platform/Types.h"

constexpr DWORD STILL_ACTIVE = 259;
constexpr unsigned CREATE_SUSPENDED = 4;

extern "C"
{
    /// Starts a thread.
    /// @param pSecurity  null.
    /// @param nStackSize  bytes; 0 stands for the system's default.
    /// @param nFlags  0; CREATE_SUSPENDED and others are refused with EINVAL.
    /// @param pThreadId  null, or receives the thread's id before the thread begins.
    /// @return the thread's handle, which the caller closes, or 0 with the reason in errno. The handle is signalled
    /// after
    ///         the function has returned and the thread's own objects are destroyed, so that the library that holds
    ///         them may then be unloaded.
    OVPLATFORM_API uintptr_t __cdecl _beginthreadex(void* pSecurity, unsigned nStackSize,
                                                    unsigned(__stdcall* pFunction)(void*), void* pArgument,
                                                    unsigned nFlags, unsigned* pThreadId);

    /// A pseudo-handle of the calling thread; it needs no closing.
    OVPLATFORM_API HANDLE WINAPI GetCurrentThread();

    /// The calling thread's id: a multiple of 4, never used again in this process.
    OVPLATFORM_API DWORD WINAPI GetCurrentThreadId();

    /// What the thread's function returned, or STILL_ACTIVE.
    OVPLATFORM_API BOOL WINAPI GetExitCodeThread(HANDLE hThread, LPDWORD pExitCode);

    /// 0 gives way to other threads; INFINITE never returns.
    OVPLATFORM_API void WINAPI Sleep(DWORD dwMilliseconds);

    /// Milliseconds since the system started; GetTickCount begins anew at 2^32.
    OVPLATFORM_API DWORD WINAPI GetTickCount();
    OVPLATFORM_API ULONGLONG WINAPI GetTickCount64();
}
