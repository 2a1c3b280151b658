#include "MainJob.h"

#include "AgentSimulator/AgentSimulator.h"
#include "ComApartment.h"
#include "FailingAllocations.h"
#include "LoadedLibrary.h"
#include "Masking.h"
#include "ResourceCounts.h"
#include "RevisionRecord.h"
#include "ScratchRegistry.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdarg>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>

namespace
{

const char s_szPolicy[] =
    R"(<?xml version="1.0"?><policy type="patch"><Comp RevID="rev-2" policyType="21"/><groupRef name="Office"/>)"
    R"(<configuration><policyType name="Daily"/><assessment enabled="true" periodInHours="24"/>)"
    R"(<serverKey>KEY &amp; caf)"
    "\xE9"
    R"(</serverKey></configuration></policy>)";

/// Texts of several threads, one behind the other. Keeping one allocates nothing: it may happen short of memory.
class CTextRecord
{
public:
    CTextRecord() { m_texts.reserve(1 << 20); }

    void Add(const char* text, const char* more = "")
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_texts.append(text).append(more).append(1, '\0');
        m_changed.notify_all();
    }

    std::string All() const
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        return m_texts;
    }

    /// Waits until the last text holds the part. Ends after ten of the monitor's pauses, when it has failed before.
    void WaitFor(const std::string& part) const
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait_for(lock, std::chrono::milliseconds(100), [&] {
            const size_t nEnd = m_texts.empty() ? 0 : m_texts.size() - 1;
            const size_t nStart = nEnd == 0 ? 0 : m_texts.rfind('\0', nEnd - 1) + 1;
            return std::string_view(m_texts).substr(nStart).find(part) != std::string_view::npos;
        });
    }

    void Clear()
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_texts.clear();
    }

private:
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed;
    std::string m_texts; // guarded by m_mutex; each ended by a zero
};

// In the variadic function itself, where va_start belongs.
#define OV_RECORD_LINE(kind)                                                                                           \
    va_list arguments;                                                                                                 \
    va_start(arguments, format);                                                                                       \
    m_lines.Add(kind, va_arg(arguments, const char*));                                                                 \
    va_end(arguments)

/// The host's log and callbacks.
class CHostCallbacks final : public ILogSink, public IStateObserver, public IStatusReceiver
{
public:
    void LogError(const char* format, ...) override { OV_RECORD_LINE("0 "); }
    void LogWarning(const char* format, ...) override { OV_RECORD_LINE("1 "); }
    void LogInfo(const char* format, ...) override { OV_RECORD_LINE("2 "); }
    void LogDetail(const char* format, ...) override { OV_RECORD_LINE("3 "); }
    void LogTrace(const char* format, ...) override { OV_RECORD_LINE("4 "); }
    void OnStateChange(int32_t, const char* status) override { Keep(status); }
    void OnStatus(const char* status) override { Keep(status); }

    std::string Trace() const
    {
        std::string lines = m_lines.All();
        std::replace(lines.begin(), lines.end(), '\0', '\n');
        return lines;
    }

    /// The documents that came on the host's own thread, masked: the monitor's depend on the moment.
    std::set<std::string> Documents() const
    {
        std::set<std::string> documents;
        const std::string all = m_documents.All();
        for (size_t n = 0; n < all.size(); n = all.find('\0', n) + 1)
            documents.insert(Masked(all.c_str() + n));
        return documents;
    }

    void WaitFor(const std::string& part) const { m_all.WaitFor(part); }

    void Clear()
    {
        m_lines.Clear();
        m_documents.Clear();
        m_all.Clear();
    }

private:
    void Keep(const char* status)
    {
        if (::GetCurrentThreadId() == m_dwThreadId)
            m_documents.Add(status);
        m_all.Add(status);
    }

    const DWORD m_dwThreadId = ::GetCurrentThreadId();
    CTextRecord m_lines;
    CTextRecord m_documents;
    CTextRecord m_all;
};

} // namespace

unsigned SampleStep()
{
    return std::getenv("OV_LONG") != nullptr ? 1 : 7;
}

/// A host with the library loaded and the service running.
class CMainJob
{
public:
    CMainJob()
    {
        WatchCalls(m_library.GetModule());
        StoreRevision(OLD_REVISION);
        m_agent.Start();
    }

    bool Start()
    {
        m_pFactory = m_library.MakeFactory();
        if (m_pFactory != nullptr)
            m_pAdapter = m_pFactory->Initialise(nullptr, nullptr, &m_callbacks, nullptr);
        return m_pAdapter != nullptr;
    }

    void Stop()
    {
        if (m_pFactory != nullptr)
            m_pFactory->Uninitialise(m_pAdapter);
        DeleteAdapterFactory(std::exchange(m_pFactory, nullptr));
    }

    void Observe() { m_pAdapter->RegisterStateObserver(&m_callbacks); }
    void AskForStatus() { m_pAdapter->GetStatus(&m_callbacks); }
    void Apply() { m_pAdapter->SetConfiguration(s_szPolicy); }

    /// Each change is seen when the monitor has told it, or has ended after a failure.
    void LetServiceGoAndCome()
    {
        m_callbacks.WaitFor("serviceRunning=\"true\"");
        m_agent.Stop();
        m_callbacks.WaitFor("serviceRunning=\"false\"");
        m_agent.Start();
        m_callbacks.WaitFor("serviceRunning=\"true\"");
    }

    void Describe(COutcome& outcome) const
    {
        outcome.documents = m_callbacks.Documents();
        for (const std::wstring& settings : m_agent.GetReceivedSettings())
        {
            const std::wstring masked = Masked(settings);
            outcome.documents.emplace(masked.begin(), masked.end());
        }
        outcome.wzRevId = StoredRevision();
        outcome.trace = m_callbacks.Trace();
    }

    HMODULE GetModule() const { return m_library.GetModule(); }

    void Forget()
    {
        m_callbacks.Clear();
        m_agent.ClearRecords();
    }

private:
    CComApartment m_apartment;
    CScratchRegistry m_registry;
    CLoadedLibrary m_library;
    CFastPauses m_pauses{ m_library };
    CAgentSimulator m_agent;
    CHostCallbacks m_callbacks;
    IAdapterFactory* m_pFactory = nullptr;
    IAdapter* m_pAdapter = nullptr;
};

namespace
{

/// Runs the job between two steps that set the failure and take it away.
template <class Begin, class End>
COutcome RunWith(bool bTransitions, Begin&& begin, End&& end)
{
    COutcome outcome;
    const CResourceCounts before = CountResources();
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
                    job.LetServiceGoAndCome();
            }
            job.Stop();
        }
        catch (...)
        {
            outcome.bEscaped = true;
        }
        end(outcome);
        job.Describe(outcome);
        ::SetErrorInfo(0, nullptr);
    }
    outcome.leak = DescribeLeak(before, CountResources());
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

CRepeatedApply::CRepeatedApply() : m_pJob(std::make_unique<CMainJob>())
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
