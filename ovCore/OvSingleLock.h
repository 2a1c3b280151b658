// The scoped lock.
#pragma once

#include "ovCore/OvSyncObject.h"

/// Holds a synchronisation object for a scope. Belongs to the thread that made it.
class COvSingleLock
{
public:
    /// @param pSync         not owned; must outlive the lock. Null raises E_INVALIDARG.
    /// @param bInitialLock  true locks at once, without a time limit.
    COvSingleLock(COvSyncObject* pSync, bool bInitialLock);
    COvSingleLock(const COvSingleLock&) = delete;
    COvSingleLock& operator=(const COvSingleLock&) = delete;

    /// Releases the object when it is held. Raises nothing.
    ~COvSingleLock();

    /// @param dwTimeout  milliseconds.  @return whether the object is held now.
    bool Lock(DWORD dwTimeout);

    /// @return true when the object is no longer held, also when it never was. An event cannot be released: false.
    bool Unlock();

private:
    COvSyncObject* m_pSync; // weak
    HANDLE m_hObject;       // the object's handle when this was made; weak
    bool m_bAcquired;
};
