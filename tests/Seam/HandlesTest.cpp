// Handles: closing, duplicating, access, pseudo-handles.
#include "KernelTesting.h"

#include <gtest/gtest.h>

#include <tuple>

namespace
{

CTestHandle Duplicate(HANDLE hSource, DWORD dwAccess, DWORD dwOptions = 0)
{
    HANDLE hTarget = nullptr;
    ::DuplicateHandle(::GetCurrentProcess(), hSource, ::GetCurrentProcess(), &hTarget, dwAccess, FALSE, dwOptions);
    return CTestHandle(hTarget);
}

} // namespace

TEST(Handles, WhatIsNoOpenHandleIsRefused)
{
    HANDLE hClosed = MakeEvent(true, true).get(); // closed at the end of this line
    const HANDLE handles[] = { nullptr, hClosed, reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(0x7FFFFF0)) };
    HANDLE hTarget = hClosed;
    DWORD dwCode = 0;
    for (const HANDLE h : handles)
    {
        const std::tuple<const char*, DWORD> rows[] = {
            { "CloseHandle", LastErrorAfter([&] { EXPECT_FALSE(::CloseHandle(h)); }) },
            { "SetEvent", LastErrorAfter([&] { EXPECT_FALSE(::SetEvent(h)); }) },
            { "ResetEvent", LastErrorAfter([&] { EXPECT_FALSE(::ResetEvent(h)); }) },
            { "WaitForSingleObject", LastErrorAfter([&] { EXPECT_EQ(WAIT_FAILED, ::WaitForSingleObject(h, 0)); }) },
            { "WaitForMultipleObjects",
              LastErrorAfter([&] { EXPECT_EQ(WAIT_FAILED, ::WaitForMultipleObjects(1, &h, TRUE, 0)); }) },
            { "GetExitCodeThread", LastErrorAfter([&] { EXPECT_FALSE(::GetExitCodeThread(h, &dwCode)); }) },
            { "DuplicateHandle", LastErrorAfter([&] {
                  EXPECT_FALSE(::DuplicateHandle(::GetCurrentProcess(), h, ::GetCurrentProcess(), &hTarget, 0, FALSE,
                                                 DUPLICATE_SAME_ACCESS));
              }) },
        };
        for (const auto& [szCall, dwError] : rows)
            EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_HANDLE), dwError) << szCall << " " << h;
        EXPECT_EQ(nullptr, hTarget);
    }
}

TEST(Handles, PseudoHandlesNeedNoClosing)
{
    EXPECT_EQ(INVALID_HANDLE_VALUE, ::GetCurrentProcess());
    EXPECT_TRUE(::CloseHandle(::GetCurrentProcess()));
    EXPECT_TRUE(::CloseHandle(::GetCurrentThread()));
    EXPECT_EQ(WAIT_TIMEOUT, ::WaitForSingleObject(::GetCurrentProcess(), 0));
    EXPECT_EQ(WAIT_TIMEOUT, ::WaitForSingleObject(::GetCurrentThread(), 0));
}

TEST(Handles, ADuplicateHasTheAccessAskedFor)
{
    const CTestHandle event = MakeEvent(true, true);
    const struct
    {
        DWORD dwAccess;
        DWORD dwOptions;
        bool bSet;
        bool bWait;
    } rows[] = {
        { 0, DUPLICATE_SAME_ACCESS, true, true }, { SYNCHRONIZE, 0, false, true },
        { EVENT_MODIFY_STATE, 0, true, false },   { GENERIC_EXECUTE, 0, false, true },
        { GENERIC_WRITE, 0, true, false },        { GENERIC_READ, 0, false, false },
        { GENERIC_ALL, 0, true, true },           { 0, 0, false, false },
    };
    for (const auto& row : rows)
    {
        const CTestHandle copy = Duplicate(event.get(), row.dwAccess, row.dwOptions);
        ASSERT_NE(nullptr, copy.get()) << row.dwAccess;
        const CTestHandle second = Duplicate(copy.get(), 0, DUPLICATE_SAME_ACCESS); // has no more than its source
        for (const HANDLE h : { copy.get(), second.get() })
        {
            const DWORD dwDenied = ERROR_ACCESS_DENIED;
            EXPECT_EQ(row.bSet ? UntouchedError : dwDenied, LastErrorAfter([&] { ::SetEvent(h); })) << row.dwAccess;
            EXPECT_EQ(row.bSet ? UntouchedError : dwDenied, LastErrorAfter([&] { ::ResetEvent(h); })) << row.dwAccess;
            EXPECT_EQ(row.bWait ? UntouchedError : dwDenied, LastErrorAfter([&] { ::WaitForSingleObject(h, 0); }))
                << row.dwAccess;
        }
    }
}

TEST(Handles, ADuplicateIsTheSameObjectAndOutlivesItsSource)
{
    HANDLE hSource = MakeEvent(true, false).release();
    CTestHandle copy;
    EXPECT_EQ(UntouchedError, LastErrorAfter([&] {
                  EXPECT_TRUE(::SetEvent(hSource));
                  copy = Duplicate(hSource, 0, DUPLICATE_SAME_ACCESS | DUPLICATE_CLOSE_SOURCE);
                  EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(copy.get(), 0));
                  EXPECT_TRUE(::ResetEvent(copy.get()));
                  EXPECT_EQ(WAIT_TIMEOUT, ::WaitForSingleObject(copy.get(), 0));
              }))
        << "success leaves it alone";
    if (copy.get() != hSource) // its value may be used again
    {
        EXPECT_FALSE(::CloseHandle(hSource));
    }
}

TEST(Handles, PseudoHandlesDuplicateIntoRealOnes)
{
    const CTestHandle process = Duplicate(::GetCurrentProcess(), 0, DUPLICATE_SAME_ACCESS);
    const CTestHandle thread = Duplicate(::GetCurrentThread(), 0, DUPLICATE_SAME_ACCESS);
    ASSERT_NE(nullptr, process.get());
    ASSERT_NE(nullptr, thread.get());
    EXPECT_NE(::GetCurrentProcess(), process.get());
    DWORD dwCode = 0;
    EXPECT_TRUE(::GetExitCodeThread(thread.get(), &dwCode));
    EXPECT_EQ(STILL_ACTIVE, dwCode);

    const CTestHandle event = MakeEvent(true, true);
    HANDLE hTarget = nullptr; // a real handle of this process serves as well
    EXPECT_TRUE(
        ::DuplicateHandle(process.get(), event.get(), process.get(), &hTarget, 0, FALSE, DUPLICATE_SAME_ACCESS));
    EXPECT_TRUE(::CloseHandle(hTarget));
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_HANDLE), LastErrorAfter([&] {
                  EXPECT_FALSE(::DuplicateHandle(event.get(), event.get(), process.get(), &hTarget, 0, FALSE, 0));
              }));
}
