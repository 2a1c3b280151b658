// Calls into the host, as far as they are the same on both targets.
#include "ovCore/OvHostCall.h"
#include "ovCore/OvSehExceptionHandler.h"

#include "MachineFaults.h"
#include "TestWorker.h"

#include <gtest/gtest.h>

#include <memory>

TEST(OvHostCall, LetsOurOwnExceptionsThrough)
{
    // Something on the heap: lost or copied wrongly it shows.
    const auto pText = std::make_shared<std::wstring>(L"text");
    const auto thrower = [&] {
        const auto pHeld = pText;
        OvCallHost([&] { throw std::make_pair(pHeld, 7); });
    };
    using Thrown = std::pair<std::shared_ptr<std::wstring>, int>;
    EXPECT_THROW(OvCallHost(thrower), Thrown);
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
        worker.RunToItsEnd();
        EXPECT_EQ("before work error ", worker.m_strCalls) << fault.szName;
        EXPECT_EQ(0xC000B02Fu, static_cast<DWORD>(worker.m_hrError)) << fault.szName;
        const COvEvidence code(L"SEH Exception", static_cast<LONG>(fault.dwCode), true);
        EXPECT_EQ(0u, worker.m_strError.find(L"SEH Information: " + std::wstring(code.ToString(nullptr))));
    }
}
