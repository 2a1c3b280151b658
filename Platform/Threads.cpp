#include "Platform/Threads.h"

#include "Platform/Handles.h"
#include "Platform/Kernel/Clock.h"
#include "Platform/Kernel/LastError.h"
#include "Platform/Kernel/MessageQueueObject.h"
#include "Platform/Kernel/ThreadObject.h"
#include "Platform/Kernel/Waitable.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <pthread.h>
#include <sched.h>
#include <unistd.h>

namespace OvPlatform
{

namespace
{

constexpr DWORD ThreadAllAccess = STANDARD_RIGHTS_REQUIRED | SYNCHRONIZE | 0xFFFF;
constexpr CAccessMap ThreadAccess = { READ_CONTROL | 0x0048, READ_CONTROL | 0x0437, READ_CONTROL | SYNCHRONIZE | 0x0800,
                                      ThreadAllAccess };

using CThreadFunction = unsigned(__stdcall*)(void*);

class CThread final : public CWaitable
{
public:
    explicit CThread(DWORD nId) : CWaitable(ThreadAccess), m_nId(nId) {}

    bool IsSignalled() const override { return m_bEnded; }
    DWORD Id() const { return m_nId; }

    void SetExitCode(DWORD dwCode) { m_dwExitCode = dwCode; }

    DWORD ExitCode() const
    {
        const std::lock_guard<std::mutex> lock(KernelLock());
        return m_bEnded ? m_dwExitCode : STILL_ACTIVE;
    }

    void End()
    {
        const std::lock_guard<std::mutex> lock(KernelLock());
        m_bEnded = true;
        WakeWaiters();
    }

private:
    const DWORD m_nId;
    DWORD m_dwExitCode = 0; // the thread's own until it has ended
    bool m_bEnded = false;  // guarded by the kernel lock
};

/// What a thread has of its own, under one thread-specific key. The key's destructor runs after those of all
/// thread_local objects, so that nothing of a library runs in the thread any more when its handle is signalled.
struct CThreadState
{
    std::shared_ptr<CThread> pThread;
    CHandleEntry entry;
};

void EndThread(void* pValue)
{
    const std::unique_ptr<CThreadState> pState(static_cast<CThreadState*>(pValue));
    CloseMessageQueue(pState->pThread->Id());
    pState->pThread->End();
}

pthread_key_t StateKey()
{
    static const pthread_key_t s_key = [] {
        pthread_key_t key = 0;
        if (pthread_key_create(&key, EndThread) != 0)
            throw std::bad_alloc();
        return key;
    }();
    return s_key;
}

DWORD NextThreadId()
{
    static std::atomic<DWORD> s_nLast{ 0 };
    return s_nLast += 4;
}

thread_local DWORD t_nThreadId = 0; // 0: not asked for yet

/// Makes the state the calling thread's.
CThreadState& Adopt(std::unique_ptr<CThreadState> pState)
{
    if (pthread_setspecific(StateKey(), pState.get()) != 0)
        throw std::bad_alloc();
    t_nThreadId = pState->pThread->Id();
    return *pState.release();
}

std::unique_ptr<CThreadState> NewState(DWORD nThreadId)
{
    const auto pThread = std::make_shared<CThread>(nThreadId);
    return std::make_unique<CThreadState>(CThreadState{ pThread, { pThread, ThreadAllAccess } });
}

struct CStart
{
    std::unique_ptr<CThreadState> pState;
    CThreadFunction pFunction;
    void* pArgument;
};

void* RunThread(void* pValue) noexcept
{
    const std::unique_ptr<CStart> pStart(static_cast<CStart*>(pValue));
    CThread& thread = *Adopt(std::move(pStart->pState)).pThread;
    thread.SetExitCode(pStart->pFunction(pStart->pArgument));
    return nullptr;
}

/// 0, or the error.
int StartDetached(unsigned nStackSize, CStart* pStart)
{
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    if (nStackSize != 0)
        pthread_attr_setstacksize(&attributes, std::max<size_t>(nStackSize, static_cast<size_t>(PTHREAD_STACK_MIN)));
    pthread_t thread = {};
    const int nError = pthread_create(&thread, &attributes, RunThread, pStart);
    pthread_attr_destroy(&attributes);
    return nError;
}

uintptr_t FailStart(int nError, DWORD dwCode)
{
    errno = nError;
    return Fail<uintptr_t>(dwCode, 0);
}

uintptr_t StartThread(unsigned nStackSize, CThreadFunction pFunction, void* pArgument, unsigned* pThreadId)
{
    StateKey(); // here, where its failure can be told
    auto pStart = std::make_unique<CStart>(CStart{ NewState(NextThreadId()), pFunction, pArgument });
    const DWORD nThreadId = pStart->pState->pThread->Id();
    const HANDLE hThread = OpenHandle(pStart->pState->pThread, ThreadAllAccess);
    if (pThreadId)
        *pThreadId = nThreadId;
    if (StartDetached(nStackSize, pStart.get()) != 0)
    {
        CloseHandle(hThread);
        return FailStart(EAGAIN, ERROR_NOT_ENOUGH_MEMORY);
    }
    pStart.release(); // the new thread's now
    return reinterpret_cast<uintptr_t>(hThread);
}

} // namespace

const CHandleEntry& CurrentThreadEntry()
{
    if (auto* pState = static_cast<CThreadState*>(pthread_getspecific(StateKey())))
        return pState->entry;
    return Adopt(NewState(GetCurrentThreadId())).entry;
}

} // namespace OvPlatform

using namespace OvPlatform;

uintptr_t _beginthreadex(void* pSecurity, unsigned nStackSize, CThreadFunction pFunction, void* pArgument,
                         unsigned nFlags, unsigned* pThreadId)
{
    if (pSecurity || !pFunction || nFlags != 0)
        return FailStart(EINVAL, ERROR_INVALID_PARAMETER);
    try
    {
        return StartThread(nStackSize, pFunction, pArgument, pThreadId);
    }
    catch (const std::bad_alloc&)
    {
        return FailStart(EAGAIN, ERROR_NOT_ENOUGH_MEMORY);
    }
}

HANDLE GetCurrentThread()
{
    return reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-2));
}

DWORD GetCurrentThreadId()
{
    if (t_nThreadId == 0)
        t_nThreadId = NextThreadId();
    return t_nThreadId;
}

BOOL GetExitCodeThread(HANDLE hThread, LPDWORD pExitCode)
{
    constexpr DWORD QueryLimited = 0x0800;
    const auto pThread = FindObject<CThread>(hThread, QueryLimited);
    if (!pThread)
        return FALSE;
    *pExitCode = pThread->ExitCode();
    return TRUE;
}

void Sleep(DWORD dwMilliseconds)
{
    if (dwMilliseconds == 0)
    {
        sched_yield();
        return;
    }
    while (dwMilliseconds == INFINITE)
        pause();
    const timespec deadline = DeadlineAfter(dwMilliseconds);
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &deadline, nullptr) == EINTR)
        ;
}

DWORD GetTickCount()
{
    return static_cast<DWORD>(TickCount());
}

ULONGLONG GetTickCount64()
{
    return TickCount();
}
