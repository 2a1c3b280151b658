// Machine faults in a worker's body.
#include "ovCore/OvSehExceptionHandler.h"
#include "ovCore/OvSingleLock.h"

#include "MachineFaults.h"
#include "TestWorker.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace
{

const HRESULT s_hrFault = static_cast<HRESULT>(0xC000B02Fu);

/// The evidence of a fault with this code.
std::wstring EvidenceOf(DWORD dwCode)
{
    EXCEPTION_RECORD record = {};
    record.ExceptionCode = dwCode;
    EXCEPTION_POINTERS pointers = { &record, nullptr };
    try
    {
        SEHtoExceptionTranslation(dwCode, &pointers);
    }
    catch (const COvException& e)
    {
        return e.GetEvidence(nullptr);
    }
}

/// Runs a fault under a lock, in a worker's body. @return the worker's error.
std::wstring ErrorOf(const CMachineFault& fault, bool bAsync, COvCriticalSection& section)
{
    CTestWorker worker([&](CTestWorker&) -> DWORD {
        COvSingleLock lock(&section, true);
        fault.pfnFault();
        return 1;
    });
    worker.Start(bAsync);
    worker.WaitForComplete(false);
    EXPECT_EQ("before work error ", worker.m_strCalls) << fault.szName;
    EXPECT_EQ(s_hrFault, worker.m_hrError) << fault.szName;
    EXPECT_EQ(L"OvSehExceptionHandler", worker.m_strErrorFile) << fault.szName;
    return worker.m_strError;
}

struct CThrown
{
    DWORD dwCode;
};

void Throw(unsigned, EXCEPTION_POINTERS* pPointers)
{
    throw CThrown{ pPointers->ExceptionRecord->ExceptionCode };
}

/// The code of what the work meets on this thread; 0: nothing.
template <class Work>
DWORD FaultOf(Work&& work)
{
    try
    {
        work();
    }
    catch (const CThrown& thrown)
    {
        return thrown.dwCode;
    }
    return 0;
}

} // namespace

TEST(OvFault, ReachesTheWorkersError)
{
    for (const bool bAsync : { true, false })
        for (const CMachineFault& fault : MachineFaults())
        {
            COvCriticalSection section;
            const unsigned nBefore = FaultCleanUps();
            EXPECT_EQ(EvidenceOf(fault.dwCode), ErrorOf(fault, bAsync, section)) << fault.szName << bAsync;
            EXPECT_LT(fault.dwCode == EXCEPTION_STACK_OVERFLOW ? 1000 : 0, FaultCleanUps() - nBefore) << fault.szName;
            std::thread([&] { COvSingleLock lock(&section, true); }).join(); // it is free
        }
}

TEST(OvFault, LeavesItsRecord)
{
    DWORD dwFlags = 1;
    std::vector<ULONG_PTR> seen;
    const auto note = [&](unsigned uCode, EXCEPTION_POINTERS* pPointers) {
        const EXCEPTION_RECORD& record = *pPointers->ExceptionRecord;
        dwFlags = record.ExceptionFlags;
        seen = { uCode, record.NumberParameters, record.ExceptionInformation[0], record.ExceptionInformation[1] };
        EXPECT_EQ(nullptr, record.ExceptionRecord);
        EXPECT_NE(nullptr, record.ExceptionAddress);
        throw CThrown{ record.ExceptionCode };
    };
    static const auto* s_pNote = &note;
    ::_set_se_translator([](unsigned uCode, EXCEPTION_POINTERS* pPointers) { (*s_pNote)(uCode, pPointers); });
    EXPECT_EQ(EXCEPTION_ACCESS_VIOLATION, FaultOf([] { ReadNowhere(); }));
    EXPECT_EQ(std::vector<ULONG_PTR>({ EXCEPTION_ACCESS_VIOLATION, 2, 0, 8 }), seen); // reading, address 8
    EXPECT_EQ(EXCEPTION_ACCESS_VIOLATION, FaultOf(MachineFaults()[1].pfnFault));
    EXPECT_EQ(std::vector<ULONG_PTR>({ EXCEPTION_ACCESS_VIOLATION, 2, 1, 8 }), seen);
    EXPECT_EQ(0u, dwFlags);
    ::_set_se_translator(nullptr);
}

TEST(OvFault, GoesToTheThreadsOwnTranslator)
{
    const auto first = [](unsigned, EXCEPTION_POINTERS*) { throw 1; };
    const auto second = [](unsigned, EXCEPTION_POINTERS*) { throw 2.0; };
    const _se_translator_function pfnFirst = first;
    const _se_translator_function pfnSecond = second;
    EXPECT_EQ(nullptr, ::_set_se_translator(pfnFirst));
    EXPECT_THROW(ReadNowhere(), int);
    std::thread([&] {
        EXPECT_EQ(nullptr, ::_set_se_translator(pfnSecond));
        EXPECT_THROW(ReadNowhere(), double);
    }).join();
    EXPECT_THROW(ReadNowhere(), int);
    EXPECT_EQ(pfnFirst, ::_set_se_translator(pfnSecond));
    EXPECT_THROW(ReadNowhere(), double);
    EXPECT_EQ(pfnSecond, ::_set_se_translator(nullptr));
    EXPECT_EQ(nullptr, ::_set_se_translator(nullptr));
}

TEST(OvFault, MayComeWhileAnotherIsHandled)
{
    ::_set_se_translator(Throw);
    DWORD dwInner = 0;
    try
    {
        ReadNowhere();
    }
    catch (const CThrown&)
    {
        dwInner = FaultOf(MachineFaults()[3].pfnFault);
    }
    EXPECT_EQ(EXCEPTION_INT_DIVIDE_BY_ZERO, dwInner);
    CTestWorker worker([](CTestWorker&) -> DWORD { throw 1; });
    worker.m_onError = ReadNowhere; // the error of an error is dropped
    worker.Start(true);
    worker.WaitForComplete(false);
    EXPECT_EQ("before work error ", worker.m_strCalls);
    ::_set_se_translator(nullptr);
}

TEST(OvFault, OfTheStackMayComeAgain)
{
    std::thread([] {
        for (int i = 0; i < 3; ++i)
        {
            ::_set_se_translator(Throw); // gives the stack its guard back
            EXPECT_EQ(EXCEPTION_STACK_OVERFLOW, FaultOf(MachineFaults().back().pfnFault)) << i;
            EXPECT_EQ(EXCEPTION_ACCESS_VIOLATION, FaultOf(MachineFaults().front().pfnFault)) << i;
        }
    }).join();
}

TEST(OvFault, ComesTenThousandTimesOnFourThreads)
{
    std::atomic<int> nTranslated{ 0 };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            ::_set_se_translator(Throw);
            for (int n = 0; n < 2500; ++n)
            {
                const CMachineFault& fault = MachineFaults()[static_cast<size_t>(n) % (MachineFaults().size() - 1)];
                nTranslated += FaultOf(fault.pfnFault) == fault.dwCode ? 1 : 0;
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(10000, nTranslated);
}
