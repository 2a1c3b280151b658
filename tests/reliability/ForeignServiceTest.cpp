// A service whose object, in this process, throws by another compiler's rules, faults or answers nonsense, in each call
// of the library as it was built. It is reported, nothing stays locked, and the next call works.
#include "ForeignService.h"
#include "AgentSimulator/AgentSimulator.h"
#include "ComApartment.h"
#include "LoadedLibrary.h"
#include "ovCore/OvEvent.h"
#include "Raised.h"
#include "Recording.h"
#include "TestPlatform.h"

#include <gtest/gtest.h>

#include <atomic>
#include <sstream>
#include <thread>

namespace
{

const char s_szPolicy[] = "<?xml version='1.0'?><policy type='patch'><Comp RevID='rev-1' policyType='20'/>"
                          "<configuration><serverKey>K</serverKey></configuration></policy>";

std::string Narrow(const std::wstring& text)
{
    return std::string(text.begin(), text.end());
}

std::string Report(const std::string& sentence, const std::string& error = "The IErrorInfo interface returned the "
                                                                           "message 'error information is "
                                                                           "unavailable'.")
{
    return "1 Info Msg: " + sentence + " " + Narrow(ErrorItem(L"hr", E_FAIL)) + " tzErrorInfo: " + error + "\n";
}

const std::string s_noStatus = "1 Info Msg: Unable to retrieve status information from the Patch Agent Service\n";
const std::string s_notConnected = "1 Info Msg: Unable to connect to the Patch API\n" + s_noStatus;
const std::string s_connecting = Report("Exception occurred connecting to the Patch API") + s_notConnected;
const std::string s_reading = Report("Exception occurred retrieving status information") + s_noStatus;
const std::string s_applying = Report("Exception occurred applying policy settings") +
                               "1 Info Msg: Failed to apply Patch Agent settings policy from PYX config\n";
const std::string s_releasing = Report("Exception occurred releasing the Patch API");
const std::string s_installed = "Unable to retrieve Windows Update Agent installed state";

const struct
{
    ForeignCall call;
    Misdeed misdeed;
    std::string reports;
} s_rows[] = {
    { ForeignCall::Create, Misdeed::Throw, s_connecting },
    { ForeignCall::Create, Misdeed::Fault, s_connecting },
    { ForeignCall::Create, Misdeed::AnswerNull, s_notConnected },
    { ForeignCall::Query, Misdeed::Throw, s_connecting },
    { ForeignCall::Query, Misdeed::Fault, s_connecting },
    { ForeignCall::Query, Misdeed::AnswerNull, s_connecting },
    { ForeignCall::FirstRelease, Misdeed::Throw, s_connecting },
    { ForeignCall::FirstRelease, Misdeed::Fault, s_connecting },
    { ForeignCall::LastRelease, Misdeed::Throw, s_releasing },
    { ForeignCall::LastRelease, Misdeed::Fault, s_releasing },
    { ForeignCall::SetState, Misdeed::Throw, s_applying },
    { ForeignCall::SetState, Misdeed::Fault, s_applying },
    { ForeignCall::GetState, Misdeed::Throw, s_reading },
    { ForeignCall::GetState, Misdeed::Fault, s_reading },
    { ForeignCall::GetDescription, Misdeed::Throw,
      Report(s_installed, "Call to IErrorInfo::GetDescription failed with hr [-2147467259].") + s_noStatus },
    { ForeignCall::GetDescription, Misdeed::Fault,
      Report(s_installed, "Call to IErrorInfo::GetDescription failed with hr [-2147467259].") + s_noStatus },
    { ForeignCall::ReleaseError, Misdeed::Throw,
      Report(s_installed, "IErrorInfo Desc: of another maker") + s_noStatus },
    { ForeignCall::ReleaseError, Misdeed::Fault,
      Report(s_installed, "IErrorInfo Desc: of another maker") + s_noStatus },
};

/// The lines of kind 1 of a transcript.
std::string Reports(const std::string& transcript)
{
    std::istringstream lines(transcript);
    std::string reports;
    for (std::string line; std::getline(lines, line);)
        reports += line.rfind("1 ", 0) == 0 ? line + "\n" : "";
    return reports;
}

class ForeignService : public testing::Test
{
protected:
    ForeignService()
    {
        SetMisdeed(ForeignCall::None, Misdeed::Throw);
        EXPECT_EQ(S_OK, ::CoRegisterClassObject(CLSID_TrevokPatchApi, ForeignClass(), CLSCTX_INPROC_SERVER,
                                                REGCLS_MULTIPLEUSE, &m_dwCookie));
        m_pFactory = m_library.MakeFactory();
        m_pAdapter = m_pFactory->Initialise(nullptr, nullptr, &m_sink, nullptr);
    }
    ~ForeignService() override
    {
        m_pFactory->Uninitialise(m_pAdapter);
        DeleteAdapterFactory(m_pFactory);
        ::CoRevokeClassObject(m_dwCookie);
    }

    /// The operation that makes the call, on this thread; then another one asks for status.
    void Misbehave(size_t nRow)
    {
        const auto& row = s_rows[nRow];
        const bool bPolicy = row.call == ForeignCall::SetState;
        SetMisdeed(row.call, row.misdeed);
        const std::string transcript = m_sink.TranscriptOf([&] {
            if (bPolicy)
                m_pAdapter->SetConfiguration(s_szPolicy);
            else
                m_pAdapter->GetStatus(&m_receiver);
        });
        SetMisdeed(ForeignCall::None, Misdeed::Throw);
        const std::string exit =
            std::string("4 Exiting Function: CPatchAdapter::") + (bPolicy ? "SetConfiguration\n" : "GetStatus\n");
        EXPECT_EQ(row.reports, Reports(transcript)) << nRow;
        EXPECT_EQ(exit, transcript.substr(transcript.size() - exit.size())) << nRow;
        std::thread([&] {
            const CComApartment apartment;
            CListener receiver;
            m_pAdapter->GetStatus(&receiver);
            EXPECT_NE(std::string::npos, receiver.Last().find("currentVersion=\"1.2.3.4\"")) << nRow;
        }).join();
    }

    const CComApartment m_apartment;
    const CScratchRegistry m_registry;
    CAgentSimulator m_agent; // its event alone
    const CLoadedLibrary m_library;
    const CFastPauses m_pauses{ m_library.GetModule() };
    CRecordingSink m_sink;
    CListener m_receiver;
    DWORD m_dwCookie = 0;
    IAdapterFactory* m_pFactory = nullptr;
    IAdapter* m_pAdapter = nullptr;
};

} // namespace

TEST_F(ForeignService, IsReportedToAHostsThread)
{
    ASSERT_TRUE(m_agent.SetEventState(AgentEvent::Signalled));
    for (size_t n = 0; n < std::size(s_rows); ++n)
        if (s_rows[n].misdeed == Misdeed::Throw || s_rows[n].misdeed == Misdeed::AnswerNull)
            Misbehave(n);
}

TEST_F(ForeignService, IsReportedToTheMonitorWhichGoesOn)
{
    const DWORD dwHere = ::GetCurrentThreadId();
    std::atomic<int> nTold = 0;
    COvEvent told(false, false, nullptr, nullptr);
    CListener observer([&] {
        if (::GetCurrentThreadId() == dwHere)
            return;
        if (++nTold == 1)
            for (size_t n = 0; n < std::size(s_rows); ++n)
                Misbehave(n);
        told.SetEvent();
    });
    m_pAdapter->RegisterStateObserver(&observer);
    ASSERT_TRUE(m_agent.SetEventState(AgentEvent::Signalled));
    told.Lock(INFINITE); // a limit would be scaled with the monitor's pauses
    m_agent.SetEventState(AgentEvent::Absent);
    told.Lock(INFINITE);
    EXPECT_EQ(2, nTold);
    m_pAdapter->DeRegisterStateObserver(&observer);
}
