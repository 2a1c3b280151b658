// A thread that cannot be made: the call is replaced at link time.
#include "Raised.h"
#include "TestWorker.h"

#include <gtest/gtest.h>

using CThreadFunction = unsigned(__stdcall*)(void*);

extern "C" uintptr_t __wrap__beginthreadex(void*, unsigned, CThreadFunction, void*, unsigned, unsigned*)
{
    return 0;
}

TEST(OvThreadFailure, LeavesTheObjectStartedUntilItIsCleanedUp)
{
    CTestWorker worker([](CTestWorker&) { return 0u; }, L"name");
    const std::wstring strPrefix = L"0x80004005 OvThread | ";
    const std::wstring strFailed = strPrefix + L"Method: _beginthreadex | Info Msg: Failed to create a worker thread | "
                                               L"pThdCls->m_szDesc: name";
    const std::wstring strRunning = strPrefix + L"Info Msg: This instance is already running | m_szDesc: name";
    EXPECT_EQ(strFailed, Raised([&] { worker.Start(true); }));
    EXPECT_TRUE(worker.IsRunning());
    EXPECT_EQ(strRunning, Raised([&] { worker.Start(true); }));
    worker.CleanUp();
    EXPECT_EQ(strFailed, Raised([&] { worker.Start(true); }));
    EXPECT_EQ(nullptr, worker.GetThreadHandle().Get()); // of the thread that never was
    worker.CleanUp();
    worker.Start(false);
    EXPECT_EQ("before work after ", worker.m_strCalls);
    EXPECT_FALSE(worker.IsRunning());
}
