// The message queue of a thread, as far as a wait that pumps messages needs it. There are no windows: the only messages
// are those posted to a thread.
#pragma once

#include "Platform/Types.h"

using HWND = struct HWND__*;
using WPARAM = ULONG_PTR;
using LPARAM = LONG_PTR;
using LRESULT = LONG_PTR;

struct POINT
{
    LONG x;
    LONG y;
};

struct MSG
{
    HWND hwnd; ///< always null
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time; ///< GetTickCount when it was posted
    POINT pt;   ///< always 0, 0
};
using LPMSG = MSG*;

constexpr UINT WM_NULL = 0x0000;
constexpr UINT WM_QUIT = 0x0012;
constexpr UINT WM_USER = 0x0400;
constexpr UINT WM_APP = 0x8000;
constexpr UINT PM_NOREMOVE = 0;
constexpr UINT PM_REMOVE = 1;
constexpr DWORD QS_POSTMESSAGE = 0x0008;
constexpr DWORD QS_ALLPOSTMESSAGE = 0x0100;
constexpr DWORD QS_ALLINPUT = 0x04FF;

extern "C"
{
    /// As WaitForMultipleObjects, with the calling thread's message queue as one object more behind them.
    /// @param nCount  0 to 63.
    /// @param dwWakeMask  QS_*: without QS_POSTMESSAGE and QS_ALLPOSTMESSAGE no message ends the wait.
    /// @return WAIT_OBJECT_0 + nCount when messages came since the thread last looked into its queue.
    OVPLATFORM_API DWORD WINAPI MsgWaitForMultipleObjects(DWORD nCount, const HANDLE* phObjects, BOOL bWaitAll,
                                                          DWORD dwMilliseconds, DWORD dwWakeMask);

    /// Whether a message is there; it stays in the queue without PM_REMOVE. Does not block.
    /// @param hWnd  null; another is refused with ERROR_INVALID_WINDOW_HANDLE.
    /// @param nFilterMin, nFilterMax  the messages looked for; both 0: all. WM_QUIT always counts.
    OVPLATFORM_API BOOL WINAPI PeekMessageW(LPMSG pMsg, HWND hWnd, UINT nFilterMin, UINT nFilterMax, UINT nRemove);

    /// Waits for a message and takes it. @return 0 for WM_QUIT, -1 when it fails, otherwise 1.
    OVPLATFORM_API BOOL WINAPI GetMessageW(LPMSG pMsg, HWND hWnd, UINT nFilterMin, UINT nFilterMax);
    OVPLATFORM_API BOOL WINAPI GetMessageA(LPMSG pMsg, HWND hWnd, UINT nFilterMin, UINT nFilterMax);

    /// Always FALSE: there are no key messages.
    OVPLATFORM_API BOOL WINAPI TranslateMessage(const MSG* pMsg);

    /// Always 0: a message without a window goes nowhere.
    OVPLATFORM_API LRESULT WINAPI DispatchMessageW(const MSG* pMsg);
    OVPLATFORM_API LRESULT WINAPI DispatchMessageA(const MSG* pMsg);

    /// Always FALSE, with ERROR_INVALID_WINDOW_HANDLE.
    OVPLATFORM_API BOOL WINAPI IsWindowUnicode(HWND hWnd);

    /// Appends a message to a thread's queue. FALSE with ERROR_INVALID_THREAD_ID when no thread of that id has a queue:
    /// a thread gets one when it first looks for a message or waits for one.
    OVPLATFORM_API BOOL WINAPI PostThreadMessageW(DWORD nThreadId, UINT nMessage, WPARAM wParam, LPARAM lParam);
}
