// Machine faults in a worker's body.
#include "ovCore/OvSehExceptionHandler.h"
#include "ovCore/OvSingleLock.h"

#include "MachineFaults.h"
#include "TestWorker.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <thread>
#include <vector>

namespace
{

const HRESULT s_hrFault = static_cast<HRESULT>(0xC000B02Fu);

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

/// Meets a fault with a lock held and something owned. @return the evidence of what came of it.
std::wstring MeetOwning(const CMachineFault& fault, COvCriticalSection& section, std::shared_ptr<int> pOwned)
{
    try
    {
        const auto pMore = std::make_unique<std::shared_ptr<int>>(pOwned);
        COvSingleLock lock(&section, true);
        fault.pfnFault();
    }
    catch (const COvException& e)
    {
        return e.GetEvidence(nullptr);
    }
    return L"";
}

struct CThrown
{
    DWORD dwCode;
};

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
            EXPECT_LE(fault.nCleanUps, FaultCleanUps() - nBefore) << fault.szName;
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
    const struct
    {
        ULONG_PTR nWriting;
        ULONG_PTR nAddress;
    } rows[] = { { 0, 8 }, { 1, 8 }, { 0, 0 } }; // of the first faults in the list
    for (size_t n = 0; n < std::size(rows); ++n)
    {
        EXPECT_EQ(EXCEPTION_ACCESS_VIOLATION, FaultOf(MachineFaults()[n].pfnFault));
        EXPECT_EQ(std::vector<ULONG_PTR>({ EXCEPTION_ACCESS_VIOLATION, 2, rows[n].nWriting, rows[n].nAddress }),
                  s_seen);
    }
    ::_set_se_translator(nullptr);
}

TEST(OvFault, MayComeWhileAnErrorIsHandled)
{
    for (const CMachineFault& fault : MachineFaults())
    {
        CTestWorker worker([&](CTestWorker&) -> DWORD { return fault.pfnFault(), 1; });
        worker.m_onError = fault.pfnFault; // the error of an error is dropped
        worker.RunToItsEnd();
        EXPECT_EQ("before work error ", worker.m_strCalls) << fault.szName;
        EXPECT_EQ(EvidenceOf(fault.dwCode), worker.m_strError) << fault.szName;
        EXPECT_FALSE(worker.IsRunning()) << fault.szName; // it went on to its end
    }
}

TEST(OvFault, MayComeThousandsOfTimesOnFourWorkers)
{
    const int nEach = (std::getenv("OV_LONG") != nullptr ? 10'000 : 40) / 4; // of each fault, on each worker
    COvCriticalSection section;
    std::atomic<int> nTranslated{ 0 };
    const auto pOwned = std::make_shared<int>();
    const unsigned nBefore = FaultCleanUps();
    std::vector<std::unique_ptr<CTestWorker>> workers;
    for (int i = 0; i < 4; ++i)
        workers.push_back(std::make_unique<CTestWorker>([&](CTestWorker&) -> DWORD {
            for (int n = 0; n < nEach; ++n)
                for (const CMachineFault& fault : MachineFaults())
                {
                    ::_set_se_translator(SEHtoExceptionTranslation); // gives the stack its guard back
                    nTranslated += MeetOwning(fault, section, pOwned) == EvidenceOf(fault.dwCode) ? 1 : 0;
                }
            return 0;
        }));
    for (const auto& pWorker : workers)
        pWorker->Start(true);
    for (const auto& pWorker : workers)
        pWorker->WaitForComplete(false);
    const int nFaults = 4 * nEach * static_cast<int>(MachineFaults().size());
    EXPECT_EQ(nFaults, nTranslated);
    EXPECT_LT(static_cast<unsigned>(nFaults), FaultCleanUps() - nBefore);
    EXPECT_EQ(1, pOwned.use_count());
    std::thread([&] { COvSingleLock lock(&section, true); }).join();
}
