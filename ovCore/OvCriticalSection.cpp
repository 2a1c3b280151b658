#include "ovCore/OvCriticalSection.h"

COvCriticalSection::COvCriticalSection()
{
    ::InitializeCriticalSection(&m_cs);
}

COvCriticalSection::~COvCriticalSection()
{
    ::DeleteCriticalSection(&m_cs);
}
