// Eight threads of a host in the adapter at once, while the service comes and goes. OV_OPERATIONS says how many calls
// they make together; without it a few, or ten million in the long form.
#include "FaultyRun.h"
#include "MainJob.h"
#include "Operations.h"
#include "TestPlatform.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <random>
#include <string>
#include <thread>

namespace
{

/// Told from several threads; keeps nothing.
class CCountingCallbacks final : public IStateObserver, public IStatusReceiver, public IConfigurationReceiver
{
public:
    void OnStateChange(int32_t, const char* status) override { Count(status); }
    void OnStatus(const char* status) override { Count(status); }
    void OnConfiguration(const char* configuration) override { m_bWrong = m_bWrong || *configuration != '\0'; }

    bool WasWrong() const { return m_bWrong; }

private:
    void Count(const char* status)
    {
        const std::string_view text = status;
        m_bWrong = m_bWrong || text.size() < 9 || text.substr(text.size() - 9) != "</status>";
    }

    std::atomic<bool> m_bWrong = false;
};

std::mutex s_configuring; // the host hands in one policy at a time

constexpr unsigned THREADS = 8;

/// One thread's share of the operations, in an order of its own.
bool Operate(CMainJob& job, unsigned nSeed, unsigned nOperations)
{
    const CComApartment apartment;
    CCountingCallbacks callbacks;
    CArguments with{ &callbacks, &callbacks, &callbacks };
    unsigned nRegistered = 0;
    std::mt19937 random(nSeed);
    for (unsigned n = 0; n < nOperations; ++n)
    {
        const auto nOperation = static_cast<unsigned>(random() % std::size(OPERATIONS));
        std::unique_lock<std::mutex> configuring(s_configuring, std::defer_lock);
        if (nOperation == SET_CONFIGURATION)
            configuring.lock();
        with.szPolicy = random() % 2 == 0 ? SamplePolicy() : "<config/>";
        nRegistered += nOperation == REGISTER ? 1 : 0;
        OPERATIONS[nOperation].pfnCall(job.Adapter(), with);
        if (n % 256 == 0)
            job.ForgetTrace();
    }
    for (; nRegistered != 0; --nRegistered) // what was removed already is not removed again
        job.Adapter().DeRegisterStateObserver(&callbacks);
    return !callbacks.WasWrong();
}

unsigned CountOfOperations()
{
    const char* const szCount = std::getenv("OV_OPERATIONS");
    return szCount != nullptr ? static_cast<unsigned>(std::stoul(szCount)) : SampleStep() == 1 ? 10'000'000 : 40'000;
}

/// @param nEvery  every so many calls of the platform one fails; 0: none.
void Race(unsigned nEvery)
{
    const unsigned nOperations = CountOfOperations();
    const CScratchRegistry registry;
    StoreRevision(OLD_REVISION);
    CMainJob job;
    ASSERT_TRUE(job.Start());
    CCallFailure failure;
    failure.bOtherThreads = true;
    failure.nEvery = nEvery;
    ArmFailure(failure);
    std::atomic<unsigned> nRight = 0;
    std::atomic<unsigned> nRunning = THREADS;
    std::vector<std::thread> threads;
    for (unsigned n = 0; n < THREADS; ++n)
        threads.emplace_back([&, n] {
            nRight += Operate(job, n, nOperations / THREADS) ? 1u : 0u;
            --nRunning;
        });
    while (nRunning != 0)
        job.LetServiceGoAndCome(100);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(nEvery == 0, DisarmFailure().empty());
    EXPECT_TRUE(nRight == THREADS || nEvery != 0);
    const auto wzRevId = StoredRevision();
    EXPECT_TRUE(wzRevId == OLD_REVISION || wzRevId == NEW_REVISION);
    job.Stop();
    ::SetErrorInfo(0, nullptr);
}

} // namespace

TEST(OperationsRace, EightThreadsWhileTheServiceComesAndGoes)
{
    Race(0);
}

TEST(OperationsRace, EightThreadsWhileCallsFail)
{
    Race(97);
}
