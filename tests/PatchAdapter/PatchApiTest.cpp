#include "PatchAdapter/PatchApi.h"

#include "AgentSimulator/AgentSimulator.h"
#include "ComApartment.h"
#include "RecordingSink.h"
#include "SystemText.h"

#include <gtest/gtest.h>

namespace
{

const char s_szNoErrorInfo[] = "The IErrorInfo interface returned the message 'error information is unavailable'.";
const char s_szNotConnected[] = "1 Info Msg: Unable to connect to the Patch API\n";
constexpr HRESULT s_hrRefused = static_cast<HRESULT>(0x80040201); // a code that no system has words for

std::string ExceptionReport(const std::string& message, const std::string& errorInfo = s_szNoErrorInfo)
{
    return "1 Info Msg: " + message + " hr: " + ErrorCodeText(E_FAIL) + " tzErrorInfo: " + errorInfo + "\n";
}

/// The six outputs, with values that a read would change.
struct CStatusInfo
{
    bool bWuaInstalled = true;
    bool bWuaCompatible = false;
    std::wstring strWuaCurrentVersion = L"old";
    std::wstring strWuaRequiredVersion = L"old";
    bool bAssessmentEnabled = false;
    bool bServerKeyStatus = false;

    bool Get(CPatchApi& api)
    {
        return api.GetStatusInfo(&bWuaInstalled, &bWuaCompatible, &strWuaCurrentVersion, &strWuaRequiredVersion,
                                 &bAssessmentEnabled, &bServerKeyStatus);
    }

    std::wstring Text() const
    {
        const auto digit = [](bool b) { return std::wstring(b ? L"1 " : L"0 "); };
        return digit(bWuaInstalled) + digit(bWuaCompatible) + strWuaCurrentVersion + L" " + strWuaRequiredVersion +
               L" " + digit(bAssessmentEnabled) + digit(bServerKeyStatus);
    }
};

class PatchApi : public testing::Test
{
protected:
    PatchApi() { m_trace.SetSink(&m_sink); }

    ~PatchApi() override
    {
        EXPECT_EQ(0u, m_agent.GetLiveObjects());
        ::SetErrorInfo(0, nullptr);
    }

    bool GetStatusInfo(CStatusInfo& info)
    {
        CPatchApi api(&m_trace);
        return info.Get(api);
    }

    bool SetPolicySettings(const std::wstring& settings)
    {
        CPatchApi api(&m_trace);
        return api.SetPolicySettings(settings);
    }

    std::string Transcript() const { return m_sink.OfThread(); }

    CComApartment m_apartment;
    CAgentSimulator m_agent;
    CRecordingSink m_sink;
    CPatchTrace m_trace;
};

} // namespace

TEST_F(PatchApi, AServiceThatCannotBeReachedIsReportedOnceAndNotCalled)
{
    for (const bool bPublished : { false, true }) // not registered; registered, but its objects cannot be created
    {
        m_sink.Clear();
        if (bPublished)
        {
            ASSERT_TRUE(m_agent.PublishClass());
            m_agent.AddFault({ AgentCall::Create, E_ACCESSDENIED });
        }
        EXPECT_FALSE(CPatchApi(&m_trace).Connect());
        EXPECT_EQ("", Transcript());
        EXPECT_FALSE(SetPolicySettings(L"<Policy/>"));
        EXPECT_EQ(s_szNotConnected, Transcript());
        CStatusInfo info;
        EXPECT_FALSE(GetStatusInfo(info));
        EXPECT_EQ(L"0 0 old old 0 0 ", info.Text()); // the first output alone is reset
        EXPECT_EQ(std::string(s_szNotConnected) + s_szNotConnected, Transcript());
        for (const CAgentCallRecord& call : m_agent.GetCalls())
            EXPECT_EQ(AgentCall::Create, call.call);
    }
}

TEST(PatchApiWithoutApartment, FailsToConnect)
{
    CRecordingSink sink;
    CPatchTrace trace;
    trace.SetSink(&sink);
    CPatchApi api(&trace);
    EXPECT_FALSE(api.SetPolicySettings(L"x"));
    EXPECT_EQ(s_szNotConnected, sink.OfThread());
}

TEST_F(PatchApi, AnObjectWithoutTheInterfaceIsReportedWithoutTheExceptionsOwnEvidence)
{
    ASSERT_TRUE(m_agent.PublishClass());
    m_agent.AddFault({ AgentCall::Query, E_NOINTERFACE });
    const std::string connecting = ExceptionReport("Exception occurred connecting to the Patch API");
    EXPECT_FALSE(SetPolicySettings(L"x"));
    EXPECT_EQ(connecting + s_szNotConnected, Transcript());
    m_agent.ClearFaults();
    m_agent.AddFault({ AgentCall::Query, S_OK, 0, 1, 1, 0, false, [] { throw 5; } });
    EXPECT_FALSE(CPatchApi(&m_trace).Connect());
    EXPECT_EQ(connecting + s_szNotConnected + connecting, Transcript());
}

TEST_F(PatchApi, EachUseCreatesOneObjectAndReleasesIt)
{
    ASSERT_TRUE(m_agent.PublishClass());
    for (unsigned nUses = 1; nUses <= 2; ++nUses)
    {
        CPatchApi api(&m_trace);
        for (int i = 0; i < 3; ++i)
            EXPECT_TRUE(api.Connect());
        EXPECT_EQ(1u, m_agent.GetLiveObjects());
        EXPECT_EQ(2 * nUses, m_agent.GetCalls().size()); // creation and query
    }
    EXPECT_EQ("", Transcript());
}

TEST_F(PatchApi, SettingsArriveWhole)
{
    ASSERT_TRUE(m_agent.PublishClass());
    const std::wstring settings[] = { L"", L"<Policy a=\"\x00E9\xD83D\xDE00\">%s</Policy>", std::wstring(1000000, L'x'),
                                      std::wstring(L"a\0b", 3) };
    for (const std::wstring& text : settings)
    {
        EXPECT_TRUE(SetPolicySettings(text));
        EXPECT_TRUE(m_agent.GetReceivedSettings().back() == text) << text.size();
    }
    EXPECT_EQ("", Transcript());
}

TEST_F(PatchApi, RefusedSettingsAreReportedWhole)
{
    ASSERT_TRUE(m_agent.PublishClass());
    m_agent.AddFault({ AgentCall::SetState, s_hrRefused });
    const std::string document = "<Policy>" + std::string(100000, 'x') + "%s</Policy>";
    EXPECT_FALSE(SetPolicySettings(std::wstring(document.begin(), document.end())));
    EXPECT_EQ("1 Info Msg: Unable to apply policy settings Method: ITrevokPatchApi::SetState hr: 0x80040201 Info Msg: "
              "Settings policy tzSettingsXml: " +
                  document + " tzErrorInfo: " + s_szNoErrorInfo + "\n",
              Transcript());
    EXPECT_TRUE(m_agent.GetReceivedSettings().empty());
}

TEST_F(PatchApi, AnyExceptionInsideIsReported)
{
    ASSERT_TRUE(m_agent.PublishClass());
    m_agent.AddFault({ AgentCall::SetState, S_OK, 0, 1, 1, 0, false, [] { throw std::runtime_error("x"); } });
    EXPECT_FALSE(SetPolicySettings(L"x"));
    EXPECT_EQ(ExceptionReport("Exception occurred applying policy settings"), Transcript());
    m_sink.Clear();
    m_agent.AddFault({ AgentCall::GetState, S_OK, StateWuaCurrentVersion, 1, 1, 0, false, [] { throw 5; } });
    CStatusInfo info;
    EXPECT_FALSE(GetStatusInfo(info));
    EXPECT_EQ(ExceptionReport("Exception occurred retrieving status information"), Transcript());
    EXPECT_EQ(L"1 1 old old 0 0 ", info.Text());
}

TEST_F(PatchApi, TheFirstFailedReadEndsTheReading)
{
    ASSERT_TRUE(m_agent.PublishClass());
    const struct
    {
        LONG stateId;
        const char* message;
        CAgentValue wrongType;
        const wchar_t* outputs;
    } rows[] = {
        { 4, "Unable to retrieve Windows Update Agent installed state", L"1", L"0 0 old old 0 0 " },
        { 5, "Unable to retrieve Windows Update Agent compatible state", LONG{ 1 }, L"1 0 old old 0 0 " },
        { 6, "Unable to retrieve current Windows Update Agent version", true, L"1 1 old old 0 0 " },
        { 7, "Unable to retrieve required Windows Update Agent version", LONG{ 7 }, L"1 1 7.4.7600.226 old 0 0 " },
        { 8, "Unable to retrieve assessment enabled status", {}, L"1 1 7.4.7600.226 7.2.6001.788 0 0 " },
        { 11, "Unable to retrieve server key status", nullptr, L"1 1 7.4.7600.226 7.2.6001.788 1 0 " },
    };
    for (size_t n = 0; n < std::size(rows); ++n)
        for (const bool bWrongType : { false, true })
        {
            CAgentSimulator agent;
            m_agent.WithdrawClass();
            ASSERT_TRUE(agent.PublishClass());
            if (bWrongType)
                agent.SetValue(rows[n].stateId, rows[n].wrongType);
            else
                agent.AddFault({ AgentCall::GetState, E_ACCESSDENIED, 0, static_cast<unsigned>(n + 1), 1 });
            m_sink.Clear();
            CStatusInfo info;
            EXPECT_FALSE(GetStatusInfo(info));
            EXPECT_EQ(std::string("1 Info Msg: ") + rows[n].message +
                          " hr: " + ErrorCodeText(bWrongType ? DISP_E_TYPEMISMATCH : E_ACCESSDENIED) +
                          " tzErrorInfo: " + s_szNoErrorInfo + "\n",
                      Transcript());
            EXPECT_EQ(rows[n].outputs, info.Text()) << rows[n].stateId;
            const std::vector<CAgentCallRecord> calls = agent.GetCalls();
            ASSERT_EQ(2 + n + 1, calls.size()); // creation, query, and the reads as far as they got
            for (size_t i = 0; i <= n; ++i)
                EXPECT_EQ(rows[i].stateId, calls[2 + i].stateId);
        }
}

TEST_F(PatchApi, ValuesAreConverted)
{
    ASSERT_TRUE(m_agent.PublishClass());
    const struct
    {
        CAgentValue bools;
        CAgentValue current;
        CAgentValue required;
        const wchar_t* outputs;
    } rows[] = {
        { true, L"7.4.7600.226", L"10.2", L"1 1 7.4.7600.226 10.2 1 1 " },
        { false, L"", L"x2", L"0 0   0 0 " },
        { SHORT{ 1 }, nullptr, L"007.08 beta", L"1 1  7.8 1 1 " },
        { SHORT{ -2 }, L"6,0", L"1.2.3.4.5", L"1 1 6.0 1.2.3.4 1 1 " },
        { SHORT{ 0 }, L"70000.1", L"1..2", L"0 0 4464.1 1 0 0 " },
    };
    for (const auto& row : rows)
    {
        for (const LONG stateId : { 4, 5, 8, 11 })
            m_agent.SetValue(stateId, row.bools);
        m_agent.SetValue(6, row.current);
        m_agent.SetValue(7, row.required);
        CStatusInfo info;
        EXPECT_TRUE(GetStatusInfo(info));
        EXPECT_EQ(row.outputs, info.Text());
    }
    EXPECT_EQ("", Transcript());
}

TEST_F(PatchApi, TheErrorObjectIsDescribedAndTaken)
{
    ASSERT_TRUE(m_agent.PublishClass());
    const struct
    {
        std::optional<CAgentErrorObject> errorObject;
        const char* text;
    } rows[] = {
        { std::nullopt, s_szNoErrorInfo },
        { CAgentErrorObject{ L"the agent is busy %s" }, "IErrorInfo Desc: the agent is busy %s" },
        { CAgentErrorObject{ L"" }, "IErrorInfo Desc: " },
        { CAgentErrorObject{}, "IErrorInfo Desc: " },
        { CAgentErrorObject{ L"x", E_FAIL }, "Call to IErrorInfo::GetDescription failed with hr [-2147467259]." },
    };
    for (const auto& row : rows)
    {
        m_sink.Clear();
        m_agent.ClearFaults();
        m_agent.AddFault({ AgentCall::GetState, s_hrRefused, 0, 1, 1, 0, false, {}, row.errorObject });
        CStatusInfo info;
        EXPECT_FALSE(GetStatusInfo(info));
        EXPECT_EQ(std::string("1 Info Msg: Unable to retrieve Windows Update Agent installed state hr: 0x80040201 "
                              "tzErrorInfo: ") +
                      row.text + "\n",
                  Transcript());
        const std::string after(s_szNoErrorInfo);
        EXPECT_EQ(std::wstring(after.begin(), after.end()), CPatchApi::ObtainErrorInfo());
    }
}

TEST_F(PatchApi, AServiceThatDiesInACallIsAFailedCall)
{
    ASSERT_TRUE(m_agent.Start());
    const HRESULT hrDisconnected = static_cast<HRESULT>(0x80010108);
    m_agent.AddFault({ AgentCall::GetState, S_OK, StateWuaCompatible, 1, 1, 0, true });
    CStatusInfo info;
    EXPECT_FALSE(GetStatusInfo(info));
    EXPECT_EQ("1 Info Msg: Unable to retrieve Windows Update Agent compatible state hr: " +
                  ErrorCodeText(hrDisconnected) + " tzErrorInfo: " + s_szNoErrorInfo + "\n",
              Transcript());
    EXPECT_FALSE(IsServiceRunning());
    EXPECT_FALSE(CPatchApi(&m_trace).Connect());
    ASSERT_TRUE(m_agent.Start());
    EXPECT_TRUE(GetStatusInfo(info));
}

TEST_F(PatchApi, TheServiceRunsWhileItsEventIsSignalled)
{
    EXPECT_FALSE(IsServiceRunning());
    EXPECT_TRUE(m_agent.SetEventState(AgentEvent::NotSignalled));
    EXPECT_FALSE(IsServiceRunning());
    EXPECT_TRUE(m_agent.SetEventState(AgentEvent::Signalled));
    EXPECT_TRUE(IsServiceRunning());
    EXPECT_TRUE(IsServiceRunning()); // looking changes nothing
    EXPECT_TRUE(m_agent.SetEventState(AgentEvent::Absent));
    EXPECT_FALSE(IsServiceRunning());
}
