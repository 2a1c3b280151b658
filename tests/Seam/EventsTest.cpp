// Events: state, names, access.
#include "KernelTesting.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace
{

const wchar_t s_szName[] = L"OvEventsTest";
const wchar_t s_szGlobalName[] = L"Global\\OvEventsTest";

CTestHandle Open(const wchar_t* szName, DWORD dwAccess = EVENT_ALL_ACCESS)
{
    return CTestHandle(::OpenEventW(dwAccess, FALSE, szName));
}

bool IsSignalled(const CTestHandle& event)
{
    return ::WaitForSingleObject(event.get(), 0) == WAIT_OBJECT_0;
}

} // namespace

TEST(Events, SignalsAreKeptAndNotCounted)
{
    // nWaitsMet: of three
    const std::tuple<bool, bool, int, bool, int> rows[] = {
        { false, false, 0, false, 0 }, { false, true, 0, false, 1 }, { false, false, 1, false, 1 },
        { false, false, 3, false, 1 }, { false, true, 1, true, 0 },  { true, false, 0, false, 0 },
        { true, true, 0, false, 3 },   { true, false, 1, false, 3 }, { true, true, 2, true, 0 },
    };
    for (const auto& [bManual, bInitial, nSets, bReset, nWaitsMet] : rows)
    {
        const CTestHandle event = MakeEvent(bManual, bInitial);
        for (int i = 0; i < nSets; ++i)
            EXPECT_TRUE(::SetEvent(event.get()));
        EXPECT_TRUE(!bReset || ::ResetEvent(event.get()));
        int nMet = 0;
        for (int i = 0; i < 3; ++i)
            nMet += IsSignalled(event) ? 1 : 0;
        EXPECT_EQ(nWaitsMet, nMet) << bManual << bInitial << " x" << nSets << bReset;
    }
}

TEST(Events, ANameIsOneObjectWhileAHandleIsOpen)
{
    CTestHandle first;
    EXPECT_EQ(0u, LastErrorAfter([&] { first = MakeEvent(true, true, s_szName); }));
    CTestHandle second;
    EXPECT_EQ(static_cast<DWORD>(ERROR_ALREADY_EXISTS),
              LastErrorAfter([&] { second = MakeEvent(false, false, s_szName); }));
    EXPECT_NE(first.get(), second.get());
    for (int i = 0; i < 2; ++i) // it is the first one: signalled, and manual-reset
        EXPECT_TRUE(IsSignalled(second));
    first.reset();
    const DWORD accesses[] = { SYNCHRONIZE, EVENT_MODIFY_STATE, EVENT_ALL_ACCESS, MAXIMUM_ALLOWED };
    for (const DWORD dwAccess : accesses)
    {
        const CTestHandle opened = Open(s_szName, dwAccess);
        EXPECT_EQ(dwAccess != SYNCHRONIZE, ::SetEvent(opened.get()) != FALSE) << dwAccess;
        EXPECT_EQ(dwAccess != EVENT_MODIFY_STATE, IsSignalled(opened)) << dwAccess;
    }
    second.reset();
    EXPECT_EQ(static_cast<DWORD>(ERROR_FILE_NOT_FOUND),
              LastErrorAfter([] { EXPECT_EQ(nullptr, Open(s_szName).get()); }));
    for (const wchar_t* const szName : { s_szName, L"", L"", static_cast<const wchar_t*>(nullptr) })
        EXPECT_EQ(0u, LastErrorAfter([&] { first = MakeEvent(true, false, szName); })) << "an empty name is none";
}

TEST(Events, TheGlobalNameSpaceIsApart)
{
    const CTestHandle global = MakeEvent(true, true, s_szGlobalName);
    EXPECT_EQ(nullptr, Open(s_szName));
    const CTestHandle local = MakeEvent(true, false, s_szName);
    EXPECT_TRUE(IsSignalled(Open(s_szGlobalName)));
    EXPECT_FALSE(IsSignalled(Open(s_szName)));
}

TEST(Events, NamesAreComparedByUnitAndNameSpace)
{
    const CTestHandle local = MakeEvent(true, false, L"Ov\xD83D\xDE00 Event");
    const struct
    {
        const wchar_t* szName;
        DWORD dwError; // 0: found
    } rows[] = {
        { L"Ov\xD83D\xDE00 Event", 0 },
        { L"Local\\Ov\xD83D\xDE00 Event", 0 },
        { L"Global\\Ov\xD83D\xDE00 Event", ERROR_FILE_NOT_FOUND },
        { L"Ov\xD83D\xDE01 Event", ERROR_FILE_NOT_FOUND },
        { L"Ov\xD83D", ERROR_FILE_NOT_FOUND },
        { L"no\\such\\folder", ERROR_PATH_NOT_FOUND },
        { nullptr, ERROR_INVALID_PARAMETER },
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.dwError == 0 ? UntouchedError : row.dwError,
                  LastErrorAfter([&] { EXPECT_EQ(row.dwError == 0, Open(row.szName, SYNCHRONIZE) != nullptr); }))
            << (row.szName ? row.szName : L"null");
    EXPECT_EQ(static_cast<DWORD>(ERROR_PATH_NOT_FOUND),
              LastErrorAfter([] { EXPECT_EQ(nullptr, MakeEvent(true, false, L"no\\such\\folder")); }));
}
