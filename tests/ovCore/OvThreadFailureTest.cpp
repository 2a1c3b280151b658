// A thread that cannot be made: the call is replaced at link time.
#include "Raised.h"
#include "TestWorker.h"

#include <gtest/gtest.h>

extern "C" uintptr_t __wrap__beginthreadex(void*, unsigned, unsigned(__stdcall*)(void*), void*, unsigned, unsigned*)
{
    return 0;
}

TEST(OvThreadFailure, LeavesTheObjectStartedUntilItIsCleanedUp)
{
    CTestWorker worker([](CTestWorker&) { return 0u; }, L"name");
    EXPECT_EQ(L"0x80004005 OvThread | Method: _beginthreadex | Info Msg: Failed to create a worker thread | "
              L"pThdCls->m_szDesc: name",
              Raised([&] { worker.Start(true); }));
    EXPECT_TRUE(worker.IsRunning());
    EXPECT_EQ(nullptr, worker.GetThreadHandle().Get()); // of the thread that never was
    EXPECT_EQ(L"0x80004005 OvThread | Info Msg: This instance is already running | m_szDesc: name",
              Raised([&] { worker.Start(true); }));
    worker.CleanUp();
    worker.Start(false);
    EXPECT_EQ("before work after ", worker.m_strCalls);
    EXPECT_FALSE(worker.IsRunning());
}
