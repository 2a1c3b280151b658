#include "ovCore/OvVersion.h"

#include "ovCore/OvStackTrace.h"
#include "ovCore/OvStringUtil.h"

#include <algorithm>

namespace
{

const wchar_t s_szSource[] = L"ovCore\\OvVersion";

/// The low 16 bits of the decimal number at the front.
USHORT ReadPart(std::wstring_view part)
{
    uint32_t nValue = 0; // may wrap around: only the low bits count
    for (size_t i = 0; i < part.size() && part[i] >= L'0' && part[i] <= L'9'; ++i)
        nValue = nValue * 10 + static_cast<uint32_t>(part[i] - L'0');
    return static_cast<USHORT>(nValue & 0xFFFF);
}

/// Writes the number in decimal. @return its end.
wchar_t* WritePart(wchar_t* p, USHORT nPart)
{
    if (nPart >= 10)
        p = WritePart(p, static_cast<USHORT>(nPart / 10));
    *p = static_cast<wchar_t>(L'0' + nPart % 10);
    return p + 1;
}

} // namespace

COvVersion::COvVersion(USHORT nFirst, USHORT nSecond, USHORT nThird, USHORT nFourth)
{
    OV_SCOPE(L"COvVersion::COvVersion");
    SetVersion(nFirst, nSecond, nThird, nFourth);
}

COvVersion::COvVersion(const wchar_t* szText)
{
    OV_SCOPE(L"COvVersion::COvVersion");
    SetVersion(szText);
}

bool COvVersion::SetVersion(USHORT nFirst, USHORT nSecond, USHORT nThird, USHORT nFourth)
{
    OV_SCOPE(L"COvVersion::SetVersion");
    const USHORT nParts[MAX_PARTS] = { nFirst, nSecond, nThird, nFourth };
    std::copy(std::begin(nParts), std::end(nParts), m_nParts);
    m_nCount = MAX_PARTS;
    return true;
}

bool COvVersion::SetVersion(DWORD dwFileVersionMS, DWORD dwFileVersionLS)
{
    OV_SCOPE(L"COvVersion::SetVersion");
    return SetVersion(HIWORD(dwFileVersionMS), LOWORD(dwFileVersionMS), HIWORD(dwFileVersionLS),
                      LOWORD(dwFileVersionLS));
}

bool COvVersion::SetVersion(const wchar_t* szText)
{
    OV_SCOPE(L"COvVersion::SetVersion");
    return ReadParts(szText != nullptr ? szText : L"");
}

bool COvVersion::SetVersion(std::wstring strText)
{
    OV_SCOPE(L"COvVersion::SetVersion");
    return ReadParts(strText);
}

bool COvVersion::ReadParts(std::wstring_view text)
{
    SetVersion(0, 0, 0, 0);
    m_nCount = 0;
    std::wstring_view part;
    for (size_t nBegin = 0; nBegin < text.size() && m_nCount < MAX_PARTS; nBegin += part.size() + 1)
    {
        size_t nEnd = nBegin;
        while (nEnd < text.size() && text[nEnd] != L'.' && text[nEnd] != L',')
            ++nEnd;
        part = text.substr(nBegin, nEnd - nBegin);
        if (!COvStringUtil::IsNumeric(part, true))
            break;
        m_nParts[m_nCount++] = ReadPart(part);
    }
    return m_nCount > 0;
}

bool COvVersion::operator==(const COvVersion& other) const
{
    OV_SCOPE(L"COvVersion::operator==");
    return std::equal(m_nParts, m_nParts + std::min(m_nCount, other.m_nCount), other.m_nParts);
}

bool COvVersion::operator!=(const COvVersion& other) const
{
    OV_SCOPE(L"COvVersion::operator!=");
    return !(*this == other);
}

bool COvVersion::IsValid() const
{
    OV_SCOPE(L"COvVersion::IsValid");
    return m_nCount > 0 && *this != COvVersion();
}

COvVersion::CText COvVersion::Text() const
{
    CText text;
    wchar_t* pEnd = text.sz;
    for (LONG i = 0; i < m_nCount; ++i)
    {
        if (i > 0)
            *pEnd++ = L'.';
        pEnd = WritePart(pEnd, m_nParts[i]);
    }
    *pEnd = 0;
    return text;
}

std::wstring COvVersion::AsStr() const
{
    OV_SCOPE(L"COvVersion::AsStr");
    return Text().sz;
}

COvEvidence COvVersion::GetEvidence(const wchar_t* szName) const
{
    OV_SCOPE(L"COvVersion::GetEvidence");
    return COvEvidence(szName != nullptr ? szName : L"Version", AsStr());
}
