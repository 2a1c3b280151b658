// One long session of a host with the library as it was built. What the host, the service and the registry get to see
// is compared with one record on every target: scenario.transcript. To write it anew, run the program on the native
// target with OV_RECORD_SCENARIO set and read what has changed.
#include "AgentSimulator/AgentSimulator.h"
#include "ComApartment.h"
#include "HostThrow.h"
#include "LoadedLibrary.h"
#include "Operations.h"
#include "Recording.h"
#include "RevisionRecord.h"
#include "TestPlatform.h"
#include "Transcript.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>

namespace
{

const wchar_t s_szUntouched[] = L"untouched";
const char s_szMonitorStarted[] = "Entering Function: CMonitorThread::DoWork";
const char s_szMonitorTold[] = "Exiting Function: CMonitorThread::NotifyObservers";
const char s_szMonitorEnded[] = "Exiting Function: CMonitorThread::DoWork";
constexpr HRESULT s_hrRefused = static_cast<HRESULT>(0x80040201); // a code that no system has words for

std::string Policy(const std::string& children, const std::string& mainNode = "policy type='patch'")
{
    const std::string name = mainNode.substr(0, mainNode.find(' '));
    return "<?xml version='1.0'?><" + mainNode + ">" + children + "</" + name + ">";
}

std::string PolicyConfiguring(const std::string& configuration, const std::string& revision = "rev-1")
{
    return Policy("<Comp RevID='" + revision + "' policyType='21'/><groupRef name='Office'/><configuration>" +
                  configuration + "</configuration>");
}

class Scenario : public testing::Test
{
protected:
    /// One step: its name, what is done, and what is waited for then in the log, which comes from the monitor.
    void Step(const std::string& name, const std::function<void()>& work, const char* szAwaited = nullptr)
    {
        if (m_wzStored)
            Store(s_szUntouched);
        m_sink.Clear();
        m_agent.ClearRecords();
        work();
        EXPECT_TRUE(szAwaited == nullptr || m_sink.WaitForText(szAwaited)) << name;
        m_transcript.Add("== " + name);
        m_transcript.AddTold(m_sink);
        for (const std::wstring& settings : m_agent.GetReceivedSettings())
            m_transcript.Add("service received ", settings);
        if (StoredRevision() != m_wzStored)
            m_transcript.Add("registry PolicyRevId = ", StoredRevision().value_or(L"<none>"));
    }

    void Store(const wchar_t* szRevision, DWORD dwType = REG_SZ)
    {
        StoreRevision(szRevision, dwType);
        m_wzStored = szRevision;
    }

    void Configure(const std::string& name, const std::string& document)
    {
        Step(name, [&] { m_pAdapter->SetConfiguration(document.c_str()); });
    }

    void ReportStatus(const std::string& name, const char* szAwaited = nullptr)
    {
        Step(
            name, [&] { m_pAdapter->GetStatus(&m_first); }, szAwaited);
    }

    IAdapter* Initialise(IAdapterFactory* pFactory, const wchar_t* szRevision = L"rev-0", DWORD dwType = REG_SZ)
    {
        Store(szRevision, dwType);
        IAdapter* const pAdapter = pFactory->Initialise(this, nullptr, &m_sink, this);
        const char* const szWhich = pAdapter == nullptr ? "none" : pAdapter == m_pAdapter ? "the same" : "another";
        m_sink.Add("adapter", szWhich);
        if (dwType != REG_SZ)
            Store(s_szUntouched);
        return pAdapter;
    }

    // The script, in parts.
    void BeforeAnAdapter();
    void WithoutTheService();
    void Refusals();
    void Translations();
    void ServiceFailures();
    void ServiceValues();
    void HostFailures();
    void TheEnd();

    void Note(const char* szWho, const CListener& listener)
    {
        const CTold told = listener.All().back();
        m_sink.Add(szWho + (" " + told.what), told.text);
        if (m_pThrower == &listener)
            ThrowAsHost();
    }

    const CComApartment m_apartment;
    const CScratchRegistry m_registry;
    CAgentSimulator m_agent;
    const CLoadedLibrary m_library;
    const CFastPauses m_pauses{ m_library.GetModule() };
    std::atomic<const void*> m_pThrower{ nullptr }; // of the log and the listeners, the one that throws when called
    CRecordingSink m_sink{ [&] {
        if (m_pThrower == &m_sink)
            ThrowAsHost();
    } };
    CListener m_first{ [&] { Note("first", m_first); } };
    CListener m_second{ [&] { Note("second", m_second); } };
    IAdapterFactory* m_pFactory = m_library.MakeFactory();
    IAdapterFactory* m_pOther = m_library.MakeFactory();
    IAdapter* m_pAdapter = nullptr;
    std::optional<std::wstring> m_wzStored; // by this test
    CTranscript m_transcript;
};

void Scenario::BeforeAnAdapter()
{
    Step("versions, with both pointers alone", [&] {
        uint32_t nMajor = 77;
        uint32_t nMinor = 78;
        const auto note = [&] { m_sink.Add("version", std::to_string(nMajor) + "." + std::to_string(nMinor)); };
        m_library.GetVersion(nullptr, &nMinor);
        m_library.GetVersion(&nMajor, nullptr);
        note();
        m_library.GetVersion(&nMajor, &nMinor);
        note();
        m_sink.Add("factories", m_pFactory == m_pOther ? "one" : "two");
    });
    Step("a factory and an adapter without a log", [&] {
        m_pFactory->Uninitialise(nullptr);
        IAdapter* const pSilent = m_pFactory->Initialise(nullptr, nullptr, nullptr, nullptr);
        pSilent->GetStatus(&m_first);
        pSilent->SetConfiguration("<");
        pSilent->RegisterStateObserver(nullptr);
        pSilent->SetFeature(nullptr);
        m_pFactory->Uninitialise(pSilent);
        m_sink.Add("key", RevisionKeyExists() ? "made" : "missing");
    });
    Step("no adapter from a record that cannot be read",
         [&] { m_pAdapter = Initialise(m_pFactory, L"rev", REG_DWORD); });
    Step(
        "initialise", [&] { m_pAdapter = Initialise(m_pFactory); }, s_szMonitorStarted);
    Step("one adapter at a time", [&] {
        Initialise(m_pFactory);
        Initialise(m_pOther);
        m_pOther->Uninitialise(m_pAdapter);
        m_pFactory->Uninitialise(nullptr);
    });
}

void Scenario::WithoutTheService()
{
    ReportStatus("status without the service");
    Step("the configuration", [&] { m_pAdapter->GetConfiguration(&m_first); });
    Step("what is not implemented", [&] { CallUnimplemented(*m_pAdapter, this); });
    Step("null callbacks", [&] {
        m_pAdapter->RegisterStateObserver(nullptr);
        m_pAdapter->GetStatus(nullptr);
        m_pAdapter->GetConfiguration(nullptr);
    });
    Step("observers", [&] {
        m_pAdapter->RegisterStateObserver(&m_first);
        m_pAdapter->RegisterStateObserver(&m_second);
        m_pAdapter->DeRegisterStateObserver(&m_first);
        m_pAdapter->DeRegisterStateObserver(&m_first); // no longer known
        m_pAdapter->RegisterStateObserver(&m_first);
    });
    Configure("a policy without the service", PolicyConfiguring("", "rev-2"));
    m_agent.SetEventState(AgentEvent::NotSignalled); // no service for the monitor either, which looks without pause
    Configure("a policy while the event is not signalled", PolicyConfiguring(""));
    ReportStatus("status while the event is not signalled");
    Step(
        "the service comes", [&] { EXPECT_TRUE(m_agent.Start()); }, s_szMonitorTold);
    m_agent.SetEventState(AgentEvent::NotSignalled); // for the monitor it is still there
    ReportStatus("the event is cleared");
    m_agent.SetEventState(AgentEvent::Signalled);
    ReportStatus("status with the service");
}

void Scenario::Refusals()
{
    const std::string comp = "<Comp RevID='r' policyType='7'/>";
    const std::string rows[] = {
        "<policy type='patch'/>", // no declaration
        "<?xml version='1.0'?><!--c--><policy type='patch'/>",
        Policy("", "policy type='Patch'"),
        Policy("", "policy type=''"),
        Policy("", "Policy type='patch'"),
        Policy(""),
        Policy(comp, "n:policy xmlns:n='u' type='patch'"),
        Policy("text<configuration/><!--c-->"),
        Policy("", "policy"),
        Policy("<Comp policyType='7'/>"),
        Policy("<Comp RevID='r'/>"),
        Policy("<Comp RevID='new' policyType='many'/>"),
        Policy("<Comp RevID='r' policyType='2147483648'/>"),
        Policy("<groupRef/>"),
        PolicyConfiguring("<policyType/>"),
        PolicyConfiguring("<assessment periodInHours='1'/>"),
        PolicyConfiguring("<assessment enabled='1'/>"),
        PolicyConfiguring("<assessment enabled='yes' periodInHours='1'/>"),
        "",
        "no xml",
        "<?xml version='1.0'?><policy type='patch'>",
        "<?xml version='1.0'?><a b='%s%n'",
    };
    for (const std::string& document : rows)
        Configure("refused", document);
    Step("a null configuration", [&] { m_pAdapter->SetConfiguration(nullptr); });
    Configure("a type that is no number comes after the revision", Policy("<Comp RevID='newer' policyType='no'/>"));
    ReportStatus("a refused revision is reported");
}

void Scenario::Translations()
{
    const std::string rows[] = {
        "<policyType name='Daily'/><assessment enabled='true' periodInHours='24'/><serverKey>KEY</serverKey>",
        "",
        "<serverKey/>",
        "<serverKey>a<b>b<c>c</c></b>d</serverKey>",
        "<serverKey>A&lt;b&gt;&amp;\"\xE9</serverKey>",
        "<serverKey>1</serverKey><serverKey>2</serverKey><serverKey>3</serverKey>",
        "<assessment enabled='0' periodInHours='a &lt; b'/>",
        "<assessment enabled='-1' periodInHours=''/><assessment enabled='false' periodInHours='9'/>",
        "<p:serverKey xmlns:p='urn:p'>K</p:serverKey><ServerKey>no</ServerKey>text<!-- serverKey --><other/>",
        "<remediation><serverKey>no</serverKey></remediation><proxy host='h'/>",
    };
    for (const std::string& configuration : rows)
        Configure("applied", PolicyConfiguring(configuration));
    const std::string identities[] = {
        Policy("", "config"), // keeps what earlier ones said, and pushes nothing
        Policy("<Comp RevID='r2' policyType='-4'/><configuration/>"),
        Policy("<Comp RevID='a' policyType='5'/><groupRef name='a'/><configuration/><groupRef name='b'/>"
               "<configuration><serverKey>2</serverKey></configuration><Comp RevID='' policyType='&#x20;20.5 '/>",
               "n:policy type='patch' xmlns:n='urn:n'"),
        Policy("<Comp RevID='&lt;r&#x20AC;' policyType='1,000'/><groupRef name='\xE9&#xE9;'/>", "config"),
    };
    for (const std::string& document : identities)
        Configure("identity", document);
    Step("an observer that is registered twice", [&] {
        m_pAdapter->RegisterStateObserver(&m_first);
        m_pAdapter->SetConfiguration(PolicyConfiguring("").c_str());
        m_pAdapter->DeRegisterStateObserver(&m_first);
        m_pAdapter->SetConfiguration(PolicyConfiguring("").c_str());
    });
}

void Scenario::ServiceFailures()
{
    const std::string policy = PolicyConfiguring("<serverKey>KEY</serverKey>", "rev-3");
    const CAgentErrorObject unreadable{ std::nullopt, E_FAIL };
    const std::pair<const char*, CAgentFault> faults[] = {
        { "no object", { AgentCall::Create, E_ACCESSDENIED } },
        { "no interface", { AgentCall::Query, E_NOINTERFACE } },
        { "settings refused", { AgentCall::SetState, s_hrRefused } },
        { "settings refused, with words", { AgentCall::SetState, s_hrRefused } },
    };
    for (auto [name, fault] : faults)
    {
        if (std::string(name).find("words") != std::string::npos)
            fault.errorObject = CAgentErrorObject{ L"disk full: 100 %s" };
        m_agent.AddFault(fault);
        Configure(name, policy);
        m_agent.ClearFaults();
    }
    m_agent.WithdrawClass();
    Configure("no class", policy);
    ReportStatus("no class");
    m_agent.PublishClass();

    const std::optional<CAgentErrorObject> errorObjects[] = {
        std::nullopt, CAgentErrorObject{ L"busy" }, CAgentErrorObject{ L"" }, CAgentErrorObject{}, unreadable, {}
    };
    const LONG states[] = { 4, 5, 6, 7, 8, 11 };
    for (size_t n = 0; n < std::size(states); ++n)
    {
        CAgentFault fault{ AgentCall::GetState, s_hrRefused, states[n] };
        fault.errorObject = errorObjects[n];
        m_agent.AddFault(fault);
        ReportStatus("failing state " + std::to_string(states[n]));
        m_agent.ClearFaults();
    }
    CAgentFault death{ AgentCall::GetState, S_OK, StateWuaCompatible };
    death.bDies = true;
    m_agent.AddFault(death);
    ReportStatus("the service dies in a call", s_szMonitorTold);
    m_agent.ClearFaults();
    Step(
        "the service comes again", [&] { EXPECT_TRUE(m_agent.Start()); }, s_szMonitorTold);
}

void Scenario::ServiceValues()
{
    using CValues = std::vector<std::pair<LONG, CAgentValue>>;
    const CValues healthy = { { 4, true }, { 5, true }, { 6, L"7.4.7600.226" }, { 7, L"7.2.6001.788" },
                              { 8, true }, { 11, true } };
    const CValues rows[] = {
        { { StateServerKeyStatus, false }, { StateAssessmentEnabled, false } },
        { { StateWuaInstalled, false } },
        { { StateWuaCompatible, false }, { StateWuaCurrentVersion, L"0.0.0.0" }, { StateWuaRequiredVersion, L"6,0" } },
        { { StateWuaCurrentVersion, L"x" }, { StateWuaRequiredVersion, nullptr } },
        { { StateWuaInstalled, SHORT{ 1 } },
          { StateWuaCompatible, SHORT{ -2 } },
          { StateWuaCurrentVersion, L"007.08 b" } },
        { { StateWuaInstalled, L"1" } },
        { { StateWuaRequiredVersion, true } },
        { { StateAssessmentEnabled, LONG{ 1 } } },
        { { StateServerKeyStatus, {} } },
    };
    for (const CValues& values : rows)
    {
        for (const auto& [stateId, value] : values)
            m_agent.SetValue(stateId, value);
        ReportStatus("values");
        for (const auto& [stateId, value] : healthy)
            m_agent.SetValue(stateId, value);
    }
}

void Scenario::HostFailures()
{
    m_pThrower = &m_first;
    ReportStatus("a receiver throws");
    m_pThrower = &m_second;
    Configure("an observer throws: the next one is not told", PolicyConfiguring("", "rev-4"));
    Step("an observer throws when it is registered, and stays", [&] { m_pAdapter->RegisterStateObserver(&m_second); });
    m_pThrower = &m_sink;
    ReportStatus("the log throws");
    m_pThrower = nullptr;
    Step("the locks are free", [&] { m_pAdapter->DeRegisterStateObserver(&m_second); });
    Step(
        "the service goes", [&] { m_agent.Stop(); }, s_szMonitorTold);
    m_pThrower = &m_first; // now the first in the list
    Step(
        "an observer throws on the monitor, which ends", [&] { m_agent.Start(); }, s_szMonitorEnded);
    m_pThrower = nullptr;
    Configure("policies are still told", PolicyConfiguring("", "rev-5"));
}

void Scenario::TheEnd()
{
    Step("uninitialise", [&] {
        m_pAdapter->DeRegisterStateObserver(&m_second);
        m_pFactory->Uninitialise(m_pAdapter);
        m_pFactory->Uninitialise(m_pAdapter);
        m_pAdapter = nullptr;
    });
    Step(
        "another adapter", [&] { m_pAdapter = Initialise(m_pOther, L"<a&\"\x00E9'>"); }, s_szMonitorTold);
    ReportStatus("the recorded revision");
    Step("its factory is deleted", [&] { DeleteAdapterFactory(m_pOther); });
    Step("no adapter any more", [&] { Initialise(m_pFactory); });
    DeleteAdapterFactory(m_pFactory);
    m_agent.Stop();
    EXPECT_EQ(0u, m_agent.GetLiveObjects());
}

} // namespace

TEST_F(Scenario, EveryTargetWritesTheSameTranscript)
{
    BeforeAnAdapter();
    WithoutTheService();
    Refusals();
    Translations();
    ServiceFailures();
    ServiceValues();
    HostFailures();
    TheEnd();
    if (std::getenv("OV_RECORD_SCENARIO") != nullptr)
        m_transcript.Record();
    else
        m_transcript.Compare();
}
