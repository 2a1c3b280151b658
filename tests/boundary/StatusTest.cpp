// Status documents: what they say in each state of the service, and who gets them.
#include "Host.h"

#include "Masking.h"

namespace
{

const std::string s_register = "CPatchAdapter::RegisterStateObserver";
const std::string s_deregister = "CPatchAdapter::DeRegisterStateObserver";
const std::string s_getStatus = "CPatchAdapter::GetStatus";
const std::string s_uptodate = R"(currentVersion="7.4.7600.226" requiredVersion="7.2.6001.788")";

class AdapterStatus : public CHost
{
};

} // namespace

TEST_F(AdapterStatus, TheDocumentFollowsTheService)
{
    const HRESULT hrRead = static_cast<HRESULT>(0x80040202);
    const std::string unread = CExpectedStatus().wua;
    const struct
    {
        const char* szCase;
        const wchar_t* szRevision;
        bool bRuns;
        std::vector<std::pair<LONG, CAgentValue>> values;
        LONG nFailingState; ///< 0: none
        std::string res, revision, assessment, wua;
    } rows[] = {
        { "nothing recorded", nullptr, false, {}, 0, "NoRef", "", "false", unread },
        { "nothing recorded, all well",
          nullptr,
          true,
          {},
          0,
          "NoRef",
          "",
          "true",
          R"(installed="true" compatible="true" )" + s_uptodate },
        { "not running", L"42", false, {}, 0, "Same", "42", "false", unread },
        { "all well", L"42", true, {}, 0, "Same", "42", "true", R"(installed="true" compatible="true" )" + s_uptodate },
        { "server key refused",
          L"42",
          true,
          { { StateServerKeyStatus, false } },
          0,
          "NoRef",
          "42",
          "true",
          R"(installed="true" compatible="true" )" + s_uptodate },
        { "not installed",
          L"42",
          true,
          { { StateWuaInstalled, false } },
          0,
          "Same",
          "42",
          "true",
          R"(installed="false")" },
        { "not compatible, no versions",
          L"42",
          true,
          { { StateWuaCompatible, false },
            { StateWuaCurrentVersion, std::wstring(L"0.0.0.0") },
            { StateWuaRequiredVersion, nullptr } },
          0,
          "Same",
          "42",
          "true",
          R"(installed="true" compatible="false")" },
        { "first read fails", L"42", true, {}, StateWuaInstalled, "NoRef", "42", "false", unread },
        { "version read fails", L"42", true, {}, StateWuaRequiredVersion, "NoRef", "42", "false", unread },
        { "last read fails", L"42", true, {}, StateServerKeyStatus, "NoRef", "42", "true", unread },
        { "escaped", L"<a&\"\x00E9'>", false, {}, 0, "Same", "&lt;a&amp;&quot;&#x00E9;&apos;&gt;", "false", unread },
    };
    for (const auto& row : rows)
    {
        StoreRevision(row.szRevision == nullptr ? std::nullopt : std::optional<std::wstring>(row.szRevision));
        CAgentSimulator agent;
        for (const auto& [stateId, value] : row.values)
            agent.SetValue(stateId, value);
        if (row.nFailingState != 0)
            agent.AddFault({ AgentCall::GetState, hrRead, row.nFailingState });
        ASSERT_TRUE(!row.bRuns || agent.Start());
        ASSERT_TRUE(Start());
        CExpectedStatus expected;
        expected.res = row.res;
        expected.revision = row.revision;
        expected.serviceRunning = row.bRuns ? "true" : "false";
        expected.assessmentEnabled = row.assessment;
        expected.wua = row.wua;
        EXPECT_EQ(expected.Text(), Status()) << row.szCase;
        Stop();
        EXPECT_EQ(0u, agent.GetLiveObjects()) << row.szCase;
    }
}

TEST_F(AdapterStatus, AFailedReadIsReportedOnceByEachSide)
{
    ASSERT_TRUE(m_agent.Start());
    m_agent.SetValue(StateAssessmentEnabled, LONG(1)); // of another type than it should have
    ASSERT_TRUE(Start());
    CRecordingStatusReceiver receiver;
    const std::string transcript = m_sink.TranscriptOf([&] { EXPECT_TRUE(m_pAdapter->GetStatus(&receiver)); });
    EXPECT_EQ(Entering(s_getStatus) + Info("Processing status request") +
                  "1 Info Msg: Unable to retrieve assessment enabled status hr: " + ErrorCodeText(DISP_E_TYPEMISMATCH) +
                  " tzErrorInfo: The IErrorInfo interface returned the message 'error information is unavailable'.\n" +
                  Warning("Unable to retrieve status information from the Patch Agent Service") + StatusLines() +
                  "3 status xml: " + Masked(receiver.Last()) + "\n" + Info("Finished Creating Status XML") +
                  Exiting(s_getStatus),
              transcript);
}

TEST_F(AdapterStatus, ANewObserverIsToldBeforeRegistrationReturns)
{
    ASSERT_TRUE(Start());
    CRecordingObserver observer;
    EXPECT_EQ(Entering(s_register) + Info("Registering state observer") + StatusLines() +
                  Info("Notifying state observer") + Exiting(s_register),
              m_sink.TranscriptOf([&] { m_pAdapter->RegisterStateObserver(&observer); }));
    ASSERT_EQ(1u, observer.Count());
    EXPECT_EQ(1, observer.Calls()[0].nValue);
    EXPECT_EQ(::GetCurrentThreadId(), observer.Calls()[0].dwThreadId);
    EXPECT_EQ(CExpectedStatus().Text(), Masked(observer.Last()));

    CRecordingObserver unknown;
    for (IStateObserver* pObserver :
         { static_cast<IStateObserver*>(&unknown), static_cast<IStateObserver*>(&observer) })
        EXPECT_EQ(Entering(s_deregister) + Exiting(s_deregister),
                  m_sink.TranscriptOf([&] { m_pAdapter->DeRegisterStateObserver(pObserver); }));
}

TEST_F(AdapterStatus, NullCallbacksAreRefusedByName)
{
    ASSERT_TRUE(Start());
    const std::string getConfiguration = "CPatchAdapter::GetConfiguration";
    EXPECT_EQ(Entering(s_register) + "1 Info Msg: A null state observer was passed Function: " + s_register + "\n" +
                  Exiting(s_register),
              m_sink.TranscriptOf([&] { m_pAdapter->RegisterStateObserver(nullptr); }));
    EXPECT_EQ(Entering(s_getStatus) + "1 Info Msg: A null status receiver was passed Function: " + s_getStatus + "\n" +
                  Exiting(s_getStatus),
              m_sink.TranscriptOf([&] { EXPECT_TRUE(m_pAdapter->GetStatus(nullptr)); }));
    EXPECT_EQ(Entering(getConfiguration) + "1 Info Msg: A null configuration receiver was passed Function: " +
                  getConfiguration + "\n" + Exiting(getConfiguration),
              m_sink.TranscriptOf([&] { EXPECT_TRUE(m_pAdapter->GetConfiguration(nullptr)); }));
}

TEST_F(AdapterStatus, WhatAReceiverThrowsIsTracedAndTheStatusCounts)
{
    ASSERT_TRUE(Start());
    const std::string evidence = "Info Msg: An unknown exception was encountered Function: ";
    CRecordingStatusReceiver receiver(&ThrowAsHost);
    const std::string transcript = m_sink.TranscriptOf([&] { EXPECT_TRUE(m_pAdapter->GetStatus(&receiver)); });
    EXPECT_EQ(Entering(s_getStatus) + Info("Processing status request") + StatusLines() +
                  Error("PatchAdapter", evidence + s_getStatus) + Exiting(s_getStatus),
              transcript);
    CRecordingObserver observer(&ThrowAsHost);
    const std::string registered = m_sink.TranscriptOf([&] { m_pAdapter->RegisterStateObserver(&observer); });
    EXPECT_NE(std::string::npos, registered.find(evidence + s_register)) << registered;
    m_pAdapter->DeRegisterStateObserver(&observer); // it stayed registered, and the lock is free
}
