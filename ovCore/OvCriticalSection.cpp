#include "ovCore/OvCriticalSection.h"

COvCriticalSection::COvCriticalSection()
{
    ::InitializeCriticalSection(&m_cs);
}

COvCriticalSection::~COvCriticalSection()
{
    ::DeleteCriticalSection(&m_cs);
}

bool COvCriticalSection::Lock(DWORD)
{
    ::EnterCriticalSection(&m_cs);
    return true;
}

bool COvCriticalSection::Unlock(DWORD)
{
    ::LeaveCriticalSection(&m_cs);
    return true;
}
