// A program of its own, as the version is read once in a process.
#include "AdapterFixture.h"
#include "PatchAdapter/PatchAdapterFactory.h"

TEST_F(CAdapterTest, TheVersionIsReadUntilItIsKnownAndThenNoMore)
{
    const std::string entering =
        "4 Entering Function: CPatchAdapter::GetStatus\n2 Info Msg: Processing status request\n"
        "2 Info Msg: Creating Status XML\n";
    const std::string getting = "4 Entering Function: CPatchAdapter::GetBinaryVersion\n";
    const std::string got = "4 Exiting Function: CPatchAdapter::GetBinaryVersion\n";
    const std::string unknown = ErrorLine(
        "PatchAdapter", "Info Msg: Unable to determine version of binary Function: CPatchAdapter::GetBinaryVersion");
    StartAdapter();
    CRecordingStatusReceiver receiver;
    const auto ask = [&] { EXPECT_TRUE(Adapter().GetStatus(&receiver)); };
    const HINSTANCE hModule = g_hInstance;

    g_hInstance = nullptr;
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(entering + getting + got + unknown + "4 Exiting Function: CPatchAdapter::GetStatus\n",
                  m_sink.TranscriptOf(ask));
    EXPECT_EQ(0u, receiver.Count());
    CRecordingObserver observer;
    Adapter().RegisterStateObserver(&observer); // stays registered, untold

    m_agent.Start(); // the monitor cannot build its document either, which ends it
    ASSERT_TRUE(m_sink.WaitForLines("Exiting Function: CMonitorThread::DoWork"));
    EXPECT_NE(std::string::npos, m_sink.OfOtherThreads().find("A Monitor Thread exception was encountered"));
    EXPECT_EQ(0u, observer.Count());

    Configure(PolicyConfiguring("")); // recorded before the document cannot be built
    EXPECT_EQ(L"rev-1", StoredRevision());
    EXPECT_EQ(0u, observer.Count());

    g_hInstance = hModule;
    EXPECT_NE("<none>", Status());
    g_hInstance = nullptr;
    EXPECT_NE(std::string::npos, Status().find(std::string(" softwareVersion=\"") + VERSION_TEXT + "\""));
    Configure(PolicyConfiguring(""));
    EXPECT_EQ(1u, observer.Count());
}
