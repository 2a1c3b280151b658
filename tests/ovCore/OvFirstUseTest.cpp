// Objects that are made at first use, asked for by several threads at once. One test a program: a second would come
// too late.
#include "ovCore/OvDynamicAPI.h"
#include "ovCore/OvOsProcessApi.h"
#include "ovCore/OVOsVersion.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

TEST(OvFirstUse, ThreadsThatComeFirstAtOnceSeeOneWholeObject)
{
    constexpr unsigned THREADS = 8;
    const COVOsVersion* versions[THREADS] = {};
    COvDynamicAPI* apis[THREADS] = {};
    COvOsProcessApi* processApis[THREADS] = {};
    bool bWow64[THREADS] = {};
    bool bWhole[THREADS] = {};
    std::atomic<unsigned> nReady{ 0 };
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < THREADS; ++i)
        threads.emplace_back([&, i] {
            ++nReady;
            while (nReady < THREADS)
                std::this_thread::yield();
            processApis[i] = &COvOsProcessApi::GetApi();
            apis[i] = &COvDynamicAPI::Get();
            bWow64[i] = apis[i]->IsCurrentProcessWow64();
            versions[i] = &COVOsVersion::GetCurrent();
            bWhole[i] = versions[i]->IsPlatform64() && versions[i]->IsPlatformNtBased();
        });
    for (std::thread& thread : threads)
        thread.join();
    for (unsigned i = 0; i < THREADS; ++i)
    {
        EXPECT_EQ(versions[0], versions[i]);
        EXPECT_EQ(apis[0], apis[i]);
        EXPECT_EQ(processApis[0], processApis[i]);
        EXPECT_EQ(sizeof(void*) == 4, bWow64[i]);
        EXPECT_TRUE(bWhole[i]);
    }
}
