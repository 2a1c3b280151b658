// Kernel objects, the handle table and the waits on them. For the stand-in's own files only.
//
// One lock, the kernel lock, guards the handle table and the state of every object that can be waited on. It is the
// innermost lock of the stand-in: no other is taken while it is held.
#pragma once

#include "Errors.h"

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

    /// The rights asked for, generic ones and MAXIMUM_ALLOWED spelled out.
    DWORD Grant(DWORD dwAsked) const;
};

/// What a handle stands for. It lives while a handle is open or somebody holds a pointer to it.
class CKernelObject
{
public:
    explicit CKernelObject(const CAccessMap& access) : m_access(access) {}
    virtual ~CKernelObject() = default;
    CKernelObject(const CKernelObject&) = delete;
    CKernelObject& operator=(const CKernelObject&) = delete;

    const CAccessMap& Access() const { return m_access; }

private:
    friend class CHandleTable;

    /// Called with the kernel lock held, when the last handle has gone.
    virtual void OnLastHandleClosed() {}

    const CAccessMap& m_access;
    unsigned m_nHandles = 0; // guarded by the kernel lock
};

using CKernelObjectPtr = std::shared_ptr<CKernelObject>;

/// A new handle to the object, with dwAccess as asked for (generic rights are spelled out). Throws std::bad_alloc.
/// Must not be called with the kernel lock held.
HANDLE OpenHandle(const CKernelObjectPtr& pObject, DWORD dwAccess);

/// The object behind a handle or a pseudo-handle; null with the last error set to ERROR_INVALID_HANDLE, or to
/// ERROR_ACCESS_DENIED when the handle lacks some of dwAccess. Must not be called with the kernel lock held.
CKernelObjectPtr FindObject(HANDLE hObject, DWORD dwAccess);

/// The same for one kind of object: another kind is ERROR_INVALID_HANDLE.
template <class T>
std::shared_ptr<T> FindObjectOf(HANDLE hObject, DWORD dwAccess)
{
    auto pObject = FindObject(hObject, 0);
    auto pFound = std::dynamic_pointer_cast<T>(pObject);
    if (pObject && !pFound)
        SetLastError(ERROR_INVALID_HANDLE);
    else if (pFound && dwAccess != 0 && !FindObject(hObject, dwAccess))
        pFound.reset();
    return pFound;
}

} // namespace OvPlatform
