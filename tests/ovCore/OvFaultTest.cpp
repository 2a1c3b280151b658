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

/// The code of the fault on this thread; 0: none came.
DWORD FaultOf(void (*pfnFault)())
{
    try
    {
        pfnFault();
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
    static std::vector<ULONG_PTR> s_seen;
    ::_set_se_translator([](unsigned uCode, EXCEPTION_POINTERS* pPointers) {
        const EXCEPTION_RECORD& record = *pPointers->ExceptionRecord;
        s_seen = { uCode, record.NumberParameters, record.ExceptionInformation[0], record.ExceptionInformation[1] };
        throw CThrown{ record.ExceptionCode };
    });
    for (const ULONG_PTR nWriting : { 0, 1 })
    {
        EXPECT_EQ(EXCEPTION_ACCESS_VIOLATION, FaultOf(MachineFaults()[nWriting].pfnFault));
        EXPECT_EQ(std::vector<ULONG_PTR>({ EXCEPTION_ACCESS_VIOLATION, 2, nWriting, 8 }), s_seen); // address 8
    }
    ::_set_se_translator(nullptr);
}

TEST(OvFault, GoesToTheThreadsOwnTranslator)
{
    const _se_translator_function pfnFirst = [](unsigned, EXCEPTION_POINTERS*) { throw 1; };
    EXPECT_EQ(nullptr, ::_set_se_translator(pfnFirst));
    std::thread([] {
        EXPECT_EQ(nullptr, ::_set_se_translator(Throw));
        EXPECT_THROW(ReadNowhere(), CThrown);
    }).join();
    EXPECT_THROW(ReadNowhere(), int);
    EXPECT_EQ(pfnFirst, ::_set_se_translator(nullptr));
}

TEST(OvFault, MayComeWhileAnErrorIsHandled)
{
    CTestWorker worker([](CTestWorker&) -> DWORD { throw 1; });
    worker.m_onError = ReadNowhere; // the error of an error is dropped
    worker.Start(true);
    worker.WaitForComplete(false);
    EXPECT_EQ("before work error ", worker.m_strCalls);
}

TEST(OvFault, MayComeAgainOnManyThreads)
{
    std::atomic<int> nTranslated{ 0 };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int n = 0; n < 500; ++n)
                for (const CMachineFault& fault : MachineFaults()) // the stack overflow last
                {
                    if (&fault == &MachineFaults().back() && n >= 3)
                        continue;
                    ::_set_se_translator(Throw); // gives the stack its guard back
                    nTranslated += FaultOf(fault.pfnFault) == fault.dwCode ? 1 : 0;
                }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(4 * (500 * static_cast<int>(MachineFaults().size() - 1) + 3), nTranslated);
}
