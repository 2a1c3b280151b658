// Waits: exact results, time-outs, who gets a signal.
#include "KernelTesting.h"

#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>
#include <tuple>
#include <vector>

namespace
{

/// A set of events, by value: "A" auto-reset, "M" manual-reset, lower case for clear.
class CEvents
{
public:
    explicit CEvents(const std::string& states)
    {
        for (const char c : states)
        {
            m_owners.push_back(MakeEvent(c == 'M' || c == 'm', c == 'M' || c == 'A'));
            m_handles.push_back(m_owners.back().get());
        }
    }

    DWORD Wait(bool bAll, DWORD dwMilliseconds = 0) const
    {
        return ::WaitForMultipleObjects(static_cast<DWORD>(m_handles.size()), m_handles.data(), bAll, dwMilliseconds);
    }

    HANDLE operator[](size_t n) const { return m_handles[n]; }
    const HANDLE* Handles() const { return m_handles.data(); }

    /// "1" for each event that is signalled; auto-reset ones are clear afterwards.
    std::string Signals() const
    {
        std::string signals;
        for (const HANDLE h : m_handles)
            signals += ::WaitForSingleObject(h, 0) == WAIT_OBJECT_0 ? '1' : '0';
        return signals;
    }

private:
    std::vector<CTestHandle> m_owners;
    std::vector<HANDLE> m_handles;
};

} // namespace

TEST(Waits, OneOfSeveralIsTheLowestSignalledAndOnlyThatIsTaken)
{
    // szLeft: signals after the wait
    const std::tuple<const char*, bool, DWORD, const char*> rows[] = {
        { "aaa", false, WAIT_TIMEOUT, "000" },  { "aAA", false, WAIT_OBJECT_0 + 1, "001" },
        { "AAA", false, WAIT_OBJECT_0, "011" }, { "aMA", false, WAIT_OBJECT_0 + 1, "011" },
        { "MA", false, WAIT_OBJECT_0, "11" },   { "aAA", true, WAIT_TIMEOUT, "011" },
        { "AAA", true, WAIT_OBJECT_0, "000" },  { "AMA", true, WAIT_OBJECT_0, "010" },
        { "Mm", true, WAIT_TIMEOUT, "10" },     { "A", true, WAIT_OBJECT_0, "0" },
    };
    for (const auto& [szStates, bAll, dwResult, szLeft] : rows)
    {
        const CEvents events(szStates);
        EXPECT_EQ(dwResult, events.Wait(bAll)) << szStates << bAll;
        EXPECT_EQ(szLeft, events.Signals()) << szStates << bAll;
    }
}

TEST(Waits, SixtyFourAreTheMost)
{
    const CEvents events(std::string(63, 'a') + "Aa");
    const HANDLE twice[] = { events[63], events[63] };
    EXPECT_EQ(WAIT_OBJECT_0, ::WaitForMultipleObjects(2, twice, FALSE, 0)) << "for one, the same may stand twice";
    EXPECT_TRUE(::SetEvent(events[63]));
    EXPECT_EQ(WAIT_OBJECT_0 + 63, ::WaitForMultipleObjects(64, events.Handles(), FALSE, 0));
    for (const DWORD nCount : { 65, 0 })
        EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_PARAMETER), LastErrorAfter([&] {
                      EXPECT_EQ(WAIT_FAILED, ::WaitForMultipleObjects(nCount, events.Handles(), FALSE, 0));
                  }))
            << nCount;
}

TEST(Waits, OneBadHandleFailsTheWaitAndTakesNothing)
{
    const CEvents events("AA");
    const HANDLE handles[] = { events[0], nullptr, events[1] };
    for (const BOOL bAll : { FALSE, TRUE })
        EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_HANDLE),
                  LastErrorAfter([&] { EXPECT_EQ(WAIT_FAILED, ::WaitForMultipleObjects(3, handles, bAll, 0)); }));
    EXPECT_EQ("11", events.Signals());
}

TEST(Waits, ATimeOutIsNeitherEarlyNorAFailure)
{
    const CEvents events("am");
    for (const bool bAll : { false, true })
    {
        const ULONGLONG nStart = ::GetTickCount64();
        EXPECT_EQ(UntouchedError, LastErrorAfter([&] { EXPECT_EQ(WAIT_TIMEOUT, events.Wait(bAll, 60)); }));
        EXPECT_GE(::GetTickCount64() - nStart + 20, 60u) << "ticks are coarse";
    }
}

TEST(Waits, ASetEventWakesOneOfThoseThatWaitOrAllWhenItIsManualReset)
{
    for (const bool bManual : { false, true })
    {
        const CTestHandle gate = MakeEvent(bManual, false);
        const CTestHandle passed = MakeEvent(false, false);
        std::atomic<int> nPassed{ 0 };
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i)
            threads.emplace_back([&] {
                EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(gate.get(), INFINITE));
                ++nPassed;
                ::SetEvent(passed.get());
            });
        ::SetEvent(gate.get());
        for (int i = 1; !bManual && i <= 4; ++i)
        {
            EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(passed.get(), INFINITE));
            EXPECT_EQ(i, nPassed);
            ::SetEvent(gate.get());
        }
        for (std::thread& thread : threads)
            thread.join();
    }
}

TEST(Waits, AWaitForAllTakesNothingUntilAllAreThere)
{
    const CEvents events("aaa");
    const CTestHandle done = MakeEvent(false, false);
    std::thread waiter([&] {
        EXPECT_EQ(WAIT_OBJECT_0, events.Wait(true, INFINITE));
        ::SetEvent(done.get());
    });
    ::SetEvent(events[2]);
    ::SetEvent(events[0]);
    EXPECT_EQ(WAIT_TIMEOUT, ::WaitForSingleObject(done.get(), 30));
    ::SetEvent(events[1]);
    EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(done.get(), INFINITE));
    waiter.join();
    EXPECT_EQ("000", events.Signals());
}

TEST(Waits, EverySignalOfAnAutoResetEventIsTakenExactlyOnce)
{
    const int nSignals = 300;
    const CEvents events("aa");
    const CTestHandle taken = MakeEvent(false, false);
    const CTestHandle stop = MakeEvent(true, false);
    std::atomic<int> counts[2] = {};
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i)
        threads.emplace_back([&] {
            const HANDLE handles[] = { stop.get(), events[0], events[1] };
            for (DWORD dw = 1; dw != WAIT_OBJECT_0;)
            {
                dw = ::WaitForMultipleObjects(3, handles, FALSE, INFINITE);
                if (dw != WAIT_OBJECT_0)
                {
                    ++counts[dw - 1];
                    ::SetEvent(taken.get());
                }
            }
        });
    std::mt19937 random(20261122);
    int sent[2] = {};
    for (int i = 0; i < nSignals; ++i)
    {
        const size_t nEvent = random() % 2;
        ++sent[nEvent];
        ::SetEvent(events[nEvent]);
        ASSERT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(taken.get(), INFINITE));
    }
    ::SetEvent(stop.get());
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(sent[0], counts[0]);
    EXPECT_EQ(sent[1], counts[1]);
}
