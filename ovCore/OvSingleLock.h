// The scoped lock.
#pragma once

#include "ovCore/OvException.h"
#include "ovCore/OvStackTrace.h"
#include "ovCore/OvSyncObject.h"

/// Holds a synchronisation object for a scope. Belongs to the thread that made it.
class COvSingleLock
{
public:
    /// @param pSync         not owned; must outlive the lock. Null raises E_INVALIDARG.
    /// @param bInitialLock  true locks at once, without a time limit.
    COvSingleLock(COvSyncObject* pSync, bool bInitialLock) : m_pSync(pSync), m_hObject(nullptr), m_bAcquired(false)
    {
        OV_SCOPE(L"COvSingleLock::COvSingleLock");
        OvCheckPointer(L"pSync", pSync, s_szSource, __LINE__);
        m_hObject = pSync->GetHandle();
        if (bInitialLock)
            Lock(INFINITE);
    }

    COvSingleLock(const COvSingleLock&) = delete;
    COvSingleLock& operator=(const COvSingleLock&) = delete;

    /// Releases the object when it is held. Raises nothing.
    ~COvSingleLock() { Unlock(); }

    /// @param dwTimeout  milliseconds.  @return whether the object is held now.
    bool Lock(DWORD dwTimeout)
    {
        OV_SCOPE(L"COvSingleLock::Lock");
        OvCheckPointer(L"m_pSync", m_pSync, s_szSource, __LINE__);
        m_bAcquired = m_pSync->Lock(dwTimeout);
        return m_bAcquired;
    }

    /// @return true when the object is no longer held, also when it never was. An event cannot be released: false.
    bool Unlock()
    {
        OV_SCOPE(L"COvSingleLock::Unlock");
        OvCheckPointer(L"m_pSync", m_pSync, s_szSource, __LINE__);
        if (m_bAcquired)
            m_bAcquired = !m_pSync->Unlock(INFINITE);
        return !m_bAcquired;
    }

private:
    static constexpr wchar_t s_szSource[] = L"ovCore\\OvSingleLock";

    COvSyncObject* m_pSync; // weak
    HANDLE m_hObject;       // the object's handle when this was made; weak
    bool m_bAcquired;
};
