// The service's client where the status document does not show what it does.
#include "PatchAdapter/PatchApi.h"

#include "AgentSimulator/AgentSimulator.h"
#include "ComApartment.h"
#include "Raised.h"
#include "Recording.h"

#include <gtest/gtest.h>

namespace
{

const char s_szNotConnected[] = "1 Info Msg: Unable to connect to the Patch API\n";

std::string ExceptionReport(const std::string& message)
{
    const std::wstring hr = ErrorItem(L"hr", E_FAIL);
    return "1 Info Msg: " + message + " " + std::string(hr.begin(), hr.end()) +
           " tzErrorInfo: The IErrorInfo interface returned the message 'error information is unavailable'.\n";
}

/// Reads the states into outputs with values that a read would change. @return these outputs afterwards.
std::wstring Read(CPatchApi&& api, bool bExpected)
{
    const auto digit = [](bool b) { return std::wstring(b ? L"1 " : L"0 "); };
    bool bInstalled = true;
    bool bCompatible = false;
    std::wstring strCurrent = L"old";
    std::wstring strRequired = L"old";
    bool bAssessment = false;
    bool bServerKey = false;
    EXPECT_EQ(bExpected,
              api.GetStatusInfo(&bInstalled, &bCompatible, &strCurrent, &strRequired, &bAssessment, &bServerKey));
    return digit(bInstalled) + digit(bCompatible) + strCurrent + L" " + strRequired + L" " + digit(bAssessment) +
           digit(bServerKey);
}

class PatchApi : public testing::Test
{
protected:
    PatchApi() { m_trace.SetSink(&m_sink); }
    ~PatchApi() override { EXPECT_EQ(0u, m_agent.GetLiveObjects()); }

    CAgentSimulator m_agent;
    CRecordingSink m_sink;
    CPatchTrace m_trace;
};

} // namespace

TEST_F(PatchApi, WithoutAnApartmentNothingIsReached)
{
    EXPECT_FALSE(CPatchApi(&m_trace).SetPolicySettings(L"x"));
    EXPECT_EQ(L"0 0 old old 0 0 ", Read(CPatchApi(&m_trace), false)); // the first output alone is reset
    EXPECT_EQ(std::string(s_szNotConnected) + s_szNotConnected, m_sink.OfThread());
    EXPECT_FALSE(CPatchApi(&m_trace).Connect()); // which leaves the report to the caller
    EXPECT_EQ(2u, m_sink.Count());
}

TEST_F(PatchApi, AnyExceptionInsideIsReportedWithoutItsOwnEvidence)
{
    const CComApartment apartment;
    ASSERT_TRUE(m_agent.PublishClass());
    const auto fault = [&](AgentCall call, LONG stateId) {
        m_agent.AddFault({ call, S_OK, stateId, 1, 1, 0, false, [] { throw std::runtime_error("x"); } });
    };
    fault(AgentCall::Query, 0);
    EXPECT_FALSE(CPatchApi(&m_trace).Connect());
    fault(AgentCall::SetState, 0);
    EXPECT_FALSE(CPatchApi(&m_trace).SetPolicySettings(L"x"));
    fault(AgentCall::GetState, StateWuaCurrentVersion);
    EXPECT_EQ(L"1 1 old old 0 0 ", Read(CPatchApi(&m_trace), false));
    EXPECT_EQ(ExceptionReport("Exception occurred connecting to the Patch API") +
                  ExceptionReport("Exception occurred applying policy settings") +
                  ExceptionReport("Exception occurred retrieving status information"),
              m_sink.OfThread());
    m_agent.WithdrawClass();
}

TEST_F(PatchApi, TheFirstFailedReadEndsTheReading)
{
    const CComApartment apartment;
    ASSERT_TRUE(m_agent.PublishClass());
    const std::pair<LONG, const wchar_t*> rows[] = {
        { 4, L"0 0 old old 0 0 " },
        { 5, L"1 0 old old 0 0 " },
        { 6, L"1 1 old old 0 0 " },
        { 7, L"1 1 7.4.7600.226 old 0 0 " },
        { 8, L"1 1 7.4.7600.226 7.2.6001.788 0 0 " },
        { 11, L"1 1 7.4.7600.226 7.2.6001.788 1 0 " },
    };
    for (size_t n = 0; n < std::size(rows); ++n)
    {
        m_agent.ClearFaults();
        m_agent.ClearRecords();
        m_agent.AddFault({ AgentCall::GetState, E_ACCESSDENIED, 0, static_cast<unsigned>(n + 1), 1 });
        EXPECT_EQ(rows[n].second, Read(CPatchApi(&m_trace), false)) << rows[n].first;
        const std::vector<CAgentCallRecord> calls = m_agent.GetCalls();
        ASSERT_EQ(2 + n + 1, calls.size()); // creation, query, and the reads as far as they got
        for (size_t i = 0; i <= n; ++i)
            EXPECT_EQ(rows[i].first, calls[2 + i].stateId);
    }
    m_agent.WithdrawClass();
}
