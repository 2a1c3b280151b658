#include "Platform/MessageQueue.h"

#include "Platform/Handles.h"
#include "Platform/Kernel/LastError.h"
#include "Platform/Kernel/MessageQueueObject.h"
#include "Platform/Kernel/ThreadObject.h"
#include "Platform/Kernel/Waitable.h"
#include "Platform/Threads.h"
#include "Platform/Waits.h"

#include <algorithm>
#include <deque>
#include <map>

namespace OvPlatform
{

namespace
{

constexpr CAccessMap QueueAccess = {};

/// A thread's queue, all of it guarded by the kernel lock. It is signalled by messages that came since the thread last
/// looked for some; a message that was seen and left there does not end another wait.
class CMessageQueue final : public CWaitable
{
public:
    CMessageQueue() : CWaitable(QueueAccess) {}

    bool IsSignalled() const override { return m_bChanged; }

    void Post(const MSG& message)
    {
        m_messages.push_back(message);
        m_bChanged = true;
        WakeWaiters();
    }

    /// The first message within the bounds, if there is one.
    bool Look(UINT nMin, UINT nMax, bool bRemove, MSG& message)
    {
        m_bChanged = false;
        const bool bAll = nMin == 0 && nMax == 0;
        const auto found = std::find_if(m_messages.begin(), m_messages.end(), [&](const MSG& m) {
            return bAll || m.message == WM_QUIT || (m.message >= nMin && m.message <= nMax);
        });
        if (found == m_messages.end())
            return false;
        message = *found;
        if (bRemove)
            m_messages.erase(found);
        return true;
    }

private:
    std::deque<MSG> m_messages;
    bool m_bChanged = false;
};

using CQueueMap = std::map<DWORD, std::shared_ptr<CMessageQueue>>;

/// By thread id; guarded by the kernel lock, never destroyed.
CQueueMap& Queues()
{
    static auto& s_queues = *new CQueueMap;
    return s_queues;
}

/// The calling thread's queue, made when it is not there yet; the kernel lock is held.
CMessageQueue& OwnQueue()
{
    CurrentThreadEntry(); // a thread that is known ends through EndThread, and so does its queue
    auto& pQueue = Queues()[GetCurrentThreadId()];
    if (!pQueue)
        pQueue = std::make_shared<CMessageQueue>();
    return *pQueue;
}

/// True when the window is none, as it must be.
bool CheckWindow(HWND hWnd)
{
    return hWnd == nullptr || Fail(ERROR_INVALID_WINDOW_HANDLE, false);
}

} // namespace

void CloseMessageQueue(DWORD nThreadId)
{
    const std::lock_guard<std::mutex> lock(KernelLock());
    Queues().erase(nThreadId);
}

} // namespace OvPlatform

using namespace OvPlatform;

DWORD MsgWaitForMultipleObjects(DWORD nCount, const HANDLE* phObjects, BOOL bWaitAll, DWORD dwMilliseconds,
                                DWORD dwWakeMask)
{
    if (nCount >= MAXIMUM_WAIT_OBJECTS || (nCount != 0 && !phObjects))
        return Fail(ERROR_INVALID_PARAMETER, WAIT_FAILED);
    return OrNoMemory(WAIT_FAILED, [&] {
        std::unique_lock<std::mutex> lock(KernelLock());
        CWaitSet set;
        set.bAll = bWaitAll != FALSE;
        const DWORD dwError = AddToWait(set, phObjects, nCount);
        if (dwError != ERROR_SUCCESS)
            return Fail(dwError, WAIT_FAILED);
        CMessageQueue& queue = OwnQueue();
        if ((dwWakeMask & (QS_POSTMESSAGE | QS_ALLPOSTMESSAGE)) != 0)
            set.Add(queue);
        return Wait(lock, set, dwMilliseconds);
    });
}

BOOL PeekMessageW(LPMSG pMsg, HWND hWnd, UINT nFilterMin, UINT nFilterMax, UINT nRemove)
{
    return CheckWindow(hWnd) && OrNoMemory(FALSE, [&] {
               const std::lock_guard<std::mutex> lock(KernelLock());
               return OwnQueue().Look(nFilterMin, nFilterMax, (nRemove & PM_REMOVE) != 0, *pMsg) ? TRUE : FALSE;
           });
}

BOOL GetMessageW(LPMSG pMsg, HWND hWnd, UINT nFilterMin, UINT nFilterMax)
{
    if (!CheckWindow(hWnd))
        return -1;
    while (!PeekMessageW(pMsg, hWnd, nFilterMin, nFilterMax, PM_REMOVE))
        if (MsgWaitForMultipleObjects(0, nullptr, FALSE, INFINITE, QS_ALLINPUT) == WAIT_FAILED)
            return -1;
    return pMsg->message != WM_QUIT;
}

BOOL GetMessageA(LPMSG pMsg, HWND hWnd, UINT nFilterMin, UINT nFilterMax)
{
    return GetMessageW(pMsg, hWnd, nFilterMin, nFilterMax); // only messages with characters differ, and there are none
}

BOOL TranslateMessage(const MSG*)
{
    return FALSE;
}

LRESULT DispatchMessageW(const MSG*)
{
    return 0;
}

LRESULT DispatchMessageA(const MSG*)
{
    return 0;
}

BOOL IsWindowUnicode(HWND)
{
    return Fail(ERROR_INVALID_WINDOW_HANDLE, FALSE);
}

BOOL PostThreadMessageW(DWORD nThreadId, UINT nMessage, WPARAM wParam, LPARAM lParam)
{
    return OrNoMemory(FALSE, [&] {
        const std::lock_guard<std::mutex> lock(KernelLock());
        const auto found = Queues().find(nThreadId);
        if (found == Queues().end())
            return Fail(ERROR_INVALID_THREAD_ID, FALSE);
        found->second->Post({ nullptr, nMessage, wParam, lParam, GetTickCount(), {} });
        return TRUE;
    });
}
