#include "ovCore/OvDateTime.h"

#include "ovCore/OvStackTrace.h"

#include <cmath>
#include <ctime>
#include <cwchar>
#include <iterator>

namespace
{

const wchar_t s_szSource[] = L"ovCore\\OvDateTime";

constexpr double MIN_VALUE = -657434.0; // 1 January 100
constexpr double MAX_VALUE = 2958465.0; // 31 December 9999
constexpr LONG SECONDS_A_DAY = 24 * 60 * 60;
constexpr LONG DAYS_A_CYCLE = 146097; // 400 years
constexpr size_t FORMAT_BUFFER = 128; // characters, with the terminating zero

bool IsLeapYear(LONG nYear)
{
    return (nYear % 4 == 0 && nYear % 100 != 0) || nYear % 400 == 0;
}

LONG DaysInMonth(LONG nYear, LONG nMonth)
{
    static const LONG s_nDays[] = { 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31 };
    return nMonth == 2 && IsLeapYear(nYear) ? 29 : s_nDays[nMonth - 1];
}

/// The days from 1 January of the year 0 to 1 January of this one.
LONG DaysBeforeYear(LONG nYear)
{
    const LONG nPast = nYear - 1; // the year 0 is a leap year, so what follows counts it from the year 1 on
    return nYear == 0 ? 0 : 366 + nPast * 365 + nPast / 4 - nPast / 100 + nPast / 400;
}

/// The days from 1 January of the year to the first of the month.
LONG DaysBeforeMonth(LONG nYear, LONG nMonth)
{
    LONG nDays = 0;
    for (LONG n = 1; n < nMonth; ++n)
        nDays += DaysInMonth(nYear, n);
    return nDays;
}

/// Days since 1 January of the year 0.
LONG DayNumber(LONG nYear, LONG nMonth, LONG nDay)
{
    return DaysBeforeYear(nYear) + DaysBeforeMonth(nYear, nMonth) + nDay - 1;
}

LONG BaseDay()
{
    return DayNumber(1899, 12, 30);
}

bool IsInCalendar(const SYSTEMTIME& time)
{
    return time.wYear <= 9999 && time.wMonth >= 1 && time.wMonth <= 12 && time.wDay >= 1 &&
           time.wDay <= DaysInMonth(time.wYear, time.wMonth) && time.wHour < 24 && time.wMinute < 60 &&
           time.wSecond < 60;
}

void SetDate(LONG nDay, std::tm& fields)
{
    LONG nYear = static_cast<LONG>(static_cast<int64_t>(nDay) * 400 / DAYS_A_CYCLE); // right but for one year
    while (DaysBeforeYear(nYear) > nDay)
        --nYear;
    while (DaysBeforeYear(nYear + 1) <= nDay)
        ++nYear;
    fields.tm_year = nYear - 1900;
    fields.tm_yday = nDay - DaysBeforeYear(nYear);
    LONG nMonth = 12;
    while (DaysBeforeMonth(nYear, nMonth) > fields.tm_yday)
        --nMonth;
    fields.tm_mon = nMonth - 1;
    fields.tm_mday = fields.tm_yday - DaysBeforeMonth(nYear, nMonth) + 1;
    fields.tm_wday = (nDay + 6) % 7; // 1 January of the year 0 was a Saturday
}

/// The calendar's fields of a value within the range.
std::tm ToFields(double dValue)
{
    const LONG nSecond = static_cast<LONG>(std::lround(std::fabs(dValue - std::trunc(dValue)) * SECONDS_A_DAY));
    std::tm fields = {};
    SetDate(BaseDay() + static_cast<LONG>(dValue), fields);
    fields.tm_hour = nSecond / 3600;
    fields.tm_min = nSecond / 60 % 60;
    fields.tm_sec = nSecond % 60;
    return fields;
}

} // namespace

COvDateTime::COvDateTime(const SYSTEMTIME& time)
{
    OV_SCOPE(L"COvDateTime::COvDateTime");
    m_nStatus = IsInCalendar(time) ? STATUS_VALID : STATUS_INVALID;
    if (m_nStatus != STATUS_VALID)
        return;
    const LONG nDays = DayNumber(time.wYear, time.wMonth, time.wDay) - BaseDay();
    const double dTime = (time.wHour * 3600 + time.wMinute * 60 + time.wSecond) / double(SECONDS_A_DAY);
    m_dValue = nDays < 0 ? nDays - dTime : nDays + dTime;
}

COvDateTime COvDateTime::Now()
{
    OV_SCOPE(L"COvDateTime::Now");
    SYSTEMTIME time = {};
    ::GetSystemTime(&time);
    return COvDateTime(time);
}

std::wstring COvDateTime::Format(const wchar_t* format) const
{
    OV_SCOPE(L"COvDateTime::Format");
    if (m_nStatus != STATUS_VALID || m_dValue < MIN_VALUE || m_dValue > MAX_VALUE || format == nullptr)
        return std::wstring();
    const std::tm fields = ToFields(m_dValue);
    wchar_t szText[FORMAT_BUFFER];
    const size_t nLength = std::wcsftime(szText, std::size(szText), format, &fields);
    return nLength < std::size(szText) ? std::wstring(szText, nLength) : std::wstring(); // some fill it without a zero
}

COvEvidence COvDateTime::GetEvidence(const wchar_t* szName) const
{
    OV_SCOPE(L"COvDateTime::GetEvidence");
    return COvEvidence(szName != nullptr ? szName : L"DateTime", Format(DISPLAY_FORM));
}
