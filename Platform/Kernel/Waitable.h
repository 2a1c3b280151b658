// What can be waited on.
//
// A waiting thread stands in the list of each object that it waits for. Who changes an object's state serves the list
// front to back and takes the signal for the thread that it wakes, so that a signal is never seen twice or lost.
#pragma once

#include "Platform/Kernel/KernelObject.h"

#include <array>

namespace OvPlatform
{

class CWaiter;

/// A waiter's place in one object's list, which is a ring with the object's own link as its head.
struct CWaitLink
{
    CWaiter* pWaiter = nullptr;
    CWaitLink* pNext = this;
    CWaitLink* pPrevious = this;

    CWaitLink() = default;
    CWaitLink(const CWaitLink&) = delete;
    CWaitLink& operator=(const CWaitLink&) = delete;

    void InsertBefore(CWaitLink& link);
    void Remove();
};

/// A kernel object with a signalled state. Everything of it is used with the kernel lock held.
class CWaitable : public CKernelObject
{
public:
    using CKernelObject::CKernelObject;

    virtual bool IsSignalled() const = 0;

    /// A wait has been satisfied by this object.
    virtual void OnWaited() {}

    /// To be called when the object has become signalled.
    void WakeWaiters();

    void AddWaiter(CWaitLink& link) { link.InsertBefore(m_waiters); }

private:
    CWaitLink m_waiters;
};

constexpr size_t MaxWaitObjects = 64;

/// The objects of one wait.
struct CWaitSet
{
    std::array<CWaitable*, MaxWaitObjects> objects;
    size_t nCount = 0;
    bool bAll = false;

    void Add(CWaitable& object) { objects[nCount++] = &object; }
};

/// Waits; the lock is the kernel lock, held, and is given up while the thread sleeps.
/// @return the index of the object that satisfied the wait (0 for all), or WAIT_TIMEOUT.
DWORD Wait(std::unique_lock<std::mutex>& lock, const CWaitSet& set, DWORD dwMilliseconds);

/// Adds the objects behind handles to the set; the kernel lock is held.
/// @return 0, or the error: ERROR_INVALID_HANDLE, ERROR_ACCESS_DENIED, ERROR_INVALID_PARAMETER (twice the same, for
/// all).
DWORD AddToWait(CWaitSet& set, const HANDLE* phObjects, DWORD nCount);

} // namespace OvPlatform
