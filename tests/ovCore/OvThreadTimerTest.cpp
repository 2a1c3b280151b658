// The wait that dispatches messages, with a timer's message, whose dispatching calls a function. Windows only.
#include "TestWorker.h"

#include <gtest/gtest.h>

namespace
{

COvEvent* s_pFired = nullptr;

void CALLBACK OnTimer(HWND, UINT, UINT_PTR, DWORD)
{
    s_pFired->SetEvent();
}

} // namespace

TEST(OvThreadTimer, FiresWhileWaiting)
{
    COvEvent fired(false, true, nullptr, nullptr);
    s_pFired = &fired;
    CTestWorker worker([&](CTestWorker&) -> DWORD {
        fired.Lock(INFINITE); // would never come without the dispatching
        return 0;
    });
    const UINT_PTR nTimer = ::SetTimer(nullptr, 0, USER_TIMER_MINIMUM, OnTimer);
    ASSERT_NE(0u, nTimer);
    worker.Start(true);
    worker.Stop(true, true);
    ::KillTimer(nullptr, nTimer);
    EXPECT_EQ("before work after ", worker.m_strCalls);
}
