#include "ovCore/OvDateTime.h"

#include <gtest/gtest.h>

#include <chrono>
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
    const std::pair<SYSTEMTIME, const wchar_t*> rows[] = {
        // empty: not a date, or outside what can be written
        { Time(2010, 3, 2, 14, 5, 9), L"2010-03-02T14:05:09.000" },
        { Time(1899, 12, 30, 6), L"1899-12-30T06:00:00.000" },
        { Time(1899, 12, 29, 6), L"1899-12-29T06:00:00.000" },
        { Time(1899, 12, 28, 23, 59, 59), L"1899-12-28T23:59:59.000" },
        { Time(2000, 2, 29), L"2000-02-29T00:00:00.000" },
        { Time(2011, 2, 29), L"" },
        { Time(1900, 2, 29), L"" },
        { Time(2010, 0, 1), L"" },
        { Time(2010, 13, 1), L"" },
        { Time(2010, 1, 0), L"" },
        { Time(2010, 4, 31), L"" },
        { Time(2010, 1, 1, 24), L"" },
        { Time(2010, 1, 1, 0, 60), L"" },
        { Time(2010, 1, 1, 0, 0, 60), L"" },
        { Time(99, 12, 31, 23, 59, 59), L"" },
        { Time(9999, 12, 31), L"9999-12-31T00:00:00.000" },
        { Time(9999, 12, 31, 0, 0, 1), L"" },
        { Time(10000, 1, 1), L"" }
    };
    for (const auto& [time, szDocument] : rows)
        EXPECT_EQ(szDocument, COvDateTime(time).Format(COvDateTime::DOCUMENT_FORM))
            << time.wYear << "-" << time.wMonth << "-" << time.wDay;
    EXPECT_EQ(L"01-01", COvDateTime(Time(100, 1, 1)).Format(L"%m-%d")); // the C libraries pad its %Y differently
    EXPECT_EQ(L"", COvDateTime().Format(COvDateTime::DOCUMENT_FORM));
}

TEST(OvDateTime, EveryDayOfFourCenturiesComesBack)
{
    const WORD nMonthDays[] = { 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31 };
    int nWeekday = 5; // 1 January 1700 was a Friday
    int nSecond = 0;  // of the day; another one each day
    for (WORD wYear = 1700; wYear < 2100; ++wYear)
        for (WORD wMonth = 1, wYearDay = 1; wMonth <= 12; ++wMonth)
        {
            const bool bLeap = wYear % 4 == 0 && (wYear % 100 != 0 || wYear == 2000);
            for (WORD wDay = 1; wDay <= nMonthDays[wMonth - 1] + (bLeap && wMonth == 2 ? 1 : 0); ++wDay, ++wYearDay)
            {
                const WORD wHour = static_cast<WORD>(nSecond / 3600);
                const WORD wMinute = static_cast<WORD>(nSecond / 60 % 60);
                const WORD wSecond = static_cast<WORD>(nSecond % 60);
                char szExpected[64];
                std::snprintf(szExpected, sizeof(szExpected), "%04d-%02d-%02d %d %03d %02d:%02d:%02d", wYear, wMonth,
                              wDay, nWeekday, wYearDay, wHour, wMinute, wSecond);
                const COvDateTime date(Time(wYear, wMonth, wDay, wHour, wMinute, wSecond));
                ASSERT_EQ(std::wstring(szExpected, szExpected + std::strlen(szExpected)),
                          date.Format(L"%Y-%m-%d %w %j %H:%M:%S"));
                nWeekday = (nWeekday + 1) % 7;
                nSecond = (nSecond + 7919) % 86400;
            }
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
    // std::time() follows a coarser clock, which may lag behind
    const auto now = [] { return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()); };
    const std::time_t before = now();
    const std::wstring strNow = COvDateTime::Now().Format(COvDateTime::DOCUMENT_FORM);
    const auto utc = [](std::time_t time) {
        wchar_t szText[40];
        return std::wstring(szText, std::wcsftime(szText, 40, COvDateTime::DOCUMENT_FORM, std::gmtime(&time)));
    };
    EXPECT_LE(utc(before), strNow);
    EXPECT_LE(strNow, utc(now()));
}
