// Kernel objects and the handle table.
//
// One lock, the kernel lock, guards the handle table and the state of every object that can be waited on. It is the
// innermost lock of the stand-in: no other is taken while it is held.
#pragma once

#include "Platform/Errors.h"

#include <memory>
#include <mutex>

namespace OvPlatform
{

std::mutex& KernelLock();

/// What a kind of object grants for the four generic rights.
struct CAccessMap
{
    DWORD dwRead;
    DWORD dwWrite;
    DWORD dwExecute;
    DWORD dwAll;
};

/// What a handle stands for. It lives while a handle is open or somebody holds a pointer to it.
class CKernelObject : public std::enable_shared_from_this<CKernelObject>
{
public:
    /// @param access  outlives the object.
    explicit CKernelObject(const CAccessMap& access) : m_access(access) {}
    virtual ~CKernelObject() = default;
    CKernelObject(const CKernelObject&) = delete;
    CKernelObject& operator=(const CKernelObject&) = delete;

    /// The rights asked for, generic ones and MAXIMUM_ALLOWED spelled out.
    DWORD Grant(DWORD dwAsked) const;

    /// A handle more or less; the kernel lock is held.
    void AddHandle() { ++m_nHandles; }
    void RemoveHandle();

private:
    /// The last handle has gone; the kernel lock is held.
    virtual void OnLastHandleClosed() {}

    const CAccessMap& m_access;
    unsigned m_nHandles = 0; // guarded by the kernel lock
};

using CKernelObjectPtr = std::shared_ptr<CKernelObject>;

/// An open handle.
struct CHandleEntry
{
    CKernelObjectPtr pObject; ///< null: not open
    DWORD dwAccess = 0;       ///< specific and standard rights
};

/// A new handle to the object; dwAccess as for Grant. Throws std::bad_alloc. OpenHandleLocked: the kernel lock is held.
HANDLE OpenHandle(const CKernelObjectPtr& pObject, DWORD dwAccess);
HANDLE OpenHandleLocked(const CKernelObjectPtr& pObject, DWORD dwAccess);

/// What stands behind a handle or a pseudo-handle, null for what is none; the kernel lock is held, and the entry is
/// good for as long. Throws std::bad_alloc (a thread's object is made when it is first asked for).
const CHandleEntry* FindEntryLocked(HANDLE hObject);

/// A copy of that entry, empty for what is no handle.
CHandleEntry FindEntry(HANDLE hObject);

/// The object of that kind behind a handle. Null with ERROR_INVALID_HANDLE for what is none or of another kind, with
/// ERROR_ACCESS_DENIED when the handle lacks some of dwAccess.
template <class T>
std::shared_ptr<T> FindObject(HANDLE hObject, DWORD dwAccess)
{
    const CHandleEntry entry = FindEntry(hObject);
    auto pObject = std::dynamic_pointer_cast<T>(entry.pObject);
    if (!pObject)
        SetLastError(ERROR_INVALID_HANDLE);
    else if ((dwAccess & ~entry.dwAccess) != 0)
    {
        SetLastError(ERROR_ACCESS_DENIED);
        pObject.reset();
    }
    return pObject;
}

} // namespace OvPlatform
