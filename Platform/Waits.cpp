#include "Platform/Waits.h"

#include "Platform/Handles.h"
#include "Platform/Kernel/Clock.h"
#include "Platform/Kernel/LastError.h"
#include "Platform/Kernel/Waitable.h"

#include <algorithm>
#include <pthread.h>

namespace OvPlatform
{

namespace
{

/// A condition on the monotonic clock.
class CCondition
{
public:
    CCondition()
    {
        pthread_condattr_t attributes;
        pthread_condattr_init(&attributes);
        pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
        pthread_cond_init(&m_condition, &attributes);
        pthread_condattr_destroy(&attributes);
    }
    ~CCondition() { pthread_cond_destroy(&m_condition); }
    CCondition(const CCondition&) = delete;
    CCondition& operator=(const CCondition&) = delete;

    void Notify() { pthread_cond_signal(&m_condition); }
    void Wait(std::mutex& mutex) { pthread_cond_wait(&m_condition, mutex.native_handle()); }

    /// False when the time is over.
    bool WaitUntil(std::mutex& mutex, const timespec& deadline)
    {
        return pthread_cond_timedwait(&m_condition, mutex.native_handle(), &deadline) == 0;
    }

private:
    pthread_cond_t m_condition;
};

/// Takes the signals when the wait is satisfied. @return the result, or WAIT_TIMEOUT.
DWORD TakeSignals(const CWaitSet& set)
{
    const auto begin = set.objects.begin();
    const auto end = begin + static_cast<ptrdiff_t>(set.nCount);
    const auto isSignalled = [](const CWaitable* pObject) { return pObject->IsSignalled(); };
    if (set.bAll)
    {
        if (!std::all_of(begin, end, isSignalled))
            return WAIT_TIMEOUT;
        std::for_each(begin, end, [](CWaitable* pObject) { pObject->OnWaited(); });
        return WAIT_OBJECT_0;
    }
    const auto found = std::find_if(begin, end, isSignalled);
    if (found == end)
        return WAIT_TIMEOUT;
    (*found)->OnWaited();
    return static_cast<DWORD>(found - begin);
}

} // namespace

/// A thread that waits, on that thread's stack, in the lists of its objects.
class CWaiter
{
public:
    explicit CWaiter(const CWaitSet& set) : m_set(set)
    {
        for (size_t i = 0; i < m_set.nCount; ++i)
        {
            m_held[i] = m_set.objects[i]->shared_from_this();
            m_links[i].pWaiter = this;
            m_set.objects[i]->AddWaiter(m_links[i]);
        }
    }

    /// Sleeps until another thread has satisfied the wait or the time is over.
    DWORD Sleep(std::mutex& lock, DWORD dwMilliseconds)
    {
        const timespec deadline = DeadlineAfter(dwMilliseconds);
        bool bTime = true;
        while (m_dwResult == WAIT_TIMEOUT && bTime)
        {
            if (dwMilliseconds == INFINITE)
                m_condition.Wait(lock);
            else
                bTime = m_condition.WaitUntil(lock, deadline);
        }
        std::for_each(m_links.begin(), m_links.end(), [](CWaitLink& link) { link.Remove(); });
        return m_dwResult;
    }

    /// Called by the thread that changed one of the objects.
    void Offer()
    {
        if (m_dwResult == WAIT_TIMEOUT)
            m_dwResult = TakeSignals(m_set);
        if (m_dwResult != WAIT_TIMEOUT)
            m_condition.Notify();
    }

private:
    const CWaitSet& m_set;
    std::array<CKernelObjectPtr, MaxWaitObjects> m_held; // the objects live while they are waited for
    std::array<CWaitLink, MaxWaitObjects> m_links;
    CCondition m_condition;
    DWORD m_dwResult = WAIT_TIMEOUT;
};

void CWaitLink::InsertBefore(CWaitLink& link)
{
    pNext = &link;
    pPrevious = link.pPrevious;
    pPrevious->pNext = this;
    link.pPrevious = this;
}

void CWaitLink::Remove()
{
    pPrevious->pNext = pNext;
    pNext->pPrevious = pPrevious;
    pNext = pPrevious = this;
}

void CWaitable::WakeWaiters()
{
    for (CWaitLink* pLink = m_waiters.pNext; pLink != &m_waiters && IsSignalled(); pLink = pLink->pNext)
        pLink->pWaiter->Offer();
}

DWORD Wait(std::unique_lock<std::mutex>& lock, const CWaitSet& set, DWORD dwMilliseconds)
{
    const DWORD dwNow = TakeSignals(set);
    if (dwNow != WAIT_TIMEOUT || dwMilliseconds == 0)
        return dwNow;
    CWaiter waiter(set);
    const DWORD dwResult = waiter.Sleep(*lock.mutex(), dwMilliseconds);
    lock.unlock(); // the waiter may let go of the last pointer to an object
    return dwResult;
}

DWORD AddToWait(CWaitSet& set, const HANDLE* phObjects, DWORD nCount)
{
    for (DWORD i = 0; i < nCount; ++i)
    {
        const CHandleEntry* pEntry = FindEntryLocked(phObjects[i]);
        const auto pObject = pEntry ? dynamic_cast<CWaitable*>(pEntry->pObject.get()) : nullptr;
        if (!pObject)
            return ERROR_INVALID_HANDLE;
        if ((pEntry->dwAccess & SYNCHRONIZE) == 0)
            return ERROR_ACCESS_DENIED;
        const auto end = set.objects.begin() + static_cast<ptrdiff_t>(set.nCount);
        if (set.bAll && std::find(set.objects.begin(), end, pObject) != end)
            return ERROR_INVALID_PARAMETER;
        set.Add(*pObject);
    }
    return ERROR_SUCCESS;
}

} // namespace OvPlatform

using namespace OvPlatform;

DWORD WaitForSingleObject(HANDLE hObject, DWORD dwMilliseconds)
{
    return WaitForMultipleObjects(1, &hObject, FALSE, dwMilliseconds);
}

DWORD WaitForMultipleObjects(DWORD nCount, const HANDLE* phObjects, BOOL bWaitAll, DWORD dwMilliseconds)
{
    if (nCount == 0 || nCount > MAXIMUM_WAIT_OBJECTS || !phObjects)
        return Fail(ERROR_INVALID_PARAMETER, WAIT_FAILED);
    return OrNoMemory(WAIT_FAILED, [&] {
        std::unique_lock<std::mutex> lock(KernelLock());
        CWaitSet set;
        set.bAll = bWaitAll != FALSE;
        const DWORD dwError = AddToWait(set, phObjects, nCount);
        return dwError == ERROR_SUCCESS ? Wait(lock, set, dwMilliseconds) : Fail(dwError, WAIT_FAILED);
    });
}
