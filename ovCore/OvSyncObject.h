// What the synchronisation objects share.
#pragma once

#include "OvPlatform.h"

/// Abstract base over one kernel handle. The order of the virtual operations is fixed. Not copyable. The base adds no
/// locking: an object may be used by several threads as far as its handle may.
class COvSyncObject
{
public:
    COvSyncObject(const COvSyncObject&) = delete;
    COvSyncObject& operator=(const COvSyncObject&) = delete;

    /// Closes the handle when there is one.
    virtual ~COvSyncObject();

    /// Waits for the handle.
    /// @param dwTimeout  milliseconds; 0 tests without waiting, INFINITE waits as long as it takes.
    /// @return true when the object was signalled in time; false on a time-out, and at once when there is no handle.
    virtual bool Lock(DWORD dwTimeout);

    /// Does nothing and returns true; for objects that are released by a count.
    virtual bool Unlock(LONG lCount, LONG* plPrevCount);

    /// Releases the object. @param dwTimeout  not used by the objects of this library.
    virtual bool Unlock(DWORD dwTimeout) = 0;

    /// The handle, still owned by the object; null when there is none.
    HANDLE GetHandle() const { return m_hObject; }

protected:
    /// @param hObject  the handle to own; null for none.
    explicit COvSyncObject(HANDLE hObject = nullptr) : m_hObject(hObject) {}

    HANDLE m_hObject;
};
