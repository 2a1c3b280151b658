// Events, critical sections, and the scoped lock over both.
#include "ovCore/OvEvent.h"
#include "ovCore/OvCriticalSection.h"
#include "ovCore/OvSingleLock.h"

#include "Raised.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

static std::unique_ptr<COvEvent> Open(const wchar_t* szName)
{
    return std::unique_ptr<COvEvent>(COvEvent::OpenWithWait(szName, 0, 500, SYNCHRONIZE | READ_CONTROL, false));
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
    COvSingleLock lock(&section, true);
    EXPECT_TRUE(lock.Unlock());
    std::thread([&] { COvSingleLock last(&section, true); }).join(); // would never come back while it is held
}
