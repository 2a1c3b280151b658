// Objects that are made at first use, asked for by several threads at once. One test a program: a second would come
// too late.
#include "ovCore/OvDynamicAPI.h"
#include "ovCore/OvOsProcessApi.h"
#include "ovCore/OVOsVersion.h"
#include "ovCore/OvThreadMgr.h"

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>
#include <vector>

TEST(OvFirstUse, ThreadsThatComeFirstAtOnceSeeOneWholeObject)
{
    constexpr unsigned THREADS = 8;
    std::set<const void*> objects[THREADS];
    std::atomic<unsigned> nReady{ 0 };
    std::vector<std::thread> threads;
    for (auto& seen : objects)
        threads.emplace_back([&] {
            ++nReady;
            while (nReady < THREADS)
                std::this_thread::yield();
            seen = { COvThreadMgr::Get(), &COvOsProcessApi::GetApi(), &COvDynamicAPI::Get(),
                     &COVOsVersion::GetCurrent() };
            EXPECT_STREQ(L"Managed thread count: 0", COvThreadMgr::Get()->GetEvidence().ToString(nullptr));
            EXPECT_EQ(sizeof(void*) == 4, COvDynamicAPI::Get().IsCurrentProcessWow64());
            EXPECT_TRUE(COVOsVersion::GetCurrent().IsPlatform64() && COVOsVersion::GetCurrent().IsPlatformNtBased());
        });
    for (std::thread& thread : threads)
        thread.join();
    for (const auto& seen : objects)
        EXPECT_EQ(objects[0], seen);
}
