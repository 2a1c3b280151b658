#include "ovCore/OvDateTime.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <ctime>

namespace
{

SYSTEMTIME Time(WORD wYear, WORD wMonth, WORD wDay, WORD wHour = 0, WORD wMinute = 0, WORD wSecond = 0)
{
    return { wYear, wMonth, 77, wDay, wHour, wMinute, wSecond, 999 };
}

} // namespace

TEST(OvDateTime, FormatsTheDatesThatTheCalendarHas)
{
    const struct
    {
        SYSTEMTIME time;
        const wchar_t* szDocument; ///< empty: not a date, or outside what can be written
    } rows[] = {
        { Time(2010, 3, 2, 14, 5, 9), L"2010-03-02T14:05:09.000" },
        { Time(2026, 11, 22, 23, 59, 59), L"2026-11-22T23:59:59.000" },
        { Time(1899, 12, 30), L"1899-12-30T00:00:00.000" },
        { Time(1899, 12, 30, 6), L"1899-12-30T06:00:00.000" },
        { Time(1899, 12, 29, 6), L"1899-12-29T06:00:00.000" }, // the fraction counts away from zero
        { Time(1899, 12, 28, 23, 59, 59), L"1899-12-28T23:59:59.000" },
        { Time(2000, 2, 29), L"2000-02-29T00:00:00.000" },
        { Time(1600, 2, 29, 12), L"1600-02-29T12:00:00.000" },
        { Time(2012, 2, 29), L"2012-02-29T00:00:00.000" },
        { Time(2011, 2, 29), L"" },
        { Time(1900, 2, 29), L"" },
        { Time(2010, 2, 28, 23, 59, 59), L"2010-02-28T23:59:59.000" },
        { Time(2010, 0, 1), L"" },
        { Time(2010, 13, 1), L"" },
        { Time(2010, 1, 0), L"" },
        { Time(2010, 1, 32), L"" },
        { Time(2010, 4, 31), L"" },
        { Time(2010, 1, 1, 24), L"" },
        { Time(2010, 1, 1, 0, 60), L"" },
        { Time(2010, 1, 1, 0, 0, 60), L"" },
        { Time(99, 12, 31, 23, 59, 59), L"" },
        { Time(0, 1, 1), L"" },
        { Time(9999, 12, 31), L"9999-12-31T00:00:00.000" },
        { Time(9999, 12, 31, 0, 0, 1), L"" },
        { Time(10000, 1, 1), L"" },
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(row.szDocument, COvDateTime(row.time).Format(COvDateTime::DOCUMENT_FORM))
            << row.time.wYear << "-" << row.time.wMonth << "-" << row.time.wDay;
    }
    EXPECT_EQ(L"01-01", COvDateTime(Time(100, 1, 1)).Format(L"%m-%d")); // the C libraries pad its %Y differently
    EXPECT_EQ(L"", COvDateTime().Format(COvDateTime::DOCUMENT_FORM));
}

TEST(OvDateTime, EveryDayOfFourCenturiesComesBack)
{
    const int nMonthDays[] = { 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31 };
    int nWeekday = 5; // 1 January 1700 was a Friday
    for (int nYear = 1700; nYear < 2100; ++nYear)
    {
        const bool bLeap = nYear % 4 == 0 && (nYear % 100 != 0 || nYear == 2000);
        int nDayOfYear = 0;
        for (int nMonth = 1; nMonth <= 12; ++nMonth)
            for (int nDay = 1; nDay <= nMonthDays[nMonth - 1] + (bLeap && nMonth == 2 ? 1 : 0); ++nDay)
            {
                char szExpected[64];
                std::snprintf(szExpected, sizeof(szExpected), "%04d-%02d-%02d %d %03d 23:59:58", nYear, nMonth, nDay,
                              nWeekday, ++nDayOfYear);
                const COvDateTime date(
                    Time(static_cast<WORD>(nYear), static_cast<WORD>(nMonth), static_cast<WORD>(nDay), 23, 59, 58));
                ASSERT_EQ(std::wstring(szExpected, szExpected + std::strlen(szExpected)),
                          date.Format(L"%Y-%m-%d %w %j %H:%M:%S"));
                nWeekday = (nWeekday + 1) % 7;
            }
    }
}

TEST(OvDateTime, EverySecondOfADayComesBack)
{
    for (const WORD wYear : { WORD{ 1800 }, WORD{ 2026 } })
        for (int n = 0; n < 86400; n += 7)
        {
            const SYSTEMTIME time = Time(wYear, 5, 17, static_cast<WORD>(n / 3600), static_cast<WORD>(n / 60 % 60),
                                         static_cast<WORD>(n % 60));
            char szExpected[20];
            std::snprintf(szExpected, sizeof(szExpected), "17 %02d:%02d:%02d", n / 3600, n / 60 % 60, n % 60);
            ASSERT_EQ(std::wstring(szExpected, szExpected + std::strlen(szExpected)),
                      COvDateTime(time).Format(L"%d %H:%M:%S"));
        }
}

TEST(OvDateTime, WhatIsTooLongOrEmptyGivesNothing)
{
    const COvDateTime date(Time(2010, 3, 2));
    EXPECT_EQ(std::wstring(127, L'x'), date.Format(std::wstring(127, L'x').c_str()));
    EXPECT_EQ(L"", date.Format(std::wstring(128, L'x').c_str()));
    EXPECT_EQ(L"", date.Format(L""));
    EXPECT_EQ(L"", date.Format(nullptr));
}

TEST(OvDateTime, DescribesItself)
{
    const COvDateTime date(Time(2010, 3, 2, 14, 5, 9));
    const COvObject& object = date;
    EXPECT_STREQ(L"DateTime: 03/02/2010  14:05:09", object.GetEvidence().ToString(nullptr));
    EXPECT_STREQ(L"Since: 03/02/2010  14:05:09", object.GetEvidence(L"Since").ToString(nullptr));
}

TEST(OvDateTime, NowIsNowInUtc)
{
    const auto utc = [] {
        const std::time_t now = std::time(nullptr);
        wchar_t szText[40];
        return std::wstring(szText, std::wcsftime(szText, 40, COvDateTime::DOCUMENT_FORM, std::gmtime(&now)));
    };
    const std::wstring strBefore = utc();
    const std::wstring strNow = COvDateTime::Now().Format(COvDateTime::DOCUMENT_FORM);
    EXPECT_LE(strBefore, strNow);
    EXPECT_LE(strNow, utc());
}
