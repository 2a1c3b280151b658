// Calls into the host, as far as they are the same on both targets.
#include "ovCore/OvHostCall.h"
#include "ovCore/OvSehExceptionHandler.h"

#include "MachineFaults.h"
#include "TestWorker.h"

#include <gtest/gtest.h>

#include <memory>

TEST(OvHostCall, LetsOurOwnExceptionsThrough)
{
    // An exception with something of its own on the heap: lost or copied wrongly it shows.
    using Thrown = std::shared_ptr<std::wstring>;
    const Thrown pThrown = std::make_shared<std::wstring>(L"text");
    unsigned nUnwound = 0;
    const auto thrower = [&] {
        const std::shared_ptr<unsigned> pInner(&nUnwound, [](unsigned* p) { ++*p; });
        OvCallHost([&] { throw Thrown(pThrown); });
    };
    try
    {
        OvCallHost(thrower);
        ADD_FAILURE();
    }
    catch (const Thrown& thrown)
    {
        EXPECT_EQ(pThrown, thrown);
    }
    EXPECT_EQ(1u, nUnwound);
    EXPECT_EQ(1, pThrown.use_count());
}

TEST(OvHostCall, TranslatesTheHostsFaultsOnAWorker)
{
    for (const CMachineFault& fault : MachineFaults())
    {
        CTestWorker worker([&fault](CTestWorker&) -> DWORD {
            OvCallHost([&fault] { fault.pfnFault(); });
            return 1;
        });
        worker.RunToItsEnd();
        EXPECT_EQ("before work error ", worker.m_strCalls) << fault.szName;
        EXPECT_EQ(0xC000B02Fu, static_cast<DWORD>(worker.m_hrError)) << fault.szName;
        const COvEvidence code(L"SEH Exception", static_cast<LONG>(fault.dwCode), true);
        EXPECT_EQ(0u, worker.m_strError.find(L"SEH Information: " + std::wstring(code.ToString(nullptr))));
    }
}
