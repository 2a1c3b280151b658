// The wait that dispatches messages, over the stand-in's queue: what it calls is replaced at link time.
#include "TestWorker.h"

#include <gtest/gtest.h>

static CTestWorker* s_pWorker = nullptr; // ends when message WM_APP + 9 is dispatched
static BOOL s_bUnicode = FALSE;          // what every window is
static std::string s_strCalls;           // "AA1 ": the A forms' getting and dispatching of WM_APP + 1

static LRESULT Dispatch(const char* szForm, const MSG* pMsg)
{
    s_strCalls += szForm + std::to_string(pMsg->message - WM_APP) + " ";
    if (pMsg->message == WM_APP + 9)
    {
        s_pWorker->Stop(false, false);
        ::WaitForSingleObject(s_pWorker->OwnHandle(), INFINITE);
    }
    return 0;
}

extern "C"
{
    BOOL __real_GetMessageW(LPMSG pMsg, HWND hWnd, UINT nMin, UINT nMax);
    BOOL __wrap_GetMessageW(LPMSG pMsg, HWND hWnd, UINT nMin, UINT nMax)
    {
        return s_strCalls += "W", __real_GetMessageW(pMsg, hWnd, nMin, nMax);
    }
    BOOL __wrap_GetMessageA(LPMSG pMsg, HWND hWnd, UINT nMin, UINT nMax)
    {
        return s_strCalls += "A", __real_GetMessageW(pMsg, hWnd, nMin, nMax);
    }
    BOOL __wrap_IsWindowUnicode(HWND)
    {
        return s_bUnicode;
    }
    LRESULT __wrap_DispatchMessageW(const MSG* pMsg)
    {
        return Dispatch("W", pMsg);
    }
    LRESULT __wrap_DispatchMessageA(const MSG* pMsg)
    {
        return Dispatch("A", pMsg);
    }
}

TEST(OvThreadMessages, AreDispatchedWhileWaitingAndLeftWhenTheThreadHasEnded)
{
    const UINT messages[] = { WM_APP + 1, WM_QUIT, WM_APP + 9, WM_APP + 2 };
    MSG msg;
    ::PeekMessageW(&msg, nullptr, 0, 0, PM_NOREMOVE); // makes this thread's queue
    for (const bool bUnicode : { false, true })
    {
        CTestWorker worker([&messages, dwThreadId = ::GetCurrentThreadId()](CTestWorker& w) {
            for (const UINT nMessage : messages)
                EXPECT_TRUE(::PostThreadMessageW(dwThreadId, nMessage, 0, 0));
            return w.WaitForStop() ? 0u : 1u; // would never come without the dispatching
        });
        s_pWorker = &worker;
        s_bUnicode = bUnicode;
        s_strCalls.clear();
        worker.Start(true);
        worker.WaitForComplete(true);
        EXPECT_EQ(bUnicode ? "WW1 WWW9 " : "AA1 AAA9 ", s_strCalls); // the request to quit is not dispatched
        EXPECT_TRUE(::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE) && msg.message == WM_APP + 2);
        worker.Start(true); // its event is still set
        ::WaitForSingleObject(worker.OwnHandle(), INFINITE);
        worker.Stop(true, true);
        for (const UINT nMessage : messages)
            EXPECT_TRUE(::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE) && msg.message == nMessage) << nMessage;
    }
}
