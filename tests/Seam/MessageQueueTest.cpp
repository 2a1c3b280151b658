// A thread's message queue and the wait that watches it.
#include "KernelTesting.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace
{

void MakeQueue()
{
    MSG message;
    ::PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
}

bool PostToSelf(UINT nMessage, WPARAM wParam = 0)
{
    return ::PostThreadMessageW(::GetCurrentThreadId(), nMessage, wParam, 0) != FALSE;
}

/// Messages left in the queue, which is empty afterwards.
std::vector<UINT> TakeAll(UINT nMin = 0, UINT nMax = 0)
{
    std::vector<UINT> messages;
    MSG message;
    while (::PeekMessageW(&message, nullptr, nMin, nMax, PM_REMOVE))
        messages.push_back(message.message);
    return messages;
}

DWORD WaitFor(const CTestHandle& event, DWORD dwMilliseconds = 0, DWORD dwMask = QS_ALLINPUT, BOOL bAll = FALSE)
{
    const HANDLE handles[] = { event.get() };
    return ::MsgWaitForMultipleObjects(1, handles, bAll, dwMilliseconds, dwMask);
}

} // namespace

TEST(MessageQueue, MessagesComeInOrderAndStayUntilTaken)
{
    MakeQueue();
    for (const UINT n : { WM_APP + 1, WM_APP + 5, WM_APP + 2 })
        ASSERT_TRUE(PostToSelf(n, 11));
    MSG message = {};
    for (int i = 0; i < 2; ++i)
    {
        EXPECT_TRUE(::PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE));
        EXPECT_EQ(WM_APP + 1, message.message);
        EXPECT_EQ(11u, message.wParam);
        EXPECT_EQ(nullptr, message.hwnd);
    }
    EXPECT_EQ((std::vector<UINT>{ WM_APP + 5 }), TakeAll(WM_APP + 3, WM_APP + 9)) << "the filter's alone";
    EXPECT_EQ((std::vector<UINT>{ WM_APP + 1, WM_APP + 2 }), TakeAll());
    EXPECT_TRUE(TakeAll().empty());
}

TEST(MessageQueue, TakingAMessageWaitsForIt)
{
    MakeQueue();
    const DWORD nId = ::GetCurrentThreadId();
    std::thread poster([nId] {
        EXPECT_TRUE(::PostThreadMessageW(nId, WM_APP, 3, 4));
        EXPECT_TRUE(::PostThreadMessageW(nId, WM_APP, 5, 6));
        EXPECT_TRUE(::PostThreadMessageW(nId, WM_QUIT, 0, 0));
    });
    MSG message = {};
    EXPECT_TRUE(::GetMessageW(&message, nullptr, 0, 0));
    EXPECT_EQ(3u, message.wParam);
    EXPECT_EQ(4, message.lParam);
    EXPECT_TRUE(::GetMessageA(&message, nullptr, 0, 0));
    EXPECT_EQ(5u, message.wParam);
    EXPECT_FALSE(::GetMessageW(&message, nullptr, 0, 0)) << "the end of a message loop";
    EXPECT_EQ(static_cast<UINT>(WM_QUIT), message.message);
    poster.join();
}

TEST(MessageQueue, AThreadMessageGoesToNoWindow)
{
    MakeQueue();
    ASSERT_TRUE(PostToSelf(WM_APP));
    MSG message = {};
    ASSERT_TRUE(::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
    EXPECT_FALSE(::IsWindowUnicode(message.hwnd));
    EXPECT_FALSE(::TranslateMessage(&message));
    EXPECT_EQ(0, ::DispatchMessageW(&message));
    EXPECT_EQ(0, ::DispatchMessageA(&message));
}

TEST(MessageQueue, AWaitEndsForAnObjectFirstAndForMessagesThatAreNew)
{
    MakeQueue();
    const CTestHandle event = MakeEvent(true, false);
    EXPECT_EQ(WAIT_TIMEOUT, WaitFor(event));
    ASSERT_TRUE(PostToSelf(WM_APP));
    EXPECT_EQ(WAIT_OBJECT_0 + 1, WaitFor(event));
    ::SetEvent(event.get());
    EXPECT_EQ(WAIT_OBJECT_0, WaitFor(event));
    EXPECT_EQ(WAIT_OBJECT_0, WaitFor(event, 0, QS_ALLINPUT, TRUE)) << "all: the object and a message";
    ::ResetEvent(event.get());
    MakeQueue(); // looks, and leaves the message where it is
    EXPECT_EQ(WAIT_TIMEOUT, WaitFor(event)) << "a message that was seen is not new";
    ASSERT_TRUE(PostToSelf(WM_APP + 1));
    EXPECT_EQ(WAIT_OBJECT_0 + 1, WaitFor(event));
    EXPECT_EQ((std::vector<UINT>{ WM_APP, WM_APP + 1 }), TakeAll());
}

TEST(MessageQueue, AWaitCanBeForMessagesAlone)
{
    MakeQueue();
    EXPECT_EQ(WAIT_TIMEOUT, ::MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT));
    ASSERT_TRUE(PostToSelf(WM_APP));
    EXPECT_EQ(WAIT_OBJECT_0, ::MsgWaitForMultipleObjects(0, nullptr, FALSE, INFINITE, QS_ALLINPUT));
    TakeAll();
    const HANDLE handles[] = { nullptr };
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_HANDLE), LastErrorAfter([&] {
                  EXPECT_EQ(WAIT_FAILED, ::MsgWaitForMultipleObjects(1, handles, FALSE, 0, QS_ALLINPUT));
              }));
}
