// The owner of a kernel handle.
#include "OvHandleT.h"

#include "Raised.h"

#include <gtest/gtest.h>

#include <utility>

namespace
{

const COvHandle s_empty;

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

} // namespace

TEST(OvHandle, IsClosedByEachWayToLoseIt)
{
    const HANDLE hOther = NewHandle();
    const std::pair<const char*, void (*)(COvHandle&, HANDLE)> rows[] = {
        { "close", [](COvHandle& h, HANDLE) { h.Close(), h.Close(); } },
        { "destruction", [](COvHandle& h, HANDLE) { COvHandle gone(std::move(h)); } },
        { "copy of an empty one", [](COvHandle& h, HANDLE) { h = s_empty; } },
        { "set", [](COvHandle& h, HANDLE hNew) { h.Set(hNew), h.Release(); } },
        { "move", [](COvHandle& h, HANDLE hNew) { h = COvHandle(hNew), h.Release(); } },
    };
    for (const auto& [szName, pfnLose] : rows)
    {
        const HANDLE hEvent = NewHandle();
        COvHandle handle(hEvent);
        EXPECT_TRUE(IsOpen(hEvent)) << szName;
        pfnLose(handle, hOther);
        EXPECT_FALSE(IsOpen(hEvent)) << szName;
        EXPECT_EQ(nullptr, handle.Get()) << szName;
    }
    EXPECT_TRUE(IsOpen(hOther));
    ::CloseHandle(hOther);
}

TEST(OvHandle, IsNeverOwnedByTwo)
{
    COvHandle handle(NewHandle());
    const HANDLE hEvent = handle.Get();
    COvHandle assigned(NewHandle());
    {
        const COvHandle copy(handle);
        assigned = handle;
        EXPECT_TRUE(IsSameEvent(hEvent, copy.Get()));
        EXPECT_TRUE(IsSameEvent(hEvent, assigned.Get()));
        EXPECT_NE(copy.Get(), assigned.Get());
    }
    COvHandle& self = handle;
    handle = self;
    handle = std::move(self);
    EXPECT_TRUE(IsOpen(hEvent));
    COvHandle moved(std::move(handle));
    EXPECT_EQ(nullptr, handle.Get());
    assigned.Duplicate(moved.Get());
    EXPECT_TRUE(IsSameEvent(hEvent, assigned.Get()));
    EXPECT_EQ(hEvent, moved.Release());
    moved.Close();
    EXPECT_TRUE(IsOpen(hEvent));
    EXPECT_TRUE(moved.IsValid()); // 0 is
    moved.Set(INVALID_HANDLE_VALUE);
    EXPECT_FALSE(moved.IsValid());
    moved.Set(hEvent);
}

TEST(OvHandle, SaysWhyItCannotBeDuplicatedAndIsEmptyThen)
{
    COvHandle source(reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(0x0BADBAD0)));
    COvHandle handle(NewHandle());
    const std::wstring strExpected =
        L"0x80004005 OvHandleT | Method: DuplicateHandle | " + ErrorItem(L"Win32 GetLastError", ERROR_INVALID_HANDLE);
    EXPECT_EQ(strExpected, Raised([&] { const COvHandle copy(source); }));
    EXPECT_EQ(strExpected, Raised([&] { handle = source; }));
    EXPECT_EQ(nullptr, handle.Get());
    source.Release();
}
