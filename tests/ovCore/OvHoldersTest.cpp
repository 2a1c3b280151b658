#include "ovCore/OvBstr.h"
#include "ovCore/OvComPtr.h"
#include "ovCore/OvStringUtil.h"

#include <gtest/gtest.h>

#include <utility>

namespace
{

/// Counts its references; lives on the stack.
struct CCounted
{
    unsigned AddRef() { return ++nReferences; }
    unsigned Release() { return --nReferences; }
    unsigned nReferences = 0;
};

} // namespace

TEST(OvBstr, OwnsOneWholeStringThroughEveryAssignment) // what is freed twice or never shows in the count after the test
{
    const std::wstring withNul(L"\xD83D\xDE00\0b", 4);
    const COvBstr null(static_cast<const wchar_t*>(nullptr));
    EXPECT_TRUE(COvBstr(null).IsNull());
    EXPECT_EQ(L"", COvStringUtil::FromBSTR(null));
    EXPECT_FALSE(COvBstr(COvBstr(L"")).IsNull());
    COvBstr a(L"a");
    COvBstr b(withNul);
    a = *&a;
    EXPECT_STREQ(L"a", a.Get());
    a = b;
    EXPECT_NE(a.Get(), b.Get());
    EXPECT_EQ(withNul, COvStringUtil::FromBSTR(a));
    a = std::move(b);
    EXPECT_TRUE(b.IsNull());
    COvBstr& same = a;
    a = std::move(same);
    const COvBstr taken(std::move(a));
    EXPECT_EQ(withNul, COvStringUtil::FromBSTR(taken));
    a.Attach(::SysAllocString(L"c"));
    b.Attach(a.Detach());
    EXPECT_TRUE(a.IsNull());
    EXPECT_STREQ(L"c", b.Get());
    *b.Receive() = ::SysAllocString(L"d");
    EXPECT_STREQ(L"d", b.Get());
}

TEST(OvComPtr, HoldsExactlyOneReference)
{
    CCounted x;
    CCounted y;
    const auto counts = [&] { return std::make_pair(x.nReferences, y.nReferences); };
    using Counts = std::pair<unsigned, unsigned>;
    {
        COvComPtr<CCounted> a(&x);
        COvComPtr<CCounted> b(a);
        EXPECT_EQ(Counts(2, 0), counts());
        b = *&b;
        EXPECT_EQ(Counts(2, 0), counts());
        b = COvComPtr<CCounted>(&y);
        EXPECT_EQ(Counts(1, 1), counts());
        a = b;
        EXPECT_EQ(Counts(0, 2), counts());
        a = std::move(b);
        EXPECT_FALSE(b);
        COvComPtr<CCounted>& same = a;
        a = std::move(same);
        EXPECT_EQ(&y, a.Get());
        EXPECT_EQ(Counts(0, 1), counts());
        b.Attach(a.Detach());
        EXPECT_FALSE(a);
        x.AddRef(); // what a call hands out
        *b.Receive() = &x;
        EXPECT_EQ(Counts(1, 0), counts());
        const COvComPtr<CCounted> taken(std::move(b));
        b.Reset();
        EXPECT_EQ(Counts(1, 0), counts());
    }
    EXPECT_EQ(Counts(0, 0), counts());
}
