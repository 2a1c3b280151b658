#include "ovCore/OvException.h"

#include "DebuggerTexts.h"
#include "FailingNew.h"

#include <gtest/gtest.h>

TEST(OvException, KeepsTheFilesNameWithoutItsFolders)
{
    const struct
    {
        const wchar_t* szPath;
        const wchar_t* szName;
    } rows[] = {
        { L"c:\\a\\b\\X", L"X" },
        { L"..\\ovCore\\OvThread", L"OvThread" },
        { L"PatchApi", L"PatchApi" },
        { L"a/b", L"a/b" },
        { L"a\\", L"" },
        { L"", L"" },
        { nullptr, L"" },
        { L"x\\\xD83D\xDE00", L"\xD83D\xDE00" },
    };
    for (const auto& row : rows)
    {
        const COvException e(E_INVALIDARG, row.szPath, 38, COvEvidence(L"a", 1));
        EXPECT_STREQ(row.szName, e.GetFile());
        EXPECT_EQ(E_INVALIDARG, e.GetCode());
        EXPECT_EQ(38, e.GetLine());
        EXPECT_STREQ(L"a: 1", e.GetEvidence(nullptr));
    }
}

TEST(OvException, ACopyIsWholeAndItsOwn)
{
    COvException copy(S_OK, nullptr, 0, COvEvidence());
    {
        COvException e(E_FAIL, L"x\\OvEvent", 5, COvEvidence(L"a", 1));
        copy = e;
        e.AddInfo(L"f", 1, COvEvidence(L"b", 2));
    }
    try
    {
        throw COvException(copy);
    }
    catch (const COvBaseException& e)
    {
        EXPECT_EQ(E_FAIL, e.GetCode());
        EXPECT_EQ(5, e.GetLine());
        EXPECT_STREQ(L"OvEvent", e.GetFile());
        EXPECT_STREQ(L"a: 1", e.GetEvidence(L" "));
    }
}

TEST(OvException, WhatCannotBeStoredGivesTheFallback)
{
    const COvEvidence longEvidence(L"a", std::wstring(100, L'x'));
    const COvEvidence shortEvidence(L"a", 1);
    const wchar_t szLongFile[] = L"x\\AFileNameThatIsTooLongToBeHeldInside";
    const struct
    {
        const wchar_t* szFile;
        const COvEvidence& evidence;
    } rows[] = { { szLongFile, shortEvidence }, { L"f", longEvidence } };
    for (const auto& row : rows)
    {
        const CFailingNew failing(1);
        const COvException e(E_INVALIDARG, row.szFile, 9, row.evidence);
        EXPECT_TRUE(failing.Reached());
        EXPECT_EQ(E_FAIL, e.GetCode());
        EXPECT_EQ(0, e.GetLine());
        EXPECT_STREQ(L"", e.GetFile());
        EXPECT_STREQ(L"", e.GetEvidence(nullptr));
    }
}

TEST(OvException, InfoIsAddedBehindWithItsPlace)
{
    COvException e(E_FAIL, L"f", 1, COvEvidence(L"a", 1));
    e.AddInfo(L"..\\ovCore\\OvThread", 97, COvEvidence(L"b", 2) + COvEvidence(L"c", 3));
    e.AddInfo(L"g", -1, COvEvidence());
    EXPECT_STREQ(L"a: 1\rMore Info From OvThread(97): b: 2\rc: 3\rMore Info From g(-1): ", e.GetEvidence(nullptr));

    COvException bare(E_FAIL, L"f", 1, COvEvidence());
    bare.AddInfo(L"g", 2, COvEvidence(L"a", 1));
    EXPECT_STREQ(L"\rMore Info From g(2): a: 1", bare.GetEvidence(nullptr));
}

TEST(OvException, WriteDebugSendsSixTexts)
{
    CDebuggerTexts captured;
    COvException(E_FAIL, L"ovCore\\OvThread", 97, COvEvidence(L"a", L"caf\x00E9") + COvEvidence(L"b", 2)).WriteDebug();
    COvException(5, nullptr, 0, COvEvidence()).WriteDebug();
    const std::wstring tid = std::to_wstring(::GetCurrentThreadId());
    const std::vector<std::wstring> expected = {
        L"\r\n++++ COvException::WriteDebug() ++++\r\n",
        L"OvThread(97): Error:-2147467259 -2147467259: TID:" + tid + L" ",
        L"\r\n",
        L"\r\n",
        L"a: caf\x00E9\r\nb: 2",
        L"\r\n",
        L"\r\n++++ COvException::WriteDebug() ++++\r\n",
        L"(0): Error:5 5: TID:" + tid + L" ",
        L"\r\n",
        L"\r\n",
        L"",
        L"\r\n",
    };
    EXPECT_EQ(expected, captured.Take());
}

TEST(OvException, WithoutMemoryTheCatchSitesOperationsReturn)
{
    const COvEvidence more(L"b", std::wstring(100, L'y'));
    bool bReached = true;
    for (unsigned nFail = 1; bReached; ++nFail)
    {
        COvException e(E_FAIL, L"f", 1, COvEvidence(L"a", 1) + COvEvidence(L"b", 2));
        const CFailingNew failing(nFail);
        e.WriteDebug();
        e.AddInfo(L"c:\\AFileNameThatIsTooLongToBeHeldInside", 3, more);
        bReached = failing.Reached();
        EXPECT_EQ(E_FAIL, e.GetCode()) << "allocation " << nFail;
    }
}

TEST(OvException, ARaiseEndsWithTheStackDump)
{
    try
    {
        OvRaise(E_INVALIDARG, L"ovCore\\OvEvent", 12, COvEvidence(L"Method", L"CreateEventW"));
        FAIL();
    }
    catch (const COvException& e)
    {
        EXPECT_EQ(E_INVALIDARG, e.GetCode());
        EXPECT_EQ(12, e.GetLine());
        EXPECT_STREQ(L"OvEvent", e.GetFile());
        EXPECT_STREQ(L"Method: CreateEventW\rStack Dump: \r", e.GetEvidence(nullptr));
    }
}

TEST(OvException, ANullPointerIsNamed)
{
    OvCheckPointer(L"pThere", "", L"f", 1);
    try
    {
        OvCheckPointer(L"pSync", nullptr, L"ovCore\\OvSingleLock", 44);
        FAIL();
    }
    catch (const COvException& e)
    {
        EXPECT_EQ(E_INVALIDARG, e.GetCode());
        EXPECT_EQ(44, e.GetLine());
        EXPECT_STREQ(L"OvSingleLock", e.GetFile());
        EXPECT_STREQ(L"Info Msg: Invalid pointer pSync: 0 Stack Dump:  ", e.GetEvidence(L" "));
    }
}
