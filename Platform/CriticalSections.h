// Critical sections: re-entrant locks of one process, directly on the system's recursive mutexes, so that the tools
// that look for races and lock-order faults know them.
#pragma once

#include "Platform/Types.h"

#include <pthread.h>

struct CRITICAL_SECTION
{
    pthread_mutex_t mutex;
};
using LPCRITICAL_SECTION = CRITICAL_SECTION*;

extern "C"
{
    OVPLATFORM_API void WINAPI InitializeCriticalSection(LPCRITICAL_SECTION pSection);

    /// The spin count is not used. Always TRUE.
    OVPLATFORM_API BOOL WINAPI InitializeCriticalSectionAndSpinCount(LPCRITICAL_SECTION pSection, DWORD nSpinCount);

    /// No thread may hold the section.
    OVPLATFORM_API void WINAPI DeleteCriticalSection(LPCRITICAL_SECTION pSection);

    /// Reports the caller's fault and ends the process.
    [[noreturn]] OVPLATFORM_API void OvPlatformLockFault(int nError, const char* szCall);

    /// Waits as long as it takes; a thread that holds the section enters it again at once.
    inline void WINAPI EnterCriticalSection(LPCRITICAL_SECTION pSection)
    {
        if (const int nError = pthread_mutex_lock(&pSection->mutex))
            OvPlatformLockFault(nError, "EnterCriticalSection");
    }

    /// Undoes one entry of the calling thread. Leaving what the thread does not hold ends the process.
    inline void WINAPI LeaveCriticalSection(LPCRITICAL_SECTION pSection)
    {
        if (const int nError = pthread_mutex_unlock(&pSection->mutex))
            OvPlatformLockFault(nError, "LeaveCriticalSection");
    }
}
