// The owners of COM strings and of kernel handles.
#include "ovCore/OvStringUtil.h"
#include "OvHandleT.h"

#include "Raised.h"

#include <gtest/gtest.h>

#include <utility>

namespace
{

HANDLE NewHandle()
{
    return ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
}

/// Asked right after a handle may have been closed, before another takes its value.
bool IsOpen(HANDLE h)
{
    return ::WaitForSingleObject(h, 0) != WAIT_FAILED;
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
    a = b;
    EXPECT_NE(a.Get(), b.Get());
    a = *&a;
    a = std::move(b);
    EXPECT_TRUE(b.IsNull());
    const COvBstr taken(std::move(a = std::move(*&a)));
    EXPECT_EQ(withNul, COvStringUtil::FromBSTR(taken));
    a.Attach(::SysAllocString(L"c"));
    b.Attach(a.Detach());
    EXPECT_STREQ(L"c", b.Get());
    *b.Receive() = ::SysAllocString(L"d");
    EXPECT_STREQ(L"d", b.Get());
}

TEST(OvHandle, IsClosedByEachWayToLoseIt)
{
    for (const auto& lose : { +[](COvHandle& h) { h.Close(), h.Close(); }, +[](COvHandle& h) { h.Set(nullptr); },
                              +[](COvHandle& h) { COvHandle gone(std::move(h)); }, +[](COvHandle& h) { h = s_empty; },
                              +[](COvHandle& h) { h = COvHandle(); } })
    {
        COvHandle handle(NewHandle());
        const HANDLE hEvent = handle.Get();
        EXPECT_TRUE(IsOpen(hEvent));
        lose(handle);
        EXPECT_FALSE(IsOpen(hEvent) || handle.Get() != nullptr);
    }
}

TEST(OvHandle, IsNeverOwnedByTwo)
{
    COvHandle handle(NewHandle());
    const HANDLE hEvent = handle.Get();
    COvHandle assigned(NewHandle());
    assigned = handle;
    EXPECT_NE(hEvent, assigned.Get());
    EXPECT_NE(hEvent, COvHandle(std::as_const(handle)).Get());
    ::SetEvent(assigned.Get());
    EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(hEvent, 0)); // one event
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
    COvHandle source(reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(0x0BADBAD0)));
    handle.Set(NewHandle());
    EXPECT_EQ(L"0x80004005 OvHandleT | Method: DuplicateHandle | " +
                  ErrorItem(L"Win32 GetLastError", ERROR_INVALID_HANDLE),
              Raised([&] { handle = source; }));
    EXPECT_EQ(nullptr, handle.Get());
    source.Release();
}
