#include "Platform/CriticalSections.h"

#include <cstdio>
#include <cstdlib>

namespace
{

void Check(int nResult, const char* szCall)
{
    if (nResult != 0)
        OvPlatformLockFault(nResult, szCall);
}

} // namespace

// What the platform leaves undefined is better seen than hidden.
void OvPlatformLockFault(int nError, const char* szCall)
{
    std::fprintf(stderr, "%s: error %d on a critical section\n", szCall, nError);
    std::abort();
}

void InitializeCriticalSection(LPCRITICAL_SECTION pSection)
{
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    Check(pthread_mutex_init(&pSection->mutex, &attributes), "InitializeCriticalSection");
    pthread_mutexattr_destroy(&attributes);
}

BOOL InitializeCriticalSectionAndSpinCount(LPCRITICAL_SECTION pSection, DWORD)
{
    InitializeCriticalSection(pSection);
    return TRUE;
}

void DeleteCriticalSection(LPCRITICAL_SECTION pSection)
{
    Check(pthread_mutex_destroy(&pSection->mutex), "DeleteCriticalSection");
}
