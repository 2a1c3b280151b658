// The owner of a kernel handle.
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
    const struct
    {
        const char* szName;
        void (*pfnLose)(COvHandle&);
    } rows[] = {
        { "close", [](COvHandle& h) { h.Close(); } },
        { "close twice", [](COvHandle& h) { h.Close(), h.Close(); } },
        { "destruction", [](COvHandle& h) { COvHandle gone(std::move(h)); } },
        { "set to nothing", [](COvHandle& h) { h.Set(nullptr); } },
        { "copy of an empty one", [](COvHandle& h) { h = COvHandle(static_cast<const COvHandle&>(COvHandle())); } },
        { "assignment of an empty one",
          [](COvHandle& h) {
              const COvHandle empty;
              h = empty;
          } },
    };
    for (const auto& row : rows)
    {
        const HANDLE hEvent = NewHandle();
        COvHandle handle(hEvent);
        EXPECT_TRUE(IsOpen(hEvent)) << row.szName;
        row.pfnLose(handle);
        EXPECT_FALSE(IsOpen(hEvent)) << row.szName;
        EXPECT_EQ(nullptr, handle.Get()) << row.szName;
    }
}

TEST(OvHandle, GivesWayToAnother)
{
    const struct
    {
        const char* szName;
        void (*pfnReplace)(COvHandle&, HANDLE);
        bool bDuplicate;
    } rows[] = {
        { "set", [](COvHandle& h, HANDLE hNew) { h.Set(hNew); }, false },
        { "move", [](COvHandle& h, HANDLE hNew) { h = COvHandle(hNew); }, false },
        { "duplicate", [](COvHandle& h, HANDLE hNew) { h.Duplicate(hNew); }, true },
    };
    for (const auto& row : rows)
    {
        const HANDLE hOld = NewHandle();
        const HANDLE hNew = NewHandle();
        {
            COvHandle handle(hOld);
            row.pfnReplace(handle, hNew);
            EXPECT_FALSE(row.bDuplicate ? handle.Get() == hOld && IsOpen(hOld) && !IsSameEvent(hOld, hNew)
                                        : IsOpen(hOld))
                << row.szName;
            EXPECT_EQ(row.bDuplicate, IsSameEvent(handle.Get(), hNew)) << row.szName;
        }
        EXPECT_EQ(row.bDuplicate, IsOpen(hNew)) << row.szName;
        if (row.bDuplicate)
            ::CloseHandle(hNew);
    }
}

TEST(OvHandle, IsNeverOwnedByTwo)
{
    const HANDLE hEvent = NewHandle();
    COvHandle handle(hEvent);
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
    EXPECT_EQ(hEvent, handle.Get());
    EXPECT_TRUE(IsOpen(hEvent));

    COvHandle moved(std::move(handle));
    EXPECT_EQ(nullptr, handle.Get());
    EXPECT_EQ(hEvent, moved.Release());
    EXPECT_EQ(nullptr, moved.Get());
    moved.Close();
    EXPECT_TRUE(IsOpen(hEvent));
    ::CloseHandle(hEvent);
}

TEST(OvHandle, OfZeroIsValid)
{
    EXPECT_TRUE(COvHandle().IsValid());
    COvHandle invalid(INVALID_HANDLE_VALUE);
    EXPECT_FALSE(invalid.IsValid());
    invalid.Release();
    EXPECT_TRUE(invalid.IsValid());
}

TEST(OvHandle, SaysWhyItCannotBeDuplicated)
{
    const HANDLE hNothing = reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(0x0BADBAD0));
    const std::wstring strExpected =
        L"0x80004005 OvHandleT | Method: DuplicateHandle | " + ErrorItem(L"Win32 GetLastError", ERROR_INVALID_HANDLE);
    COvHandle source(hNothing);
    COvHandle assigned(NewHandle());
    EXPECT_EQ(strExpected, Raised([&] { const COvHandle copy(source); }));
    EXPECT_EQ(strExpected, Raised([&] { assigned = source; }));
    EXPECT_EQ(nullptr, assigned.Get());
    source.Release();

    const HANDLE hOld = NewHandle(); // last: the first exceptions of a program may have taken its value
    COvHandle handle(hOld);
    EXPECT_EQ(strExpected, Raised([&] { handle.Duplicate(hNothing); }));
    EXPECT_FALSE(IsOpen(hOld));
    EXPECT_EQ(nullptr, handle.Get());
}
