#include "FaultyRun.h"

#include "FailingAllocations.h"
#include "MainJob.h"
#include "TestPlatform.h"

#include <cstdlib>

unsigned SampleStep()
{
    return std::getenv("OV_LONG") != nullptr ? 1 : 7;
}

namespace
{

/// Runs the job between two steps that set the failure and take it away.
template <class Begin, class End>
COutcome RunWith(bool bTransitions, Begin&& begin, End&& end)
{
    COutcome outcome;
    const CScratchRegistry registry;
    StoreRevision(OLD_REVISION);
    const std::string before = CountResources();
    {
        CMainJob job;
        begin(job);
        try
        {
            outcome.bAdapter = job.Start();
            if (outcome.bAdapter)
            {
                job.Observe();
                job.AskForStatus();
                job.Apply();
                if (bTransitions)
                    job.LetServiceGoAndCome(100);
            }
            job.Stop();
        }
        catch (...)
        {
            outcome.bEscaped = true;
        }
        end(outcome);
        outcome.documents = job.Documents();
        outcome.wzRevId = StoredRevision();
        outcome.trace = job.Trace();
        ::SetErrorInfo(0, nullptr);
    }
    const std::string after = CountResources();
    outcome.leak = after == before ? "" : before + " before, " + after + " after";
    return outcome;
}

} // namespace

COutcome RunMainJob(const CCallFailure& failure, bool bTransitions)
{
    return RunWith(
        bTransitions, [&](const CMainJob&) { ArmFailure(failure); },
        [](COutcome& outcome) {
            outcome.nCalls = CountedCalls();
            outcome.failed = DisarmFailure();
        });
}

COutcome RunMainJobShortOfMemory(unsigned nFail, bool bOnwards)
{
    std::optional<CFailingAllocations> failing;
    return RunWith(
        false, [&](const CMainJob& job) { failing.emplace(job.GetModule(), nFail, bOnwards); },
        [&](COutcome& outcome) {
            outcome.failed = failing->Reached() ? "allocation" : "";
            failing.reset();
        });
}

CRepeatedApply::CRepeatedApply()
    : m_pRegistry(std::make_unique<CScratchRegistry>()), m_pJob(std::make_unique<CMainJob>())
{
    m_pJob->Start();
    m_pJob->Observe();
}

CRepeatedApply::~CRepeatedApply()
{
    m_pJob->Stop();
    ::SetErrorInfo(0, nullptr);
}

unsigned CRepeatedApply::Apply(const CCallFailure& failure)
{
    StoreRevision(OLD_REVISION);
    m_pJob->Forget();
    ArmFailure(failure);
    try
    {
        m_pJob->Apply();
    }
    catch (...)
    {
        m_bEscaped = true;
    }
    const unsigned nCalls = CountedCalls();
    DisarmFailure();
    return nCalls;
}
