// Events, critical sections, and the scoped lock over both.
#include "ovCore/OvEvent.h"
#include "ovCore/OvCriticalSection.h"
#include "ovCore/OvSingleLock.h"

#include "Raised.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

namespace
{

const wchar_t s_szName[] = L"Local\\OvEventTest_\xD83D\xDE00";

std::unique_ptr<COvEvent> Open()
{
    return std::unique_ptr<COvEvent>(COvEvent::OpenWithWait(s_szName, 0, 500, SYNCHRONIZE | READ_CONTROL, false));
}

} // namespace

TEST(OvEvent, SetsAreNotCounted)
{
    const struct
    {
        bool bManual;
        bool bInitial;
        int nSets;
        int nWaitsMet;
    } rows[] = { { false, false, 0, 0 }, { false, true, 0, 1 }, { false, false, 3, 1 },
                 { true, false, 0, 0 },  { true, true, 0, 3 },  { true, false, 1, 3 } };
    for (const auto& row : rows)
    {
        COvEvent event(row.bInitial, row.bManual, nullptr, nullptr);
        for (int i = 0; i < row.nSets; ++i)
            EXPECT_TRUE(event.SetEvent());
        int nMet = 0;
        for (int i = 0; i < 3; ++i)
            nMet += event.Lock(0) ? 1 : 0;
        EXPECT_EQ(row.nWaitsMet, nMet) << row.bManual << row.bInitial << row.nSets;
    }
}

TEST(OvEvent, OfANameIsOneForAll)
{
    {
        COvEvent first(false, true, s_szName, nullptr);
        COvEvent second(true, false, s_szName, nullptr); // its own wishes count for nothing
        EXPECT_FALSE(first.Exists());
        EXPECT_TRUE(second.Exists());
        EXPECT_FALSE(second.Lock(0));
        const std::unique_ptr<COvEvent> pOpened = Open();
        EXPECT_TRUE(pOpened->Exists());
        EXPECT_FALSE(pOpened->SetEvent()); // opened for waiting alone
        EXPECT_TRUE(first.SetEvent());
        EXPECT_TRUE(second.Lock(0));
        EXPECT_TRUE(pOpened->Lock(0));
        EXPECT_TRUE(pOpened->Unlock(1, nullptr));
        EXPECT_FALSE(pOpened->Unlock(0));
        EXPECT_TRUE(pOpened->Lock(0));
    }
    COvEvent refused(true, true, L"Local\\OvEventTest\\no such folder", nullptr);
    const std::unique_ptr<COvEvent> pMissing = Open();
    for (COvEvent* pEvent : { &refused, pMissing.get() })
    {
        EXPECT_EQ(nullptr, pEvent->GetHandle());
        EXPECT_FALSE(pEvent->Exists());
        EXPECT_FALSE(pEvent->Lock(INFINITE));
        EXPECT_FALSE(pEvent->SetEvent());
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
    EXPECT_FALSE(lock.Unlock());
    EXPECT_FALSE(lock.Unlock());
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
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int n = 0; n < 1000; ++n)
                EXPECT_THROW(throwing(), int);
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(4000, nCount);
    COvSingleLock lock(&section, true);
    EXPECT_TRUE(lock.Unlock());
    std::thread([&] { COvSingleLock other(&section, true); }).join(); // would never come back while it is held
}
