#include "ResourceCounts.h"

#include <gtest/gtest.h>

namespace
{

/// Fails a test that leaves more handles, COM objects or BSTRs behind than it found.
class CLeakCheck : public testing::EmptyTestEventListener
{
    void OnTestStart(const testing::TestInfo&) override { m_before = CountResources(); }

    void OnTestEnd(const testing::TestInfo&) override
    {
        const std::string leak = DescribeLeak(m_before, CountResources());
        EXPECT_EQ("", leak);
    }

    CResourceCounts m_before = {};
};

std::string Left(const char* what, unsigned before, unsigned after)
{
    return after == before
               ? std::string()
               : std::string(what) + ": " + std::to_string(before) + " before, " + std::to_string(after) + " after; ";
}

} // namespace

std::string DescribeLeak(const CResourceCounts& before, const CResourceCounts& after)
{
    return Left("handles", before.nHandles, after.nHandles) + Left("COM objects", before.nObjects, after.nObjects) +
           Left("BSTRs", before.nStrings, after.nStrings);
}

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new CLeakCheck);
    return RUN_ALL_TESTS();
}
