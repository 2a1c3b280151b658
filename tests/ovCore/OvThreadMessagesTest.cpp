// The wait that dispatches messages, over the stand-in's queue: what it calls is replaced at link time.
#include "TestWorker.h"

#include <gtest/gtest.h>

static COvEvent* s_pLast = nullptr; // set when the last message has been dispatched
static BOOL s_bUnicode = FALSE;     // what every window is
static std::string s_strCalls;      // "AA1 ": the A forms' getting and dispatching of WM_APP + 1

static LRESULT Dispatch(const char* szForm, const MSG* pMsg)
{
    s_strCalls += szForm + std::to_string(pMsg->message - WM_APP) + " ";
    if (pMsg->message == WM_APP + 9)
        s_pLast->SetEvent();
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
    MSG msg;
    ::PeekMessageW(&msg, nullptr, 0, 0, PM_NOREMOVE); // makes this thread's queue
    const DWORD dwThreadId = ::GetCurrentThreadId();
    for (const bool bUnicode : { false, true })
    {
        COvEvent last(false, true, nullptr, nullptr);
        s_pLast = &last;
        s_bUnicode = bUnicode;
        s_strCalls.clear();
        CTestWorker worker([&](CTestWorker&) {
            for (const UINT nMessage : { WM_APP + 1, WM_QUIT, WM_APP + 9 })
                EXPECT_TRUE(::PostThreadMessageW(dwThreadId, nMessage, 0, 0));
            last.Lock(INFINITE); // would never come without the dispatching
            return 0u;
        });
        worker.Start(true);
        worker.WaitForComplete(true);
        EXPECT_EQ(bUnicode ? "WW1 WWW9 " : "AA1 AAA9 ", s_strCalls); // the request to quit is not dispatched
        EXPECT_EQ(nullptr, worker.OwnHandle());
        worker.Start(true); // its event is still set
        ::WaitForSingleObject(worker.OwnHandle(), INFINITE);
        worker.Stop(true, true);
        for (const UINT nMessage : { WM_APP + 1, WM_QUIT, WM_APP + 9 })
            EXPECT_TRUE(::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE) && msg.message == nMessage) << nMessage;
    }
}
