// Kernel handles, events, critical sections, and the scoped lock.
#include "ovCore/OvCriticalSection.h"
#include "ovCore/OvEvent.h"
#include "ovCore/OvSingleLock.h"
#include "OvHandleT.h"

#include "Raised.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <utility>

namespace
{

const COvHandle s_empty;
const auto NewHandle = [] { return ::CreateEventW(nullptr, TRUE, FALSE, nullptr); };

// Asked right after a handle may have been closed, before another takes its value.
const auto IsOpen = [](HANDLE h) { return ::WaitForSingleObject(h, 0) != WAIT_FAILED; };

std::unique_ptr<COvEvent> Open(const wchar_t* szName)
{
    return std::unique_ptr<COvEvent>(COvEvent::OpenWithWait(szName, 0, 500, SYNCHRONIZE | READ_CONTROL, false));
}

} // namespace

TEST(OvHandle, IsClosedByEachWayToLoseIt)
{
    for (const auto& lose : { +[](COvHandle& h) { h.Close(), h.Close(); }, +[](COvHandle& h) { h.Set(nullptr); },
                              +[](COvHandle& h) { COvHandle gone(std::move(h)); }, +[](COvHandle& h) { h = s_empty; },
                              +[](COvHandle& h) { h = COvHandle(); } })
    {
        COvHandle handle(NewHandle());
        const HANDLE hEvent = handle.Get();
        EXPECT_TRUE(IsOpen(hEvent));
        lose(handle);
        EXPECT_FALSE(IsOpen(hEvent) || handle.Get() != nullptr);
    }
}

TEST(OvHandle, IsNeverOwnedByTwo)
{
    COvHandle handle(NewHandle());
    const HANDLE hEvent = handle.Get();
    COvHandle assigned(NewHandle());
    assigned = handle;
    EXPECT_NE(hEvent, assigned.Get());
    EXPECT_NE(hEvent, COvHandle(std::as_const(handle)).Get());
    ::SetEvent(assigned.Get());
    EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(hEvent, 0)); // one event
    handle = *&handle;
    COvHandle moved(std::move(handle = std::move(*&handle)));
    EXPECT_EQ(nullptr, handle.Get());
    EXPECT_EQ(hEvent, moved.Release());
    moved.Close();
    EXPECT_TRUE(moved.IsValid()); // 0 is
    moved.Set(INVALID_HANDLE_VALUE);
    EXPECT_FALSE(moved.IsValid());
    moved.Set(hEvent);
    moved.Set(moved.Get());
    moved.Duplicate(moved.Get());
    EXPECT_TRUE(IsOpen(hEvent) && moved.Get() == hEvent);
    COvHandle source(reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(0x0BADBAD0)));
    handle.Set(NewHandle());
    EXPECT_EQ(L"0x80004005 OvHandleT | Method: DuplicateHandle | " +
                  ErrorItem(L"Win32 GetLastError", ERROR_INVALID_HANDLE),
              Raised([&] { handle = source; }));
    EXPECT_EQ(nullptr, handle.Get());
    source.Release();
}

TEST(OvEvent, OfANameIsOneForAll)
{
    const wchar_t szName[] = L"Local\\OvEventTest_\xD83D\xDE00";
    {
        COvEvent first(false, true, szName, nullptr);
        COvEvent second(true, false, szName, nullptr); // its own wishes count for nothing
        EXPECT_TRUE(!first.Exists() && second.Exists());
        EXPECT_FALSE(second.Lock(0));
        const std::unique_ptr<COvEvent> pOpened = Open(szName);
        EXPECT_TRUE(pOpened->Exists());
        EXPECT_FALSE(pOpened->SetEvent()); // opened for waiting alone
        EXPECT_TRUE(first.SetEvent());
        EXPECT_TRUE(second.Lock(0) && pOpened->Lock(0));
        EXPECT_TRUE(pOpened->Unlock(1, nullptr) && !pOpened->Unlock(0) && pOpened->Lock(0));
    }
    COvEvent refused(true, true, L"Local\\OvEventTest\\no such folder", nullptr);
    const std::unique_ptr<COvEvent> pMissing = Open(szName);
    for (COvEvent* pEvent : { &refused, pMissing.get() })
    {
        EXPECT_EQ(nullptr, pEvent->GetHandle());
        EXPECT_FALSE(pEvent->Exists() || pEvent->Lock(INFINITE) || pEvent->SetEvent());
    }
}

TEST(OvSingleLock, CannotLetAnEventGo)
{
    COvEvent event(false, false, nullptr, nullptr);
    COvSingleLock lock(&event, false);
    EXPECT_FALSE(lock.Lock(0));
    EXPECT_TRUE(lock.Unlock()); // never held
    event.SetEvent();
    EXPECT_TRUE(lock.Lock(0));
    EXPECT_FALSE(lock.Unlock() || lock.Unlock());
    EXPECT_EQ(L"0x80070057 OvSingleLock | Info Msg: Invalid pointer | pSync: 0",
              Raised([] { COvSingleLock none(nullptr, true); }));
}

TEST(OvSingleLock, KeepsThreadsApartUntilItIsLeft)
{
    COvCriticalSection section;
    int nCount = 0;
    const auto throwing = [&] {
        COvSingleLock outer(&section, true);
        COvSingleLock inner(&section, false);
        EXPECT_TRUE(inner.Lock(0)); // a thread does not keep itself out
        ++nCount;
        throw 1;
    };
    const auto work = [&] {
        for (int i = 0; i < 2000; ++i)
            EXPECT_THROW(throwing(), int);
    };
    std::thread other(work);
    work();
    other.join();
    EXPECT_EQ(4000, nCount);
}
