#include "ovCore/OvSingleLock.h"

#include "ovCore/OvException.h"
#include "ovCore/OvStackTrace.h"

namespace
{

const wchar_t s_szSource[] = L"ovCore\\OvSingleLock";

} // namespace

COvSingleLock::COvSingleLock(COvSyncObject* pSync, bool bInitialLock)
    : m_pSync(pSync), m_hObject(nullptr), m_bAcquired(false)
{
    COvStackTraceScope scope(L"COvSingleLock::COvSingleLock", s_szSource, __LINE__, COvStackTrace::Get());
    OvCheckPointer(L"pSync", pSync, s_szSource, __LINE__);
    m_hObject = pSync->GetHandle();
    if (bInitialLock)
        Lock(INFINITE);
}

COvSingleLock::~COvSingleLock()
{
    Unlock();
}

bool COvSingleLock::Lock(DWORD dwTimeout)
{
    COvStackTraceScope scope(L"COvSingleLock::Lock", s_szSource, __LINE__, COvStackTrace::Get());
    OvCheckPointer(L"m_pSync", m_pSync, s_szSource, __LINE__);
    m_bAcquired = m_pSync->Lock(dwTimeout);
    return m_bAcquired;
}

bool COvSingleLock::Unlock()
{
    COvStackTraceScope scope(L"COvSingleLock::Unlock", s_szSource, __LINE__, COvStackTrace::Get());
    OvCheckPointer(L"m_pSync", m_pSync, s_szSource, __LINE__);
    if (m_bAcquired)
        m_bAcquired = !m_pSync->Unlock(INFINITE);
    return !m_bAcquired;
}
