// What the stand-in alone can show of the built library: a registry that fails, and what loading it leaves behind.
#include "AgentSimulator/AgentSimulator.h"
#include "ComApartment.h"
#include "FastPauses.h"
#include "LoadedLibrary.h"
#include "Platform/Control.h"
#include "Recording.h"
#include "ResourceCounts.h"
#include "RevisionRecord.h"
#include "ScratchRegistry.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <malloc.h>

namespace
{

class Library : public testing::Test
{
protected:
    const CComApartment m_apartment;
    const CScratchRegistry m_registry;
    CAgentSimulator m_agent;
    CRecordingSink m_sink;
    CListener m_host;
};

/// A thread that has been waited for is still the system's for a moment.
size_t ThreadsAtRest()
{
    size_t nThreads = 0;
    for (unsigned n = 0; n < 10000 && nThreads != 1; ++n)
    {
        const std::filesystem::directory_iterator tasks("/proc/self/task");
        nThreads = static_cast<size_t>(std::distance(begin(tasks), end(tasks)));
    }
    return nThreads;
}

} // namespace

TEST_F(Library, ARecordThatCannotBeWrittenIsReportedAndNobodyIsTold)
{
    const CLoadedLibrary library;
    const CFastPauses pauses;
    m_agent.Start();
    IAdapterFactory* const pFactory = library.MakeFactory();
    IAdapter* const pAdapter = pFactory->Initialise(nullptr, nullptr, &m_sink, nullptr);
    ASSERT_TRUE(m_sink.WaitForText("Exiting Function: CMonitorThread::NotifyObservers"));
    pAdapter->RegisterStateObserver(&m_host);
    OvPlatform::SetRegistryFile("/dev/null/registry.db");
    const std::string transcript = m_sink.TranscriptOf([&] {
        pAdapter->SetConfiguration("<?xml version='1.0'?><policy type='patch'><Comp RevID='new' policyType='1'/>"
                                   "<configuration/></policy>");
    });
    EXPECT_EQ("2 Info Msg: Applying configuration\n4 Exiting Function: CPatchAdapter::ProcessConfiguration\n"
              "0 Error: 80004005 File: OvRegKey Line: # Evidence: Method: ::RegCreateKeyEx Win32 Error: 0x5 Access is "
              "denied. HKEY: HKLM strPath: SOFTWARE\\Trevok\\Trevok Patch Agent samDesired: 983103 Stack Dump:  \n"
              "4 Exiting Function: CPatchAdapter::SetConfiguration\n",
              transcript.substr(transcript.find("2 Info Msg: Applying configuration")));
    EXPECT_EQ(1u, m_agent.GetReceivedSettings().size());
    EXPECT_EQ(1u, m_host.Count());
    pFactory->Uninitialise(pAdapter);
    EXPECT_EQ(nullptr, pFactory->Initialise(nullptr, nullptr, &m_sink, nullptr));
    DeleteAdapterFactory(pFactory);
    m_agent.Stop();
}

TEST_F(Library, AThousandLoadsLeaveNothingBehind)
{
    m_agent.SetEventState(AgentEvent::NotSignalled); // the monitor looks at it without pause
    const auto load = [&](unsigned nTimes) {
        while (nTimes-- > 0)
        {
            const CLoadedLibrary library;
            IAdapterFactory* const pFactory = library.MakeFactory();
            IAdapter* const pAdapter = pFactory->Initialise(nullptr, nullptr, &m_sink, nullptr);
            ASSERT_NE(nullptr, pAdapter);
            pAdapter->GetStatus(&m_host);
            pFactory->Uninitialise(pAdapter);
            DeleteAdapterFactory(pFactory);
            m_sink.Clear();
            m_host.Clear();
        }
    };
    load(100); // until the allocator and the loader have what they keep
    const std::string resources = CountResources();
    const size_t nBytes = ::mallinfo2().uordblks;
    load(1000);
    EXPECT_EQ(resources, CountResources());
    EXPECT_EQ(1u, ThreadsAtRest());
    EXPECT_LE(::mallinfo2().uordblks, nBytes + 4096);
    EXPECT_EQ(nullptr, ::GetModuleHandleW(LibraryPath().c_str())) << "it stays loaded";
    m_agent.SetEventState(AgentEvent::Absent);
}
