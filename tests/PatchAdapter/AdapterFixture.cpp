#include "AdapterFixture.h"

#include "PatchAdapter/PatchAdapterFactory.h"

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
    m_sink.Clear();
    m_pAdapter.reset(new CPatchAdapter(&m_sink));
}

void CAdapterTest::StartWithService()
{
    ASSERT_TRUE(m_agent.Start());
    StartAdapter();
    ASSERT_TRUE(m_sink.WaitForText("Exiting Function: CMonitorThread::NotifyObservers"));
}

std::string PolicyConfiguring(const std::string& configuration)
{
    return "<?xml version=\"1.0\"?><policy type=\"patch\"><Comp RevID=\"rev-1\" policyType=\"20\"/><configuration>" +
           configuration + "</configuration></policy>";
}

std::string StatusBuildLines()
{
    const std::string version = "4 Entering Function: CPatchAdapter::GetBinaryVersion\n3 version: " OV_PROJECT_VERSION
                                "\n4 Exiting Function: CPatchAdapter::GetBinaryVersion\n";
    return "2 Info Msg: Creating Status XML\n" + version + version;
}

std::string ErrorLine(const std::string& file, const std::string& evidence)
{
    return "0 Error: 80004005 File: " + file + " Line: # Evidence: " + evidence + "\n";
}
