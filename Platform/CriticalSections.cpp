#include "CriticalSections.h"

#include <cstdio>
#include <cstdlib>

namespace
{

/// A fault of the caller that the platform leaves undefined: better seen than hidden.
void Check(int nResult, const char* szCall)
{
    if (nResult == 0)
        return;
    std::fprintf(stderr, "%s: error %d on a critical section\n", szCall, nResult);
    std::abort();
}

} // namespace

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

void EnterCriticalSection(LPCRITICAL_SECTION pSection)
{
    Check(pthread_mutex_lock(&pSection->mutex), "EnterCriticalSection");
}

BOOL TryEnterCriticalSection(LPCRITICAL_SECTION pSection)
{
    return pthread_mutex_trylock(&pSection->mutex) == 0;
}

void LeaveCriticalSection(LPCRITICAL_SECTION pSection)
{
    Check(pthread_mutex_unlock(&pSection->mutex), "LeaveCriticalSection");
}
