#include "ovCore/OvVersion.h"

#include <gtest/gtest.h>

TEST(OvVersion, ReadsUpToFourParts)
{
    const std::pair<const wchar_t*, const wchar_t*> rows[] = { // empty: nothing is read
                                                               { L"5.1.2600.5512", L"5.1.2600.5512" },
                                                               { L"6,0", L"6.0" },
                                                               { L"1.2.3.4.5", L"1.2.3.4" },
                                                               { L"1..2", L"1" },
                                                               { L"1.", L"1" },
                                                               { L".1", L"" },
                                                               { L"", L"" },
                                                               { nullptr, L"" },
                                                               { L"x2", L"" },
                                                               { L" 1", L"" },
                                                               { L"1.x.3", L"1" },
                                                               { L"3beta.2rc1", L"3.2" },
                                                               { L"007.08", L"7.8" },
                                                               { L"0.0", L"0.0" },
                                                               { L"65535.65536", L"65535.0" },
                                                               { L"70000.1", L"4464.1" },
                                                               { L"100000000000000000000000065537", L"1" },
                                                               { L"0x1F.2", L"0.2" },
                                                               { L"1\x0663.2", L"1.2" }
    };
    for (const auto& [szText, szRead] : rows)
    {
        COvVersion version(9, 9, 9, 9);
        EXPECT_EQ(*szRead != L'\0', version.SetVersion(szText)) << szRead;
        EXPECT_EQ(szRead, version.AsStr());
    }
}

TEST(OvVersion, TakesItsPartsInOrder)
{
    EXPECT_EQ(L"0.0.0.0", COvVersion().AsStr());
    EXPECT_EQ(L"1.2.3.4", COvVersion(1, 2, 3, 4).AsStr());
    COvVersion version;
    EXPECT_TRUE(version.SetVersion(0x00010002, 0xFFFF0004));
    EXPECT_EQ(L"1.2.65535.4", version.AsStr());
}

TEST(OvVersion, ComparesWhatBothHave)
{
    const std::tuple<const wchar_t*, const wchar_t*, bool> rows[] = { { L"1.2", L"1.2.9.9", true },
                                                                      { L"1.2", L"1.3.0.0", false },
                                                                      { L"1.2.3.4", L"1.2.3.4", true },
                                                                      { L"1.2.3.4", L"1.2.3.5", false },
                                                                      { L"", L"1.2", true } };
    for (const auto& [szLeft, szRight, bEqual] : rows)
    {
        EXPECT_EQ(bEqual, COvVersion(szLeft) == COvVersion(szRight)) << szLeft << " and " << szRight;
        EXPECT_EQ(!bEqual, COvVersion(szRight) != COvVersion(szLeft)) << szLeft << " and " << szRight;
    }
}

TEST(OvVersion, ZeroOrNothingIsNotValid)
{
    EXPECT_FALSE(COvVersion().IsValid());
    EXPECT_FALSE(COvVersion(L"0.0").IsValid());
    EXPECT_FALSE(COvVersion(L"x").IsValid());
    EXPECT_TRUE(COvVersion(0, 0, 0, 1).IsValid());
    EXPECT_STREQ(L"Version: 1.2", COvVersion(L"1.2").GetEvidence().ToString(nullptr));
    EXPECT_STREQ(L"Found: 1.2", COvVersion(L"1.2").GetEvidence(L"Found").ToString(nullptr));
}
