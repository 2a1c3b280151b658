// Critical sections: exclusion, re-entry, trying.
#include "KernelTesting.h"

#include <gtest/gtest.h>

#include <thread>

namespace
{

class CSection
{
public:
    explicit CSection(DWORD nSpinCount)
    {
        EXPECT_TRUE(::InitializeCriticalSectionAndSpinCount(&m_section, nSpinCount));
    }
    ~CSection() { ::DeleteCriticalSection(&m_section); }
    CSection(const CSection&) = delete;
    CSection& operator=(const CSection&) = delete;

    CRITICAL_SECTION* operator&() { return &m_section; }

private:
    CRITICAL_SECTION m_section;
};

bool OtherThreadCanEnter(CSection& section)
{
    bool bEntered = false;
    std::thread([&] {
        bEntered = ::TryEnterCriticalSection(&section) != FALSE;
        if (bEntered)
            ::LeaveCriticalSection(&section);
    }).join();
    return bEntered;
}

} // namespace

TEST(CriticalSections, AreHeldUntilTheLastOfNestedEntriesIsLeft)
{
    CSection section(4000);
    EXPECT_TRUE(OtherThreadCanEnter(section));
    ::EnterCriticalSection(&section);
    EXPECT_FALSE(OtherThreadCanEnter(section));
    EXPECT_TRUE(::TryEnterCriticalSection(&section));
    ::EnterCriticalSection(&section);
    for (int nLeft = 2; nLeft >= 0; --nLeft)
    {
        ::LeaveCriticalSection(&section);
        EXPECT_EQ(nLeft == 0, OtherThreadCanEnter(section)) << nLeft;
    }
}
