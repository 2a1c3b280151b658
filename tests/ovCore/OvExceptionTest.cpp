#include "ovCore/OvException.h"

#include "DebuggerTexts.h"
#include "FailingNew.h"
#include "Raised.h"

#include <gtest/gtest.h>

TEST(OvException, KeepsTheFilesNameWithoutItsFolders)
{
    const std::pair<const wchar_t*, const wchar_t*> rows[] = {
        { L"c:\\a\\b\\X", L"X" }, { L"a/b", L"a/b" }, { L"a\\", L"" }, { nullptr, L"" }
    };
    for (const auto& [szPath, szName] : rows)
    {
        const COvException e(E_INVALIDARG, szPath, 38, COvEvidence(L"a", 1));
        const COvException copy(e);
        for (const COvException* p : { &e, &copy })
        {
            EXPECT_STREQ(szName, p->GetFile());
            EXPECT_TRUE(p->GetCode() == E_INVALIDARG && p->GetLine() == 38);
            EXPECT_STREQ(L"a: 1", p->GetEvidence(nullptr));
        }
    }
}

TEST(OvException, WhatCannotBeStoredGivesTheFallback)
{
    const COvEvidence longEvidence(L"a", std::wstring(100, L'x'));
    const COvEvidence shortEvidence(L"a", 1);
    for (const bool bLongFile : { true, false })
    {
        const CFailingNew failing(1);
        const COvException e(E_INVALIDARG, bLongFile ? L"x\\AFileNameThatIsTooLongToBeHeldInside" : L"f", 9,
                             bLongFile ? shortEvidence : longEvidence);
        EXPECT_TRUE(failing.Reached());
        EXPECT_TRUE(e.GetCode() == E_FAIL && e.GetLine() == 0);
        EXPECT_STREQ(L"", e.GetFile());
        EXPECT_STREQ(L"", e.GetEvidence(nullptr));
    }
}

TEST(OvException, InfoIsAddedBehindWithItsPlace)
{
    COvException e(E_FAIL, L"f", 1, COvEvidence());
    e.AddInfo(L"..\\ovCore\\OvThread", 97, COvEvidence(L"b", 2) + COvEvidence(L"c", 3));
    e.AddInfo(L"g", -1, COvEvidence());
    EXPECT_STREQ(L"\rMore Info From OvThread(97): b: 2\rc: 3\rMore Info From g(-1): ", e.GetEvidence(nullptr));
}

TEST(OvException, WriteDebugSendsSixTexts)
{
    CDebuggerTexts captured;
    COvException(E_FAIL, L"ovCore\\OvThread", 97, COvEvidence(L"a", L"caf\x00E9") + COvEvidence(L"b", 2)).WriteDebug();
    const std::vector<std::wstring> expected = {
        L"\r\n++++ COvException::WriteDebug() ++++\r\n",
        L"OvThread(97): Error:-2147467259 -2147467259: TID:" + std::to_wstring(::GetCurrentThreadId()) + L" ",
        L"\r\n",
        L"\r\n",
        L"a: caf\x00E9\r\nb: 2",
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

TEST(OvException, ANullPointerIsNamed)
{
    OvCheckPointer(L"pThere", "", L"f", 1);
    EXPECT_EQ(L"0x80070057 OvSingleLock | Info Msg: Invalid pointer | pSync: 0",
              Raised([] { OvCheckPointer(L"pSync", nullptr, L"ovCore\\OvSingleLock", 44); }));
}
