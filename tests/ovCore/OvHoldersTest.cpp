#include "ovCore/OvBstr.h"
#include "ovCore/OvComPtr.h"

#include <gtest/gtest.h>

namespace
{

/// Counts its references; lives on the stack.
struct CCounted
{
    unsigned AddRef() { return ++nReferences; }
    unsigned Release() { return --nReferences; }
    unsigned nReferences = 0;
};

std::wstring TextOf(const COvBstr& str)
{
    return str.IsNull() ? L"<null>" : std::wstring(str.Get(), ::SysStringLen(str.Get()));
}

} // namespace

TEST(OvBstr, CopiesTheWholeTextAndKeepsNullApart)
{
    const std::wstring withNul(L"\xD83D\xDE00\0b", 4);
    const wchar_t* const szNull = nullptr;
    EXPECT_EQ(withNul, TextOf(COvBstr(withNul)));
    EXPECT_EQ(L"\xD83D\xDE00", TextOf(COvBstr(withNul.c_str())));
    EXPECT_EQ(L"", TextOf(COvBstr(std::wstring())));
    EXPECT_EQ(L"", TextOf(COvBstr(L"")));
    EXPECT_TRUE(COvBstr(szNull).IsNull());
    EXPECT_TRUE(COvBstr(COvBstr()).IsNull());
    EXPECT_EQ(withNul, TextOf(COvBstr(COvBstr(withNul))));
}

TEST(OvBstr, OwnsOneStringThroughEveryAssignment) // what is freed twice or never shows in the count after the test
{
    COvBstr a(L"a");
    COvBstr b(L"b");
    a = *&a;
    EXPECT_EQ(L"a", TextOf(a));
    a = b;
    EXPECT_NE(a.Get(), b.Get());
    EXPECT_EQ(L"b", TextOf(a));
    a = std::move(b);
    EXPECT_EQ(L"b", TextOf(a));
    EXPECT_TRUE(b.IsNull());
    COvBstr& same = a;
    a = std::move(same);
    EXPECT_EQ(L"b", TextOf(a));

    const COvBstr taken(std::move(a));
    EXPECT_EQ(L"b", TextOf(taken));
    a.Attach(::SysAllocString(L"c"));
    b.Attach(a.Detach());
    EXPECT_TRUE(a.IsNull());
    EXPECT_EQ(L"c", TextOf(b));
    *b.Receive() = ::SysAllocString(L"d");
    EXPECT_EQ(L"d", TextOf(b));
    b.Attach(nullptr);
    EXPECT_TRUE(b.IsNull());
}

TEST(OvComPtr, HoldsExactlyOneReference)
{
    CCounted x;
    CCounted y;
    {
        COvComPtr<CCounted> a(&x);
        EXPECT_EQ(1u, x.nReferences);
        COvComPtr<CCounted> b(a);
        EXPECT_EQ(2u, x.nReferences);
        b = *&b;
        EXPECT_EQ(2u, x.nReferences);
        b = COvComPtr<CCounted>(&y);
        EXPECT_EQ(1u, x.nReferences);
        EXPECT_EQ(1u, y.nReferences);
        a = b;
        EXPECT_EQ(0u, x.nReferences);
        EXPECT_EQ(2u, y.nReferences);
        a = std::move(b);
        EXPECT_FALSE(b);
        EXPECT_EQ(1u, y.nReferences);
        EXPECT_EQ(&y, a.Get());
        EXPECT_EQ(1u, a->nReferences);
        COvComPtr<CCounted>& same = a;
        a = std::move(same);
        EXPECT_EQ(1u, y.nReferences);

        b.Attach(a.Detach());
        EXPECT_FALSE(a);
        EXPECT_EQ(1u, y.nReferences);
        x.AddRef(); // what a call hands out
        *b.Receive() = &x;
        EXPECT_EQ(0u, y.nReferences);
        const COvComPtr<CCounted> taken(std::move(b));
        EXPECT_EQ(1u, x.nReferences);
        b.Reset();
        a.Attach(nullptr);
        EXPECT_FALSE(COvComPtr<CCounted>(nullptr));
    }
    EXPECT_EQ(0u, x.nReferences);
    EXPECT_EQ(0u, y.nReferences);
}
