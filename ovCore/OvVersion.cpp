#include "OvVersion.h"

#include "OvStackTrace.h"
#include "OvStringUtil.h"

#include <algorithm>

namespace
{

const wchar_t s_szSource[] = L"ovCore\\OvVersion";

/// Removes the first part with its separator from strText. @return the part.
std::wstring TakePart(std::wstring& strText)
{
    const size_t nSeparator = strText.find_first_of(L".,");
    const std::wstring strPart = strText.substr(0, nSeparator);
    strText.erase(0, nSeparator == std::wstring::npos ? nSeparator : nSeparator + 1);
    return strPart;
}

/// The low 16 bits of the decimal number at the front.
USHORT ReadPart(std::wstring strPart)
{
    COvStringUtil::TrimLeft(strPart, L'0');
    uint32_t nValue = 0; // may wrap around: only the low bits count
    for (size_t i = 0; i < strPart.size() && strPart[i] >= L'0' && strPart[i] <= L'9'; ++i)
        nValue = nValue * 10 + static_cast<uint32_t>(strPart[i] - L'0');
    return static_cast<USHORT>(nValue & 0xFFFF);
}

} // namespace

COvVersion::COvVersion(USHORT nFirst, USHORT nSecond, USHORT nThird, USHORT nFourth)
{
    COvStackTraceScope scope(L"COvVersion::COvVersion", s_szSource, __LINE__, COvStackTrace::Get());
    SetVersion(nFirst, nSecond, nThird, nFourth);
}

COvVersion::COvVersion(const wchar_t* szText)
{
    COvStackTraceScope scope(L"COvVersion::COvVersion", s_szSource, __LINE__, COvStackTrace::Get());
    SetVersion(szText);
}

bool COvVersion::SetVersion(USHORT nFirst, USHORT nSecond, USHORT nThird, USHORT nFourth)
{
    COvStackTraceScope scope(L"COvVersion::SetVersion", s_szSource, __LINE__, COvStackTrace::Get());
    const USHORT nParts[MAX_PARTS] = { nFirst, nSecond, nThird, nFourth };
    std::copy(std::begin(nParts), std::end(nParts), m_nParts);
    m_nCount = MAX_PARTS;
    return true;
}

bool COvVersion::SetVersion(DWORD dwFileVersionMS, DWORD dwFileVersionLS)
{
    COvStackTraceScope scope(L"COvVersion::SetVersion", s_szSource, __LINE__, COvStackTrace::Get());
    return SetVersion(HIWORD(dwFileVersionMS), LOWORD(dwFileVersionMS), HIWORD(dwFileVersionLS),
                      LOWORD(dwFileVersionLS));
}

bool COvVersion::SetVersion(const wchar_t* szText)
{
    COvStackTraceScope scope(L"COvVersion::SetVersion", s_szSource, __LINE__, COvStackTrace::Get());
    return SetVersion(std::wstring(szText != nullptr ? szText : L""));
}

bool COvVersion::SetVersion(std::wstring strText)
{
    COvStackTraceScope scope(L"COvVersion::SetVersion", s_szSource, __LINE__, COvStackTrace::Get());
    SetVersion(0, 0, 0, 0);
    m_nCount = 0;
    while (!strText.empty() && m_nCount < MAX_PARTS)
    {
        const std::wstring strPart = TakePart(strText);
        if (!COvStringUtil::IsNumeric(strPart, true))
            break;
        m_nParts[m_nCount++] = ReadPart(strPart);
    }
    return m_nCount > 0;
}

bool COvVersion::operator==(const COvVersion& other) const
{
    COvStackTraceScope scope(L"COvVersion::operator==", s_szSource, __LINE__, COvStackTrace::Get());
    return std::equal(m_nParts, m_nParts + std::min(m_nCount, other.m_nCount), other.m_nParts);
}

bool COvVersion::operator!=(const COvVersion& other) const
{
    COvStackTraceScope scope(L"COvVersion::operator!=", s_szSource, __LINE__, COvStackTrace::Get());
    return !(*this == other);
}

bool COvVersion::IsValid() const
{
    COvStackTraceScope scope(L"COvVersion::IsValid", s_szSource, __LINE__, COvStackTrace::Get());
    return m_nCount > 0 && *this != COvVersion();
}

std::wstring COvVersion::AsStr() const
{
    COvStackTraceScope scope(L"COvVersion::AsStr", s_szSource, __LINE__, COvStackTrace::Get());
    std::wstring str;
    for (LONG i = 0; i < m_nCount; ++i)
    {
        const std::string digits = std::to_string(m_nParts[i]); // std::to_wstring formats, at twenty times the cost
        str.append(i == 0 ? L"" : L".").append(digits.begin(), digits.end());
    }
    return str;
}

COvEvidence COvVersion::GetEvidence(const wchar_t* szName) const
{
    COvStackTraceScope scope(L"COvVersion::GetEvidence", s_szSource, __LINE__, COvStackTrace::Get());
    return COvEvidence(szName != nullptr ? szName : L"Version", AsStr());
}
