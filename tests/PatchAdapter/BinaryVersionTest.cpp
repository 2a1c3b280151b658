// A program of its own, as the version is read once in a process.
#include "AdapterFixture.h"
#include "PatchAdapter/PatchAdapterFactory.h"

TEST_F(CAdapterTest, TheVersionIsReadUntilItIsKnownAndThenNoMore)
{
    const std::string getting = "Function: CPatchAdapter::GetBinaryVersion\n";
    const std::string status = "Function: CPatchAdapter::GetStatus\n";
    const std::string unknown = ErrorLine(
        "PatchAdapter", "Info Msg: Unable to determine version of binary Function: CPatchAdapter::GetBinaryVersion");
    StartAdapter();
    CListener host;
    const auto ask = [&] { EXPECT_TRUE(Adapter().GetStatus(&host)); };
    const HINSTANCE hModule = g_hInstance;

    g_hInstance = nullptr;
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ("4 Entering " + status +
                      "2 Info Msg: Processing status request\n2 Info Msg: Creating Status XML\n4 Entering " + getting +
                      "4 Exiting " + getting + unknown + "4 Exiting " + status,
                  m_sink.TranscriptOf(ask));
    Adapter().RegisterStateObserver(&host); // stays registered, untold

    m_agent.Start(); // the monitor cannot build its document either, which ends it
    ASSERT_TRUE(m_sink.WaitForText("Exiting Function: CMonitorThread::DoWork"));
    EXPECT_NE(std::string::npos, m_sink.OfOtherThreads().find("A Monitor Thread exception was encountered"));

    const std::string policy = PolicyConfiguring("");
    Adapter().SetConfiguration(policy.c_str()); // recorded before the document cannot be built
    EXPECT_EQ(L"rev-1", StoredRevision());
    EXPECT_EQ(0u, host.Count());

    g_hInstance = hModule;
    ask();
    g_hInstance = nullptr;
    ask();
    EXPECT_NE(std::string::npos, host.Last().find(" softwareVersion=\"" OV_PROJECT_VERSION "\""));
    Adapter().SetConfiguration(policy.c_str());
    EXPECT_EQ(3u, host.Count());
}
