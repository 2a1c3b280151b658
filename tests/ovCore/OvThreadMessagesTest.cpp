// The wait that dispatches messages, over the stand-in's queue: what it calls is replaced at link time.
#include "TestWorker.h"

#include <gtest/gtest.h>

namespace
{

COvEvent* s_pLast = nullptr; // set when the last message has been dispatched
BOOL s_bUnicode = FALSE;     // what every window is
std::string s_strCalls;      // "A1 " for the A form's dispatching of message WM_APP + 1

const UINT s_nLastMessage = WM_APP + 9;

LRESULT Dispatch(const char* szForm, const MSG* pMsg)
{
    s_strCalls += szForm + std::to_string(pMsg->message - WM_APP) + " ";
    if (pMsg->message == s_nLastMessage)
        s_pLast->SetEvent();
    return 0;
}

} // namespace

extern "C"
{
    BOOL __real_GetMessageW(LPMSG pMsg, HWND hWnd, UINT nMin, UINT nMax);
    BOOL __wrap_GetMessageW(LPMSG pMsg, HWND hWnd, UINT nMin, UINT nMax)
    {
        s_strCalls += "W";
        return __real_GetMessageW(pMsg, hWnd, nMin, nMax);
    }

    BOOL __real_GetMessageA(LPMSG pMsg, HWND hWnd, UINT nMin, UINT nMax);
    BOOL __wrap_GetMessageA(LPMSG pMsg, HWND hWnd, UINT nMin, UINT nMax)
    {
        s_strCalls += "A";
        return __real_GetMessageA(pMsg, hWnd, nMin, nMax);
    }

    BOOL __wrap_IsWindowUnicode(HWND)
    {
        return s_bUnicode;
    }
    BOOL __wrap_TranslateMessage(const MSG*)
    {
        s_strCalls += "t";
        return FALSE;
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

TEST(OvThreadMessages, AreDispatchedWhileWaiting)
{
    const struct
    {
        BOOL bUnicode;
        const char* szCalls; // the request to quit is taken and not dispatched
    } rows[] = { { FALSE, "AtA1 AAtA9 " }, { TRUE, "WtW1 WWtW9 " } };
    MSG msg;
    ::PeekMessageW(&msg, nullptr, 0, 0, PM_NOREMOVE); // makes this thread's queue
    const DWORD dwThreadId = ::GetCurrentThreadId();
    for (const auto& row : rows)
    {
        COvEvent last(false, true, nullptr, nullptr);
        s_pLast = &last;
        s_bUnicode = row.bUnicode;
        s_strCalls.clear();
        CTestWorker worker([&](CTestWorker&) {
            for (const UINT nMessage : { WM_APP + 1, WM_QUIT, s_nLastMessage })
                EXPECT_TRUE(::PostThreadMessageW(dwThreadId, nMessage, 0, 0));
            last.Lock(INFINITE); // would never come without the dispatching
            return 0u;
        });
        worker.Start(true);
        worker.WaitForComplete(true);
        EXPECT_EQ(row.szCalls, s_strCalls);
        EXPECT_EQ(nullptr, worker.OwnHandle());
    }
}

TEST(OvThreadMessages, AreLeftWhenTheThreadHasEnded)
{
    MSG msg;
    ::PeekMessageW(&msg, nullptr, 0, 0, PM_NOREMOVE);
    const DWORD dwThreadId = ::GetCurrentThreadId();
    for (const bool bPump : { false, true })
    {
        CTestWorker worker([](CTestWorker&) { return 0u; });
        worker.Start(true);
        ::WaitForSingleObject(worker.OwnHandle(), INFINITE);
        for (const UINT nMessage : { WM_APP + 1, WM_APP + 2 })
            EXPECT_TRUE(::PostThreadMessageW(dwThreadId, nMessage, 0, 0));
        worker.Stop(true, bPump);
        for (const UINT nMessage : { WM_APP + 1, WM_APP + 2 })
        {
            EXPECT_TRUE(::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) << bPump;
            EXPECT_EQ(nMessage, msg.message) << bPump;
        }
    }
}
