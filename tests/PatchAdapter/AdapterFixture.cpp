#include "AdapterFixture.h"

#include "Masking.h"
#include "PatchAdapter/PatchAdapterFactory.h"

const char VERSION_TEXT[] = OV_PROJECT_VERSION;

CAdapterTest::CAdapterTest()
{
    g_hInstance = ::GetModuleHandleW(nullptr);
}

CAdapterTest::~CAdapterTest()
{
    m_pAdapter.reset();
    EXPECT_EQ(0u, m_agent.GetLiveObjects());
}

void CAdapterTest::StartAdapter()
{
    StopAdapter();
    m_pAdapter.reset(new CPatchAdapter(&m_sink));
}

void CAdapterTest::StartWithService()
{
    m_sink.Clear();
    ASSERT_TRUE(m_agent.Start());
    StartAdapter();
    ASSERT_TRUE(m_sink.WaitForLines("Exiting Function: CMonitorThread::NotifyObservers"));
}

std::string CAdapterTest::Configure(const std::string& document)
{
    return m_sink.TranscriptOf([&] { Adapter().SetConfiguration(document.c_str()); });
}

std::string CAdapterTest::Status()
{
    CRecordingStatusReceiver receiver;
    EXPECT_TRUE(Adapter().GetStatus(&receiver));
    EXPECT_LE(receiver.Count(), 1u);
    return Masked(receiver.Last());
}

std::string PolicyWith(const std::string& children, const std::string& mainNode)
{
    const std::string name = mainNode.substr(0, mainNode.find(' '));
    return "<?xml version=\"1.0\"?><" + mainNode + ">" + children + "</" + name + ">";
}

std::string PolicyConfiguring(const std::string& configuration, const std::string& revision)
{
    return PolicyWith("<Comp RevID=\"" + revision + "\" policyType=\"20\"/><groupRef name=\"all\"/><configuration>" +
                      configuration + "</configuration>");
}

std::string StatusBuildLines()
{
    const std::string version = std::string("4 Entering Function: CPatchAdapter::GetBinaryVersion\n3 version: ") +
                                VERSION_TEXT + "\n4 Exiting Function: CPatchAdapter::GetBinaryVersion\n";
    return "2 Info Msg: Creating Status XML\n" + version + version;
}

std::string ErrorLine(const std::string& file, const std::string& evidence)
{
    return "0 Error: 80004005 File: " + file + " Line: # Evidence: " + evidence + "\n";
}
