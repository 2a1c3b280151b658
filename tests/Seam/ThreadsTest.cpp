// Threads: handles, ids, exit codes.
#include "KernelTesting.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <set>
#include <vector>

namespace
{

using CBody = unsigned(__stdcall*)(void*);

CTestHandle Start(CBody pBody, void* pArgument, unsigned* pId = nullptr, unsigned nStackSize = 0)
{
    return CTestHandle(reinterpret_cast<HANDLE>(::_beginthreadex(nullptr, nStackSize, pBody, pArgument, 0, pId)));
}

DWORD ExitCodeOf(const CTestHandle& thread)
{
    DWORD dwCode = 0;
    EXPECT_TRUE(::GetExitCodeThread(thread.get(), &dwCode));
    return dwCode;
}

unsigned __stdcall WaitAndTellId(void* pGate)
{
    ::WaitForSingleObject(pGate, INFINITE);
    return ::GetCurrentThreadId();
}

unsigned __stdcall StoreId(void* pId)
{
    *static_cast<std::atomic<DWORD>*>(pId) = ::GetCurrentThreadId();
    return 0xFFFFFFFF;
}

unsigned __stdcall ChangeLastError(void*)
{
    const DWORD dwFirst = ::GetLastError();
    ::SetLastError(8);
    return dwFirst;
}

std::atomic<int> s_nDestroyed{ 0 };

struct CSlowThreadLocal
{
    bool bUsed = false;
    ~CSlowThreadLocal()
    {
        ::Sleep(20);
        ++s_nDestroyed;
    }
};

unsigned __stdcall UseThreadLocal(void*)
{
    static thread_local CSlowThreadLocal t_object;
    t_object.bUsed = true;
    return 0;
}

} // namespace

TEST(Threads, AThreadIsNoEvent)
{
    const CTestHandle gate = MakeEvent(true, true);
    const CTestHandle thread = Start(&WaitAndTellId, gate.get());
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_HANDLE),
              LastErrorAfter([&] { EXPECT_FALSE(::SetEvent(thread.get())); }));
    DWORD dwCode = 0;
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_HANDLE),
              LastErrorAfter([&] { EXPECT_FALSE(::GetExitCodeThread(gate.get(), &dwCode)); }));
    ::WaitForSingleObject(thread.get(), INFINITE);
}

TEST(Threads, IdsAreDistinctAndHandlesSignalledWhenTheFunctionHasReturned)
{
    std::set<DWORD> ids = { ::GetCurrentThreadId() };
    const CTestHandle gate = MakeEvent(true, false);
    std::vector<CTestHandle> threads;
    for (int i = 0; i < 8; ++i)
    {
        unsigned nId = 0;
        threads.push_back(Start(&WaitAndTellId, gate.get(), &nId, 256 * 1024));
        ids.insert(nId);
        EXPECT_EQ(WAIT_TIMEOUT, ::WaitForSingleObject(threads.back().get(), 0));
        EXPECT_EQ(STILL_ACTIVE, ExitCodeOf(threads.back()));
    }
    EXPECT_EQ(9u, ids.size());
    EXPECT_EQ(0u, ids.count(0));
    ::SetEvent(gate.get());
    for (const CTestHandle& thread : threads)
    {
        EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(thread.get(), INFINITE));
        EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(thread.get(), 0)) << "it stays signalled";
        EXPECT_EQ(1u, ids.count(ExitCodeOf(thread)));
    }
}

TEST(Threads, AThreadGoesOnWithoutItsHandle)
{
    const CTestHandle gate = MakeEvent(true, false);
    std::atomic<DWORD> nId{ 0 };
    CTestHandle thread = Start(&StoreId, &nId);
    HANDLE hCopy = nullptr;
    ASSERT_TRUE(::DuplicateHandle(::GetCurrentProcess(), thread.get(), ::GetCurrentProcess(), &hCopy, 0, FALSE,
                                  DUPLICATE_SAME_ACCESS));
    const CTestHandle copy(hCopy);
    thread.reset();
    EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(copy.get(), INFINITE));
    EXPECT_NE(0u, nId);
    EXPECT_EQ(0xFFFFFFFF, ExitCodeOf(copy));
}

TEST(Threads, NothingOfTheThreadRunsOnceItsHandleIsSignalled)
{
    const CTestHandle thread = Start(&UseThreadLocal, nullptr);
    EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(thread.get(), INFINITE));
    EXPECT_EQ(1, s_nDestroyed);
}

TEST(Threads, LastErrorsAreEachThreadsOwn)
{
    ::SetLastError(7);
    const CTestHandle thread = Start(&ChangeLastError, nullptr);
    ::WaitForSingleObject(thread.get(), INFINITE);
    EXPECT_EQ(0u, ExitCodeOf(thread));
    EXPECT_EQ(7u, ::GetLastError());
}

TEST(Threads, SleepsTakeTheirTime)
{
    const ULONGLONG nStart = ::GetTickCount64();
    ::Sleep(0);
    ::Sleep(40);
    EXPECT_GE(::GetTickCount64() - nStart + 20, 40u) << "ticks are coarse";
    EXPECT_LT(::GetTickCount() - static_cast<DWORD>(nStart), 60000u) << "both counts are of one clock";
}
