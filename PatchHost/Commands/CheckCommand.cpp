// check: whether the library keeps the rules of a plug-in of this kind.
#include "PatchHost/AdapterLibrary.h"
#include "PatchHost/Apartment.h"
#include "PatchHost/Callbacks.h"
#include "PatchHost/Commands/Commands.h"
#include "PatchHost/Console.h"
#include "PatchHost/Interrupt.h"
#include "PatchHost/Output.h"
#include "PatchHost/PatchService.h"
#include "PatchHost/PolicyRevision.h"
#include "PatchHost/State.h"
#include "PatchHost/Text.h"
#include "PatchHost/TimeLimit.h"
#include "PatchHost/TraceSink.h"

namespace
{

const char s_szPolicy[] = R"(<?xml version="1.0"?><policy type="patch"><Comp RevID="check-1" policyType="20"/>)"
                          R"(<configuration><assessment enabled="true" periodInHours="24"/></configuration></policy>)";
const char s_szRefused[] = R"(<?xml version="1.0"?><policy type="other"/>)";

/// A rule is not kept.
class CBroken : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

void Require(bool bKept, const std::string& sentence)
{
    if (!bKept)
        throw CBroken(sentence);
}

/// Counts the calls of one observer, and notes the revision that was recorded when it was called.
class CCountingObserver final : public IStateObserver
{
public:
    void OnStateChange(int32_t value, const char*) override
    {
        if (::GetCurrentThreadId() != m_dwThread)
            return; // of the monitor
        ++m_nCalls;
        m_nValue = value;
        m_revision = PolicyRevisionText();
    }

    const DWORD m_dwThread = ::GetCurrentThreadId();
    unsigned m_nCalls = 0;
    int32_t m_nValue = 0;
    std::string m_revision;
};

class CConfigurationReceiver final : public IConfigurationReceiver
{
public:
    void OnConfiguration(const char* configuration) override
    {
        ++m_nCalls;
        m_text = configuration;
    }

    unsigned m_nCalls = 0;
    std::string m_text;
};

/// The rules, one function each, in the order in which they are tried on one adapter.
class CRules
{
public:
    CRules(const COptions& options, CPatchService& service)
        : m_options(options), m_service(service), m_sink(options.nTraceLevel), m_library(options.library)
    {
    }

    ~CRules()
    {
        if (m_pAdapter != nullptr)
            m_pFactory->Uninitialise(m_pAdapter);
        DeleteAdapterFactory(m_pFactory);
        DeleteAdapterFactory(m_pOther);
    }

    CRules(const CRules&) = delete;
    CRules& operator=(const CRules&) = delete;

    void FactoriesAreDistinct()
    {
        m_pFactory = m_library.MakeFactory();
        m_pOther = m_library.MakeFactory();
        Require(m_pFactory != nullptr && m_pOther != nullptr && m_pFactory != m_pOther, "two calls gave one factory");
    }

    void OneAdapterAtATime()
    {
        m_pAdapter = m_pFactory->Initialise(nullptr, nullptr, &m_sink, nullptr);
        Require(m_pAdapter != nullptr, "no adapter was made");
        Require(m_pFactory->Initialise(nullptr, nullptr, &m_sink, nullptr) == m_pAdapter,
                "a second call of the same factory gave another adapter");
        Require(m_pOther->Initialise(nullptr, nullptr, &m_sink, nullptr) == nullptr,
                "another factory made a second adapter");
    }

    void AnotherFactoryLeavesTheAdapter()
    {
        m_pOther->Uninitialise(m_pAdapter);
        StatusComesOnce();
    }

    void StatusComesOnce()
    {
        CStatusReceiver receiver;
        Require(m_pAdapter->GetStatus(&receiver), "GetStatus is not true");
        Require(receiver.GetStatus().has_value(), "GetStatus handed over no document");
    }

    void ConfigurationIsEmpty()
    {
        CConfigurationReceiver receiver;
        Require(m_pAdapter->GetConfiguration(&receiver), "GetConfiguration is not true");
        Require(receiver.m_nCalls == 1 && receiver.m_text.empty(), "the configuration is not one empty text");
    }

    void ObserverIsToldAtOnce()
    {
        CCountingObserver observer;
        m_pAdapter->RegisterStateObserver(&observer);
        m_pAdapter->DeRegisterStateObserver(&observer);
        Require(observer.m_nCalls == 1 && observer.m_nValue == 1, "it was not told once, with 1");
    }

    void UnusedOperationsLogALine()
    {
        const CCallTrace trace(m_sink);
        int nNumber = 0;
        void* const pAny = &nNumber;
        m_pAdapter->RegisterEventObserver(pAny);
        m_pAdapter->DeRegisterEventObserver(pAny);
        m_pAdapter->RegisterConfigStateObserver(pAny);
        m_pAdapter->DeRegisterConfigStateObserver(pAny);
        m_pAdapter->DoAction(pAny, pAny);
        m_pAdapter->RegisterActionOutcomeObserver(pAny);
        m_pAdapter->DeRegisterActionOutcomeObserver(pAny);
        m_pAdapter->SetFeature(pAny);
        size_t nLines = 0;
        for (const CTraceLine& line : trace.GetLines())
            nLines += line.text.find("Not implemented for PatchAdapter") != std::string::npos ? 1 : 0;
        Require(nLines == 8, Count(nLines, "line") + " for 8 operations");
    }

    void NullArgumentsDoNoHarm()
    {
        m_pAdapter->GetStatus(nullptr);
        m_pAdapter->GetConfiguration(nullptr);
        m_pAdapter->RegisterStateObserver(nullptr);
        m_pAdapter->DeRegisterStateObserver(nullptr);
        m_pAdapter->SetConfiguration(nullptr);
        StatusComesOnce();
    }

    void RefusedDocumentChangesNothing()
    {
        CCountingObserver observer;
        Configure(s_szRefused, observer);
        Require(!m_service.GetLastSettings(), "settings were pushed");
        Require(!ReadPolicyRevision(), "a revision was recorded");
        Require(observer.m_nCalls == 1, "the observer was told");
    }

    void NothingIsAppliedWithoutTheService()
    {
        m_service.Do({ 0, CServiceStep::Action::Stop, {} });
        CCountingObserver observer;
        Configure(s_szPolicy, observer);
        m_service.Do({ 0, CServiceStep::Action::Start, {} });
        Require(!m_service.GetLastSettings(), "settings were pushed");
        Require(!ReadPolicyRevision(), "a revision was recorded");
        Require(observer.m_nCalls == 1, "the observer was told");
    }

    void AcceptedDocumentIsApplied()
    {
        CCountingObserver observer;
        Configure(s_szPolicy, observer);
        Require(m_service.GetLastSettings().has_value(), "no settings were pushed");
        Require(ReadPolicyRevision() == "check-1", "the revision was not recorded");
        Require(observer.m_nCalls == 2, "the observer was not told once");
        Require(observer.m_revision == "check-1", "the observer was told before the revision was recorded");
    }

    void AdapterCanBeMadeAgain()
    {
        Note("stopping the adapter, which can take ten seconds");
        m_pFactory->Uninitialise(m_pAdapter);
        m_service.Do({ 0, CServiceStep::Action::Hang, {} });
        m_pAdapter = m_pFactory->Initialise(nullptr, nullptr, nullptr, nullptr);
        Require(m_pAdapter != nullptr, "no adapter was made");
        StatusComesOnce(); // without a log
        m_pFactory->Uninitialise(m_pAdapter);
        m_pAdapter = nullptr;
    }

private:
    void Configure(const char* szDocument, CCountingObserver& observer)
    {
        m_service.ForgetSettings();
        m_pAdapter->RegisterStateObserver(&observer);
        m_pAdapter->SetConfiguration(szDocument);
        m_pAdapter->DeRegisterStateObserver(&observer);
    }

    const COptions& m_options;
    CPatchService& m_service;
    CTraceSink m_sink;
    const CAdapterLibrary m_library;
    IAdapterFactory* m_pFactory = nullptr;
    IAdapterFactory* m_pOther = nullptr;
    IAdapter* m_pAdapter = nullptr;
};

/// Tries rules and tells of each.
class CReport
{
public:
    explicit CReport(const COutput& out) : m_out(out) {}

    template <class Rule>
    void Try(const std::string& rule, Rule&& keep)
    {
        std::string broken;
        try
        {
            keep();
        }
        catch (const CBroken& e)
        {
            broken = e.what();
            m_result = ExitFailed;
        }
        catch (const CLibraryError& e)
        {
            broken = e.what();
            m_result = ExitLibrary;
        }
        m_out.Json({ { "rule", rule }, { "passed", broken.empty() }, { "message", broken } });
        m_out.Text((broken.empty() ? m_out.Good("passed") : m_out.Bad("failed")) + "  " + rule +
                   (broken.empty() ? "" : ": " + broken) + "\n");
    }

    bool AllKept() const { return m_result == ExitDone; }
    ExitCode GetResult() const { return m_result; }

private:
    const COutput& m_out;
    ExitCode m_result = ExitDone;
};

/// Everything from loading to unloading once. The service hangs, so that the monitor sees a stop at once.
void LoadAndUnload(const COptions& options)
{
    const CTimeLimit limit(options.nTimeoutMs, "a load with all that follows");
    const CAdapterLibrary library(options.library);
    IAdapterFactory* const pFactory = library.MakeFactory();
    IAdapter* const pAdapter = pFactory->Initialise(nullptr, nullptr, nullptr, nullptr);
    pFactory->Uninitialise(pAdapter);
    DeleteAdapterFactory(pFactory);
    Require(pAdapter != nullptr, "no adapter was made");
}

/// The counts, once the system has taken away the threads that have ended: it may do so a moment after their handles
/// say it, and tells nobody. Two seconds are enough for that.
CProcessCounts CountSettled(const CProcessCounts& expected)
{
    CProcessCounts counts = CountProcess();
    for (int n = 0; n < 100 && counts.nThreads > expected.nThreads; ++n)
    {
        ::Sleep(20);
        counts = CountProcess();
    }
    return counts;
}

void LoadsLeaveNothing(const COptions& options)
{
    LoadAndUnload(options); // what the system itself keeps from a first load is there now
    const CProcessCounts before = CountProcess();
    for (unsigned n = 0; n < options.nLoads && !IsInterrupted(); ++n)
        LoadAndUnload(options);
    const CProcessCounts after = CountSettled(before);
    Require(after.nThreads <= before.nThreads, Count(after.nThreads - before.nThreads, "thread") + " were left");
    Require(after.nHandles <= before.nHandles, Count(after.nHandles - before.nHandles, "handle") + " were left");
}

void TryRules(CReport& report, const COptions& options, CPatchService& service)
{
    const std::pair<const char*, void (CRules::*)()> rules[] = {
        { "each call gives a factory of its own", &CRules::FactoriesAreDistinct },
        { "there is one adapter at a time, of the factory that made it", &CRules::OneAdapterAtATime },
        { "another factory cannot destroy the adapter", &CRules::AnotherFactoryLeavesTheAdapter },
        { "GetStatus hands over a document", &CRules::StatusComesOnce },
        { "GetConfiguration hands over an empty text", &CRules::ConfigurationIsEmpty },
        { "a new observer is told before RegisterStateObserver returns", &CRules::ObserverIsToldAtOnce },
        { "the operations that are not implemented log a line each", &CRules::UnusedOperationsLogALine },
        { "null arguments do no harm", &CRules::NullArgumentsDoNoHarm },
        { "a refused document changes nothing", &CRules::RefusedDocumentChangesNothing },
        { "without the service nothing is applied", &CRules::NothingIsAppliedWithoutTheService },
        { "an accepted document is pushed, recorded and told, in this order", &CRules::AcceptedDocumentIsApplied },
        { "after a stop an adapter can be made again, also without a log", &CRules::AdapterCanBeMadeAgain },
    };
    CRules checked(options, service);
    for (const auto& [rule, keep] : rules)
        if (!IsInterrupted() && report.AllKept()) // each builds on the ones before
            report.Try(rule, [&, rule = rule, keep = keep] {
                const CTimeLimit limit(options.nTimeoutMs, std::string("what is done for '") + rule + "'");
                (checked.*keep)();
            });
}

} // namespace

int CheckCommand(const COptions& options)
{
    const COutput out(options);
    CReport report(out);
    const CComApartment apartment;
    const CStatePlace state(StateKind::Throwaway, "");
    CPatchService service(ServiceKind::Simulated, "");
    report.Try("the library loads, exports both functions and has the interface version of this host",
               [&] { const CAdapterLibrary library(options.library); });
    if (report.AllKept())
        TryRules(report, options, service);
    service.Do({ 0, CServiceStep::Action::Hang, {} });
    if (!IsInterrupted() && report.AllKept())
        report.Try("after " + Count(options.nLoads, "load") + " no thread and no handle is left",
                   [&] { LoadsLeaveNothing(options); });
    return UnlessInterrupted(report.GetResult());
}
