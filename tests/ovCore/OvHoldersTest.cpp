// The owners of COM strings, of interfaces and of kernel handles.
#include "ovCore/OvComPtr.h"
#include "ovCore/OvStringUtil.h"
#include "OvHandleT.h"

#include "Raised.h"

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

HANDLE NewHandle()
{
    return ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
}

/// Asked right after a handle may have been closed, before another takes its value.
bool IsOpen(HANDLE h)
{
    return ::WaitForSingleObject(h, 0) != WAIT_FAILED;
}

/// Whether two handles stand for one object.
bool IsSameEvent(HANDLE h1, HANDLE h2)
{
    ::SetEvent(h1);
    const bool bSame = ::WaitForSingleObject(h2, 0) == WAIT_OBJECT_0;
    ::ResetEvent(h1);
    return bSame && h1 != h2;
}

const COvHandle s_empty;

} // namespace

TEST(OvBstr, OwnsOneWholeStringThroughEveryAssignment) // what is freed twice or never shows in the count after the test
{
    const std::wstring withNul(L"\xD83D\xDE00\0b", 4);
    const COvBstr null(static_cast<const wchar_t*>(nullptr));
    EXPECT_TRUE(COvBstr(null).IsNull() && COvStringUtil::FromBSTR(null).empty());
    EXPECT_FALSE(COvBstr(COvBstr(L"")).IsNull());
    COvBstr a(L"a");
    COvBstr b(withNul);
    a = *&a;
    EXPECT_STREQ(L"a", a.Get());
    a = b;
    EXPECT_NE(a.Get(), b.Get());
    a = std::move(b);
    EXPECT_TRUE(b.IsNull());
    b = std::move(*&b);
    const COvBstr taken(std::move(a));
    EXPECT_EQ(withNul, COvStringUtil::FromBSTR(taken));
    a.Attach(::SysAllocString(L"c"));
    b.Attach(a.Detach());
    EXPECT_STREQ(L"c", b.Get());
    *b.Receive() = ::SysAllocString(L"d");
    EXPECT_STREQ(L"d", b.Get());
}

TEST(OvComPtr, HoldsExactlyOneReference)
{
    CCounted x;
    CCounted y;
    const auto counts = [&] { return 10 * x.nReferences + y.nReferences; };
    {
        COvComPtr<CCounted> a(&x);
        COvComPtr<CCounted> b(a);
        b = *&b;
        EXPECT_EQ(20u, counts());
        b = COvComPtr<CCounted>(&y);
        EXPECT_EQ(11u, counts());
        a = b;
        EXPECT_EQ(2u, counts());
        a = std::move(b);
        a = std::move(*&a);
        EXPECT_EQ(1u, counts());
        b.Attach(a.Detach());
        EXPECT_TRUE(!a && b.Get() == &y);
        x.AddRef(); // what a call hands out
        *b.Receive() = &x;
        const COvComPtr<CCounted> taken(std::move(b));
        b.Reset();
        EXPECT_EQ(10u, counts());
    }
    EXPECT_EQ(0u, counts());
}

TEST(OvHandle, IsClosedByEachWayToLoseIt)
{
    void (*const ways[])(COvHandle&) = {
        [](COvHandle& h) { h.Close(), h.Close(); }, [](COvHandle& h) { COvHandle gone(std::move(h)); },
        [](COvHandle& h) { h = s_empty; },          [](COvHandle& h) { h.Set(nullptr); },
        [](COvHandle& h) { h = COvHandle(); },
    };
    for (const auto& lose : ways)
    {
        COvHandle handle(NewHandle());
        const HANDLE hEvent = handle.Get();
        EXPECT_TRUE(IsOpen(hEvent));
        lose(handle);
        EXPECT_FALSE(IsOpen(hEvent)) << &lose - ways;
        EXPECT_EQ(nullptr, handle.Get()) << &lose - ways;
    }
}

TEST(OvHandle, IsNeverOwnedByTwo)
{
    COvHandle handle(NewHandle());
    const HANDLE hEvent = handle.Get();
    COvHandle assigned(NewHandle());
    assigned = handle;
    EXPECT_TRUE(IsSameEvent(hEvent, COvHandle(std::as_const(handle)).Get()));
    EXPECT_TRUE(IsSameEvent(hEvent, assigned.Get()));
    handle = *&handle;
    handle = std::move(*&handle);
    EXPECT_EQ(hEvent, handle.Get());
    COvHandle moved(std::move(handle));
    EXPECT_EQ(nullptr, handle.Get());
    EXPECT_EQ(hEvent, moved.Release());
    moved.Close();
    EXPECT_TRUE(moved.IsValid()); // 0 is
    moved.Set(INVALID_HANDLE_VALUE);
    EXPECT_FALSE(moved.IsValid());
    moved.Set(hEvent);
    EXPECT_TRUE(IsOpen(hEvent));
}

TEST(OvHandle, SaysWhyItCannotBeDuplicatedAndIsEmptyThen)
{
    COvHandle source(reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(0x0BADBAD0)));
    COvHandle handle(NewHandle());
    EXPECT_EQ(L"0x80004005 OvHandleT | Method: DuplicateHandle | " +
                  ErrorItem(L"Win32 GetLastError", ERROR_INVALID_HANDLE),
              Raised([&] { handle = source; }));
    EXPECT_EQ(nullptr, handle.Get());
    source.Release();
}
