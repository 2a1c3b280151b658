// The wait that dispatches messages, with a timer's message, whose dispatching calls a function. Windows only.
#include "TestWorker.h"

#include <gtest/gtest.h>

static COvEvent* s_pFired = nullptr;

static void CALLBACK OnTimer(HWND, UINT, UINT_PTR, DWORD)
{
    s_pFired->SetEvent();
}

TEST(OvThreadTimer, FiresWhileWaiting)
{
    COvEvent fired(false, true, nullptr, nullptr);
    s_pFired = &fired;
    CTestWorker worker([&](CTestWorker&) { return fired.Lock(INFINITE) ? 0u : 1u; }); // never without the dispatching
    const UINT_PTR nTimer = ::SetTimer(nullptr, 0, USER_TIMER_MINIMUM, OnTimer);
    ASSERT_NE(0u, nTimer);
    worker.Start(true);
    worker.Stop(true, true);
    ::KillTimer(nullptr, nTimer);
    EXPECT_EQ("before work after ", worker.m_strCalls);
}
