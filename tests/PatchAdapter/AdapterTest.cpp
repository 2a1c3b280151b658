#include "AdapterFixture.h"
#include "Masking.h"

#include <thread>

namespace
{

class AdapterObject : public CAdapterTest
{
};

const std::string s_enterRegister = "4 Entering Function: CPatchAdapter::RegisterStateObserver\n";
const std::string s_exitRegister = "4 Exiting Function: CPatchAdapter::RegisterStateObserver\n";
const std::string s_deRegistered = "4 Entering Function: CPatchAdapter::DeRegisterStateObserver\n"
                                   "4 Exiting Function: CPatchAdapter::DeRegisterStateObserver\n";

} // namespace

TEST_F(AdapterObject, EachEntryOfAnObserverIsToldAndRemovedOnItsOwn)
{
    StartWithService();
    CRecordingObserver twice;
    CRecordingObserver once;
    CRecordingObserver never;
    Adapter().RegisterStateObserver(&twice);
    Adapter().RegisterStateObserver(&once);
    Adapter().RegisterStateObserver(&twice);
    const struct
    {
        size_t nTold;
        IStateObserver* pRemovedThen;
    } rows[] = { { 2, &never }, { 2, nullptr }, { 2, &twice }, { 1, &twice }, { 0, &twice }, { 0, &once } };
    for (const auto& row : rows)
    {
        twice.Clear();
        once.Clear();
        Configure(PolicyConfiguring(""));
        EXPECT_EQ(row.nTold, twice.Count());
        EXPECT_EQ(1u, once.Count());
        EXPECT_EQ(s_deRegistered, m_sink.TranscriptOf([&] { Adapter().DeRegisterStateObserver(row.pRemovedThen); }));
    }
    Configure(PolicyConfiguring(""));
    EXPECT_EQ(1u, once.Count());
    EXPECT_EQ(0u, never.Count());
}

TEST_F(AdapterObject, AnObserverThatThrowsIsReportedAndStaysRegistered)
{
    StartWithService();
    const std::string function = "Function: CPatchAdapter::RegisterStateObserver";
    const struct
    {
        std::function<void()> fail;
        std::string line;
    } rows[] = {
        { [] { throw COvException(E_INVALIDARG, L"a\\Observer", 7, COvEvidence(L"n", LONG{ -1 })); },
          "0 Error: 80070057 File: Observer Line: # Evidence: n: -1\n" },
        { [] { throw std::runtime_error("caf\xE9"); },
          ErrorLine("PatchAdapter", "Exception Info:  { Code: STL EXCEPTION Description: caf\xE9 } Info Msg: A runtime "
                                    "exception was encountered " +
                                        function) },
        { [] { throw 5; }, ErrorLine("PatchAdapter", "Info Msg: An unknown exception was encountered " + function) },
    };
    for (const auto& row : rows)
    {
        bool bFails = true;
        CRecordingObserver observer([&] {
            if (bFails)
                row.fail();
        });
        EXPECT_EQ(s_enterRegister + "2 Info Msg: Registering state observer\n" + StatusBuildLines() +
                      "2 Info Msg: Notifying state observer\n" + row.line + s_exitRegister,
                  m_sink.TranscriptOf([&] { Adapter().RegisterStateObserver(&observer); }));
        bFails = false;
        Configure(PolicyConfiguring(""));
        EXPECT_EQ(2u, observer.Count());
        Adapter().DeRegisterStateObserver(&observer);
    }
}

TEST_F(AdapterObject, TheLockIsHeldUntilTheFailureHasBeenWritten)
{
    StartAdapter();
    std::thread other;
    CRecordingObserver observer([&] {
        other = std::thread([&] { Adapter().DeRegisterStateObserver(nullptr); });
        m_sink.WaitForLines("Entering Function: CPatchAdapter::DeRegisterStateObserver");
        throw 5;
    });
    Adapter().RegisterStateObserver(&observer);
    other.join();
    std::string order; // of the failure's line, the other thread's exit
    for (const CTraceLine& line : m_sink.Lines())
        order += line.nKind == 0                                                           ? "failure "
                 : line.text == "Exiting Function: CPatchAdapter::DeRegisterStateObserver" ? "other "
                                                                                           : "";
    EXPECT_EQ("failure other ", order);
}

TEST_F(AdapterObject, TheConfigurationIsAlwaysEmptyAndTheReceiversExceptionsAreItsOwn)
{
    StartAdapter();
    bool bFails = false;
    CRecordingConfigurationReceiver receiver([&] {
        if (bFails)
            throw 5;
    });
    const std::string transcript = "4 Entering Function: CPatchAdapter::GetConfiguration\n"
                                   "4 Exiting Function: CPatchAdapter::GetConfiguration\n";
    EXPECT_EQ(transcript, m_sink.TranscriptOf([&] { EXPECT_TRUE(Adapter().GetConfiguration(&receiver)); }));
    bFails = true;
    EXPECT_EQ(transcript, m_sink.TranscriptOf([&] { EXPECT_THROW(Adapter().GetConfiguration(&receiver), int); }));
    EXPECT_EQ(2u, receiver.Count());
    EXPECT_EQ("", receiver.Last());
}

TEST_F(AdapterObject, WithoutALogEverythingWorks)
{
    m_agent.Start();
    CPatchAdapter adapter(nullptr);
    CRecordingObserver observer;
    adapter.RegisterStateObserver(&observer);
    adapter.RegisterStateObserver(nullptr);
    adapter.SetConfiguration("<");
    adapter.SetConfiguration(PolicyConfiguring("").c_str());
    adapter.SetFeature(nullptr);
    EXPECT_GE(observer.Count(), 2u);
    EXPECT_EQ(L"rev-1", StoredRevision());
}
