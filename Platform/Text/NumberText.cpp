#include "Platform/Text/NumberText.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace OvPlatform
{

namespace
{

bool IsBlank(wchar_t c)
{
    return (c >= L'\t' && c <= L'\r') || c == L' ' || c == 0x85 || c == 0xA0 || c == 0x1680 ||
           (c >= 0x2000 && c <= 0x200A) || c == 0x2028 || c == 0x2029 || c == 0x202F || c == 0x205F || c == 0x3000;
}

bool IsDigit(wchar_t c)
{
    return c >= L'0' && c <= L'9';
}

/// The digit's value, or a value that is above every base.
unsigned DigitValue(wchar_t c)
{
    constexpr unsigned NoDigit = 99;
    if (IsDigit(c))
        return static_cast<unsigned>(c - L'0');
    const wchar_t cLower = static_cast<wchar_t>(c | 0x20);
    return cLower >= L'a' && cLower <= L'f' ? static_cast<unsigned>(cLower - L'a') + 10 : NoDigit;
}

constexpr int64_t MaxExponent = 1000000000000; // more than any text has digits

class CNumberParser
{
public:
    explicit CNumberParser(const wchar_t* szText) : m_p(szText) {}

    std::optional<CNumberText> Parse()
    {
        ReadLeadingMarks();
        if (!(m_bCurrency ? ReadDecimal() : ReadBits() || ReadDecimal()))
            return std::nullopt;
        ReadTrailingMarks();
        if (*m_p != L'\0' || m_bOpen)
            return std::nullopt;
        m_number.bNegative = m_bMinus || m_bParentheses;
        return m_number;
    }

private:
    /// Takes the character when it comes next and has not come before.
    bool Once(wchar_t c, bool& bSeen)
    {
        if (*m_p != c || bSeen)
            return false;
        bSeen = true;
        ++m_p;
        return true;
    }

    bool SkipBlank()
    {
        if (!IsBlank(*m_p))
            return false;
        ++m_p;
        return true;
    }

    void ReadLeadingMarks()
    {
        while (SkipBlank() || Once(L'+', m_bPlus) || Once(L'-', m_bMinus) || Once(L'$', m_bCurrency) ||
               Once(L'(', m_bParentheses))
            ;
        m_bOpen = m_bParentheses;
    }

    void ReadTrailingMarks()
    {
        bool bNoCurrency = m_bCurrency || m_number.bBits;
        while (SkipBlank() || Once(L'+', m_bPlus) || Once(L'-', m_bMinus) || Once(L'$', bNoCurrency) || Close())
            ;
    }

    bool Close()
    {
        if (!m_bOpen || *m_p != L')')
            return false;
        m_bOpen = false;
        ++m_p;
        return true;
    }

    bool ReadBits()
    {
        const wchar_t cMark = m_p[0] == L'&' ? static_cast<wchar_t>(m_p[1] | 0x20) : L'\0';
        const unsigned nShift = cMark == L'h' ? 4 : cMark == L'o' ? 3 : 0;
        if (nShift == 0 || DigitValue(m_p[2]) >> nShift != 0)
            return false;
        m_number.bBits = true;
        for (m_p += 2; DigitValue(*m_p) >> nShift == 0; ++m_p)
        {
            m_number.bTooLong = m_number.bTooLong || m_number.nBits >> (64 - nShift) != 0;
            m_number.nBits = m_number.nBits << nShift | DigitValue(*m_p);
        }
        return true;
    }

    /// Digits with at most one point, and with commas anywhere behind the first of them.
    bool ReadDecimal()
    {
        bool bPoint = false;
        bool bAny = false;
        for (; IsDigit(*m_p) || (*m_p == L',' && (bAny || bPoint)) || (*m_p == L'.' && !bPoint); ++m_p)
        {
            bPoint = bPoint || *m_p == L'.';
            if (IsDigit(*m_p))
            {
                bAny = true;
                AddDigit(static_cast<char>('0' + DigitValue(*m_p)), bPoint);
            }
        }
        return bAny && ReadExponent();
    }

    void AddDigit(char c, bool bFraction)
    {
        const bool bLeadingZero = m_number.digits.empty() && c == '0';
        if (!bLeadingZero)
            m_number.digits += c;
        if (bLeadingZero && bFraction)
            --m_number.nExponent;
        if (!bLeadingZero && !bFraction)
            ++m_number.nExponent;
    }

    bool ReadExponent()
    {
        if (*m_p != L'e' && *m_p != L'E')
            return true;
        ++m_p;
        const int64_t nSign = *m_p == L'-' ? -1 : 1;
        if (*m_p == L'-' || *m_p == L'+')
            ++m_p;
        if (!IsDigit(*m_p))
            return false;
        int64_t nValue = 0;
        for (; IsDigit(*m_p); ++m_p)
            nValue = std::min(nValue * 10 + DigitValue(*m_p), MaxExponent);
        m_number.nExponent += nSign * nValue;
        return true;
    }

    const wchar_t* m_p;
    CNumberText m_number;
    bool m_bPlus = false;
    bool m_bMinus = false;
    bool m_bCurrency = false;
    bool m_bParentheses = false;
    bool m_bOpen = false;
};

/// Whether the digits behind the point round the integer before it up.
bool RoundsUp(const std::string& digits, size_t nPoint, bool bOdd)
{
    if (nPoint >= digits.size() || digits[nPoint] < '5')
        return false;
    const bool bHalf = digits[nPoint] == '5' && digits.find_first_not_of('0', nPoint + 1) == std::string::npos;
    return !bHalf || bOdd;
}

} // namespace

std::optional<CNumberText> ParseNumber(const wchar_t* szText)
{
    return CNumberParser(szText).Parse();
}

std::optional<uint64_t> RoundToInteger(const CNumberText& number)
{
    constexpr uint64_t Max = std::numeric_limits<uint64_t>::max();
    if (number.digits.empty() || number.nExponent < 0)
        return 0;
    uint64_t nValue = 0;
    const auto nPoint = static_cast<size_t>(number.nExponent);
    for (size_t i = 0; i < nPoint; ++i)
    {
        const auto nDigit = static_cast<uint64_t>(i < number.digits.size() ? number.digits[i] - '0' : 0);
        if (nValue > (Max - nDigit) / 10)
            return std::nullopt;
        nValue = nValue * 10 + nDigit;
    }
    if (!RoundsUp(number.digits, nPoint, nValue % 2 != 0))
        return nValue;
    return nValue == Max ? std::nullopt : std::optional<uint64_t>(nValue + 1);
}

std::optional<double> ToDouble(const CNumberText& number)
{
    double fValue = 0;
    const std::string text = "0." + number.digits + "e" + std::to_string(number.nExponent);
    const auto result = std::from_chars(text.data(), text.data() + text.size(), fValue);
    if (result.ec == std::errc::result_out_of_range)
    {
        if (number.nExponent > 0)
            return std::nullopt;
        fValue = 0;
    }
    return number.bNegative ? -fValue : fValue;
}

} // namespace OvPlatform
