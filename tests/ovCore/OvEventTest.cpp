// Events, critical sections, and the scoped lock over both.
#include "ovCore/OvEvent.h"
#include "ovCore/OvCriticalSection.h"
#include "ovCore/OvSingleLock.h"

#include "Raised.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace
{

const wchar_t s_szName[] = L"Local\\OvEventTest_\xD83D\xDE00";
const DWORD s_dwWatch = SYNCHRONIZE | READ_CONTROL;

int WaitsMet(bool bManual, bool bInitial, int nSets, int nWaits)
{
    COvEvent event(bInitial, bManual, nullptr, nullptr);
    for (int i = 0; i < nSets; ++i)
        EXPECT_TRUE(event.SetEvent());
    int nMet = 0;
    for (int i = 0; i < nWaits; ++i)
        nMet += event.Lock(0) ? 1 : 0;
    return nMet;
}

std::unique_ptr<COvEvent> Open(const wchar_t* szName, DWORD dwAccess)
{
    return std::unique_ptr<COvEvent>(COvEvent::OpenWithWait(szName, 0, 500, dwAccess, false));
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
    } rows[] = {
        { false, false, 0, 0 }, { false, true, 0, 1 }, { false, false, 3, 1 }, { false, true, 3, 1 },
        { true, false, 0, 0 },  { true, true, 0, 3 },  { true, false, 1, 3 },
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.nWaitsMet, WaitsMet(row.bManual, row.bInitial, row.nSets, 3)) << row.bManual << row.bInitial;
}

TEST(OvEvent, OfANameIsOneForAll)
{
    EXPECT_FALSE(Open(s_szName, s_dwWatch)->Exists());
    {
        COvEvent first(false, true, s_szName, nullptr);
        COvEvent second(true, false, s_szName, nullptr); // its own wishes count for nothing
        EXPECT_FALSE(first.Exists());
        EXPECT_TRUE(second.Exists());
        EXPECT_FALSE(second.Lock(0));
        const std::unique_ptr<COvEvent> pOpened = Open(s_szName, s_dwWatch);
        EXPECT_TRUE(pOpened->Exists());
        EXPECT_FALSE(pOpened->SetEvent()); // opened for waiting alone
        EXPECT_TRUE(first.SetEvent());
        EXPECT_TRUE(second.Lock(0));
        EXPECT_TRUE(pOpened->Lock(0));
        EXPECT_TRUE(pOpened->Lock(0));
    }
    EXPECT_FALSE(Open(s_szName, s_dwWatch)->Exists());
}

TEST(OvEvent, ThatCouldNotBeMadeIsQuiet)
{
    COvEvent refused(true, true, L"Local\\OvEventTest\\no such folder", nullptr);
    COvEvent empty(L"not used", nullptr);
    const std::unique_ptr<COvEvent> pMissing = Open(L"Local\\OvEventTest_missing", EVENT_MODIFY_STATE | s_dwWatch);
    for (COvEvent* pEvent : { &refused, &empty, pMissing.get() })
    {
        EXPECT_EQ(nullptr, pEvent->GetHandle());
        EXPECT_FALSE(pEvent->Exists());
        EXPECT_FALSE(pEvent->Lock(0));
        EXPECT_FALSE(pEvent->Lock(INFINITE));
        EXPECT_FALSE(pEvent->SetEvent());
    }
}

TEST(OvEvent, TakesAHandleOver)
{
    COvEvent event(L"not used", ::CreateEventW(nullptr, TRUE, TRUE, nullptr));
    EXPECT_TRUE(event.Exists());
    EXPECT_TRUE(event.Lock(0));
    EXPECT_FALSE(event.Unlock(0));
    EXPECT_TRUE(event.Unlock(1, nullptr));
    EXPECT_TRUE(event.Lock(0));
}

TEST(OvSingleLock, CannotLetAnEventGo)
{
    COvEvent event(false, false, nullptr, nullptr);
    COvSingleLock lock(&event, false);
    EXPECT_TRUE(lock.Unlock()); // never held
    EXPECT_FALSE(lock.Lock(0));
    EXPECT_TRUE(lock.Unlock());
    event.SetEvent();
    EXPECT_TRUE(lock.Lock(0));
    EXPECT_FALSE(lock.Unlock());
    EXPECT_FALSE(lock.Unlock());
}

TEST(OvSingleLock, RefusesNothing)
{
    for (const bool bLock : { false, true })
        EXPECT_EQ(L"0x80070057 OvSingleLock | Info Msg: Invalid pointer | pSync: 0",
                  Raised([&] { COvSingleLock lock(nullptr, bLock); }));
}

TEST(OvSingleLock, IsLetGoByEachWayOut)
{
    COvCriticalSection section;
    const auto isFree = [&section] {
        std::atomic<bool> bTaken{ false };
        std::thread([&] {
            COvSingleLock lock(&section, true);
            bTaken = true;
        }).join(); // would never come back while it is held
        return bTaken.load();
    };
    const auto throwing = [&section] {
        COvSingleLock lock(&section, true);
        throw 1;
    };
    EXPECT_THROW(throwing(), int);
    EXPECT_TRUE(isFree());
    COvSingleLock lock(&section, true);
    {
        COvSingleLock again(&section, false);
        EXPECT_TRUE(again.Lock(0)); // a thread does not keep itself out
    }
    EXPECT_TRUE(lock.Unlock());
    EXPECT_TRUE(isFree());
    EXPECT_EQ(nullptr, section.GetHandle());
}

TEST(OvCriticalSection, KeepsThreadsApart)
{
    const int nThreads = 4;
    const int nRounds = 2000;
    COvCriticalSection section;
    int nCount = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < nThreads; ++i)
        threads.emplace_back([&] {
            for (int n = 0; n < nRounds; ++n)
            {
                COvSingleLock outer(&section, true);
                COvSingleLock inner(&section, true);
                ++nCount;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(nThreads * nRounds, nCount);
}
