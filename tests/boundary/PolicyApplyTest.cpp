// Policies that are applied, and what keeps one from being applied.
#include "Host.h"

#include "Masking.h"

namespace
{

const std::string s_declaration = R"(<?xml version="1.0"?>)";
const std::string s_policy =
    s_declaration + R"(<policy type="patch"><Comp RevID="rev-2" policyType="21"/><groupRef name="Office"/>)"
                    R"(<configuration><policyType name="Daily"/><assessment enabled="true" periodInHours="24"/>)"
                    R"(<serverKey>KEY</serverKey></configuration></policy>)";

const std::string s_settings =
    R"(<?xml version="1.0" encoding="utf-8"?><Policy xmlns:Trevok-Pyx="www.trevok.example\Pyx\Policy" schemaVersion="1">)"
    R"(<Trevok-Pyx:Assessment mode="auto"></Trevok-Pyx:Assessment><Trevok-Pyx:Remediation mode="manual">)"
    R"(</Trevok-Pyx:Remediation><Trevok-Pyx:Settings id="#">)"
    R"(<Trevok-Pyx:Setting name="AllowReboot">false</Trevok-Pyx:Setting>)"
    R"(<Trevok-Pyx:Setting name="AssessInterval">24</Trevok-Pyx:Setting>)"
    R"(<Trevok-Pyx:Setting name="RebootDelay">1</Trevok-Pyx:Setting>)"
    R"(<Trevok-Pyx:Setting name="RebootMessageInterval">1</Trevok-Pyx:Setting>)"
    R"(<Trevok-Pyx:Setting name="ServerPublicKey">KEY</Trevok-Pyx:Setting>)"
    R"(<Trevok-Pyx:Setting name="ShowRebootMessage">false</Trevok-Pyx:Setting></Trevok-Pyx:Settings></Policy>)";

const std::string s_process = "CPatchAdapter::ProcessConfiguration";
const std::string s_set = "CPatchAdapter::SetConfiguration";
const std::string s_noErrorInfo = "The IErrorInfo interface returned the message 'error information is unavailable'.";
constexpr HRESULT s_hrRefused = static_cast<HRESULT>(0x80040201); // a code that no system has words for

/// The lines up to the apply.
std::string Loaded(const std::string& policy)
{
    const std::string load = "CPatchAdapter::LoadConfigurationXML";
    return Entering(s_set) + Info("Received configuration") + "3 Configuration: " + policy + "\n" + Entering(load) +
           "2 Received configuration xml: " + policy + "\n" +
           "3 Name: policy\n3 strNodeName: Comp\n3 strNodeName: groupRef\n3 strNodeName: configuration\n" +
           Info("Translating policy XML") +
           "3 strPolicyNodeName: policyType\n3 strPolicyNodeName: assessment\n3 strPolicyNodeName: serverKey\n" +
           Info("Server public received through PYX policy") +
           "2 Revision: rev-2 Policy Type: 21 Group: Office Policy: Daily\n" + Info("Loaded configuration xml") +
           Exiting(load) + Entering(s_process) + Info("Applying configuration");
}

std::string Narrow(const std::wstring& text)
{
    return std::string(text.begin(), text.end());
}

class PolicyApply : public CHost
{
protected:
    void SetUp() override { StoreRevision(L"rev-1"); }

    /// The adapter with two observers, whose first notification is forgotten. When the service runs, the monitor has
    /// seen it before.
    void StartWithObservers(bool bServiceRuns = true)
    {
        ASSERT_TRUE(Start());
        ASSERT_TRUE(!bServiceRuns || m_sink.WaitForLines("Exiting Function: CMonitorThread::NotifyObservers"));
        m_pAdapter->RegisterStateObserver(&m_first);
        m_pAdapter->RegisterStateObserver(&m_second);
        m_first.Clear();
        m_second.Clear();
    }

    void TearDown() override
    {
        m_pAdapter->DeRegisterStateObserver(&m_first);
        m_pAdapter->DeRegisterStateObserver(&m_second);
        CHost::TearDown();
    }

    CRecordingObserver m_first;
    CRecordingObserver m_second;
};

} // namespace

TEST_F(PolicyApply, ThePolicyReachesTheServiceTheRecordAndEveryObserver)
{
    ASSERT_TRUE(m_agent.Start());
    StartWithObservers();
    EXPECT_EQ(Loaded(s_policy) + StatusLines() + Info("Configuration successfully applied") + Exiting(s_process) +
                  Exiting(s_set),
              Configure(s_policy));

    const std::vector<std::wstring> settings = m_agent.GetReceivedSettings();
    ASSERT_EQ(1u, settings.size());
    EXPECT_EQ(s_settings, Masked(Narrow(settings[0])));
    EXPECT_EQ(L"rev-2", StoredRevision());

    CExpectedStatus expected;
    expected.policyType = "21";
    expected.res = "Same";
    expected.revision = "rev-2";
    expected.serviceRunning = expected.assessmentEnabled = "true";
    expected.wua = R"(installed="true" compatible="true" currentVersion="7.4.7600.226" requiredVersion="7.2.6001.788")";
    for (const CRecordingObserver* pObserver : { &m_first, &m_second })
    {
        ASSERT_EQ(1u, pObserver->Count());
        EXPECT_EQ(1, pObserver->Calls()[0].nValue);
        EXPECT_EQ(expected.Text(), Masked(pObserver->Last()));
    }
}

TEST_F(PolicyApply, AFailureLeavesTheOldRevisionAndTellsNobody)
{
    const std::string notRunning = Warning("Failed to apply configuration because Patch Agent Service is not running");
    const std::string notApplied = Warning("Failed to apply Patch Agent settings policy from PYX config");
    const std::string refused =
        "1 Info Msg: Unable to apply policy settings Method: ITrevokPatchApi::SetState hr: 0x80040201 "
        "Info Msg: Settings policy tzSettingsXml: " +
        s_settings + " tzErrorInfo: ";
    const struct
    {
        std::string failure;
        AgentEvent event;
        bool bPublished;
        std::optional<CAgentFault> fault;
        std::string lines;
    } rows[] = {
        { "no event", AgentEvent::Absent, true, {}, notRunning },
        { "event not signalled", AgentEvent::NotSignalled, true, {}, notRunning },
        { "no class", AgentEvent::Signalled, false, {}, Warning("Unable to connect to the Patch API") + notApplied },
        { "no interface", AgentEvent::Signalled, true, CAgentFault{ AgentCall::Query, E_NOINTERFACE },
          "1 Info Msg: Exception occurred connecting to the Patch API hr: " + ErrorCodeText(E_FAIL) +
              " tzErrorInfo: " + s_noErrorInfo + "\n" + Warning("Unable to connect to the Patch API") + notApplied },
        { "refused", AgentEvent::Signalled, true, CAgentFault{ AgentCall::SetState, s_hrRefused },
          refused + s_noErrorInfo + "\n" + notApplied },
    };
    StartWithObservers(false);
    for (const auto& row : rows)
    {
        m_agent.SetEventState(row.event);
        if (row.bPublished)
            m_agent.PublishClass();
        if (row.fault)
            m_agent.AddFault(*row.fault);
        EXPECT_EQ(Loaded(s_policy) + row.lines + Exiting(s_process) + Exiting(s_set), Configure(s_policy))
            << row.failure;
        EXPECT_EQ(L"rev-1", StoredRevision()) << row.failure;
        EXPECT_TRUE(m_agent.GetReceivedSettings().empty()) << row.failure;
        m_agent.ClearFaults();
        m_agent.WithdrawClass();
    }
}

TEST_F(PolicyApply, TheServicesOwnWordsReachTheTrace)
{
    ASSERT_TRUE(m_agent.Start());
    StartWithObservers();
    CAgentFault fault{ AgentCall::SetState, s_hrRefused };
    fault.errorObject = CAgentErrorObject{ L"disk full: 100 %s" };
    m_agent.AddFault(fault);
    EXPECT_NE(std::string::npos, Configure(s_policy).find(" tzErrorInfo: IErrorInfo Desc: disk full: 100 %s\n"));
}

TEST_F(PolicyApply, AConfigurationPushesRecordsAndTellsNothing)
{
    ASSERT_TRUE(m_agent.Start());
    StartWithObservers();
    const std::string transcript = Configure(s_declaration + "<config/>");
    const std::string end = Entering(s_process) + Info("Applying configuration") +
                            Info("Configuration successfully applied") + Exiting(s_process) + Exiting(s_set);
    EXPECT_EQ(end, transcript.substr(transcript.find(Entering(s_process))));
    EXPECT_EQ(L"rev-1", StoredRevision());
    EXPECT_TRUE(m_agent.GetReceivedSettings().empty());
    EXPECT_EQ(0u, m_first.Count());
}

TEST_F(PolicyApply, AnObserverThatThrowsEndsTheWalk)
{
    ASSERT_TRUE(m_agent.Start());
    ASSERT_TRUE(Start());
    ASSERT_TRUE(m_sink.WaitForLines("Exiting Function: CMonitorThread::NotifyObservers"));
    bool bThrow = false;
    CRecordingObserver thrower([&] {
        if (bThrow)
            ThrowAsHost();
    });
    m_pAdapter->RegisterStateObserver(&thrower);
    m_pAdapter->RegisterStateObserver(&m_second);
    m_second.Clear();
    bThrow = true;
    const std::string transcript = Configure(s_policy);
    bThrow = false;
    EXPECT_NE(std::string::npos, transcript.find("Info Msg: An unknown exception was encountered Function: " + s_set))
        << transcript;
    EXPECT_EQ(L"rev-2", StoredRevision()) << "recorded before anybody is told";
    EXPECT_EQ(0u, m_second.Count());
    m_pAdapter->DeRegisterStateObserver(&thrower); // the lock is free again
}

TEST_F(PolicyApply, TheRecordSurvivesTheAdapter)
{
    ASSERT_TRUE(m_agent.Start());
    StartWithObservers();
    Configure(s_policy);
    m_pAdapter->DeRegisterStateObserver(&m_first);
    m_pAdapter->DeRegisterStateObserver(&m_second);
    Stop();
    m_agent.Stop();
    ASSERT_TRUE(Start());
    CExpectedStatus expected; // the policy type is not recorded
    expected.res = "Same";
    expected.revision = "rev-2";
    EXPECT_EQ(expected.Text(), Status());
}
