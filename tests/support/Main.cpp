#include "TestPlatform.h"

#include <gtest/gtest.h>

namespace
{

/// Fails a test that leaves more handles, COM objects or BSTRs behind than it found.
class CLeakCheck : public testing::EmptyTestEventListener
{
    void OnTestStart(const testing::TestInfo&) override { m_before = CountResources(); }
    void OnTestEnd(const testing::TestInfo&) override { EXPECT_EQ(m_before, CountResources()); }

    std::string m_before;
};

} // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new CLeakCheck);
    return RUN_ALL_TESTS();
}
