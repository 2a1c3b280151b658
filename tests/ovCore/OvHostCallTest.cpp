// Calls into the host, as far as they are the same on both targets.
#include "ovCore/OvHostCall.h"
#include "ovCore/OvSehExceptionHandler.h"

#include "MachineFaults.h"
#include "TestWorker.h"

#include <gtest/gtest.h>

#include <memory>

namespace
{

/// An exception with a text of its own on the heap: lost or copied wrongly it shows.
struct CThrown
{
    std::shared_ptr<std::wstring> pText;
};

} // namespace

TEST(OvHostCall, MakesTheCall)
{
    int nCalls = 0;
    OvCallHost([&] { ++nCalls; });
    const auto fixed = [&nCalls] { ++nCalls; };
    OvCallHost(fixed);
    OvCallHost([&] { OvCallHost([&] { OvCallHost(fixed); }); });
    EXPECT_EQ(3, nCalls);
}

TEST(OvHostCall, LetsOurOwnExceptionsThrough)
{
    const auto pText = std::make_shared<std::wstring>(L"text");
    unsigned nUnwound = 0;
    const std::shared_ptr<unsigned> pCleanUp(&nUnwound, [](unsigned* p) { ++*p; });
    for (const int nDepth : { 1, 2 })
    {
        try
        {
            const auto thrower = [&pText] { throw CThrown{ pText }; };
            if (nDepth == 1)
                OvCallHost(thrower);
            else
                OvCallHost([&] {
                    const std::shared_ptr<unsigned> pInner(&nUnwound, [](unsigned* p) { ++*p; });
                    OvCallHost(thrower);
                });
            ADD_FAILURE() << nDepth;
        }
        catch (const CThrown& thrown)
        {
            EXPECT_EQ(pText, thrown.pText) << nDepth;
        }
    }
    EXPECT_EQ(1u, nUnwound);
    EXPECT_EQ(1, pText.use_count());
}

TEST(OvHostCall, TranslatesTheHostsFaultsOnAWorker)
{
    for (const CMachineFault& fault : MachineFaults())
    {
        CTestWorker worker([&fault](CTestWorker&) -> DWORD {
            OvCallHost([&fault] { fault.pfnFault(); });
            return 1;
        });
        worker.Start(true);
        worker.WaitForComplete(false);
        EXPECT_EQ("before work error ", worker.m_strCalls) << fault.szName;
        EXPECT_EQ(0xC000B02Fu, static_cast<DWORD>(worker.m_hrError)) << fault.szName;
        const std::wstring strCode =
            COvEvidence(L"SEH Exception", static_cast<LONG>(fault.dwCode), true).ToString(nullptr);
        EXPECT_EQ(0u, worker.m_strError.find(L"SEH Information: " + strCode)) << fault.szName;
    }
}
