// An agent that runs for years: the service comes and goes again and again, policies are applied, memory stays flat.
#include "FaultyRun.h"
#include "MainJob.h"
#include "TestPlatform.h"

#include <gtest/gtest.h>

#include <malloc.h>

namespace
{

/// What is allocated, in bytes.
size_t Allocated()
{
    return mallinfo2().uordblks;
}

} // namespace

TEST(Soak, MemoryStaysFlatWhileTheServiceComesAndGoes)
{
    const unsigned nTransitions = SampleStep() == 1 ? 10'000 : 100;
    constexpr unsigned WARM_UP = 50;
    constexpr size_t SLACK = 64 * 1024; // what the allocator and the store keep for later, once
    const CScratchRegistry registry;
    CMainJob job;
    ASSERT_TRUE(job.Start());
    ASSERT_TRUE(job.WaitForMonitor());
    job.Observe();
    size_t nBefore = 0;
    for (unsigned n = 0; n < nTransitions; n += 2)
    {
        if (n == WARM_UP)
            nBefore = Allocated();
        job.Forget();
        job.Apply(); // tells of the service that is there
        EXPECT_TRUE(job.LetServiceGoAndCome(30'000)) << n;
        EXPECT_EQ(3u, job.CountOfDocuments()) << n;
    }
    EXPECT_LT(Allocated(), nBefore + SLACK);
    job.Stop();
}
