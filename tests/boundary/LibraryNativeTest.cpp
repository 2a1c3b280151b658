// A host that loads and unloads the library again and again must not grow. The stand-in alone can show it.
#include "AgentSimulator/AgentSimulator.h"
#include "ComApartment.h"
#include "LoadedLibrary.h"
#include "Recording.h"
#include "TestPlatform.h"

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
