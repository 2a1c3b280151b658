#include "OvXmlEscape.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <string_view>

namespace
{

bool IsHighSurrogate(uint32_t c)
{
    return c >= 0xD800 && c <= 0xDBFF;
}

bool IsLowSurrogate(uint32_t c)
{
    return c >= 0xDC00 && c <= 0xDFFF;
}

/// What escaping makes of a markup character; empty for every other unit.
std::wstring_view Entity(uint32_t c, bool bQuotes)
{
    switch (c)
    {
    case L'&':
        return L"&amp;";
    case L'<':
        return L"&lt;";
    case L'>':
        return L"&gt;";
    case L'"':
        return bQuotes ? L"&quot;" : std::wstring_view();
    case L'\'':
        return bQuotes ? L"&apos;" : std::wstring_view();
    default:
        return std::wstring_view();
    }
}

/// The units that are copied as they are.
class CPlainUnits
{
public:
    explicit constexpr CPlainUnits(bool bQuotes) : m_bPlain()
    {
        for (unsigned c = 0x20; c <= 0x7E; ++c)
            m_bPlain[c] = c != '&' && c != '<' && c != '>' && !(bQuotes && (c == '"' || c == '\''));
    }

    const wchar_t* EndOfRun(const wchar_t* p, const wchar_t* pEnd) const
    {
        while (p != pEnd && static_cast<uint32_t>(*p) < std::size(m_bPlain) && m_bPlain[*p])
            ++p;
        return p;
    }

private:
    bool m_bPlain[0x80];
};

constexpr CPlainUnits s_plainButQuotes(true);
constexpr CPlainUnits s_plainWithQuotes(false);

/// Takes the escaped text piece by piece: counts all of it and writes what fits.
class CEscapeOutput
{
public:
    CEscapeOutput(wchar_t* pOut, size_t nOut) : m_pOut(pOut), m_nRemaining(static_cast<int64_t>(nOut)) {}

    /// Plain units, each of which is a piece of its own.
    void AddPlain(const wchar_t* p, size_t n)
    {
        const int64_t nFits = std::clamp<int64_t>(m_nRemaining, 0, static_cast<int64_t>(n));
        if (m_pOut != nullptr)
            m_pOut = std::copy_n(p, nFits, m_pOut);
        Count(n);
    }

    void AddEntity(std::wstring_view entity)
    {
        if (Fits(entity.size()))
            m_pOut = std::copy(entity.begin(), entity.end(), m_pOut);
        Count(entity.size());
    }

    /// A hexadecimal reference with nDigits digits.
    void AddReference(uint32_t nCode, unsigned nDigits)
    {
        const size_t nLength = REFERENCE_MARKS + nDigits;
        if (Fits(nLength))
        {
            m_pOut = std::copy_n(L"&#x", 3, m_pOut);
            for (unsigned nShift = nDigits * 4; nShift != 0; nShift -= 4)
                *m_pOut++ = L"0123456789ABCDEF"[nCode >> (nShift - 4) & 0xF];
            *m_pOut++ = L';';
        }
        Count(nLength);
    }

    /// The units of everything added.
    uint64_t Total() const { return m_nTotal; }

    /// Whether everything was written.
    bool IsWhole() const { return m_nRemaining >= 0; }

private:
    static constexpr size_t REFERENCE_MARKS = 4; // "&#x" and ";"

    bool Fits(size_t n) const { return m_pOut != nullptr && m_nRemaining >= static_cast<int64_t>(n); }

    void Count(size_t n)
    {
        m_nTotal += n;
        m_nRemaining -= static_cast<int64_t>(n);
    }

    wchar_t* m_pOut; // where the next piece goes
    int64_t m_nRemaining;
    uint64_t m_nTotal = 0;
};

/// Adds the unit at p, which is not a plain one, or the pair that begins there. @return the unit after it.
const wchar_t* AddSpecial(const wchar_t* p, const wchar_t* pEnd, bool bQuotes, CEscapeOutput& output)
{
    const uint32_t c = static_cast<uint32_t>(*p++);
    if (IsHighSurrogate(c) && p != pEnd && IsLowSurrogate(static_cast<uint32_t>(*p)))
    {
        output.AddReference((c - 0xD800) * 0x400 + (static_cast<uint32_t>(*p++) - 0xDC00) + 0x10000, 6);
        return p;
    }
    const std::wstring_view entity = Entity(c, bQuotes);
    if (entity.empty())
        output.AddReference(c, 4);
    else
        output.AddEntity(entity);
    return p;
}

void AddText(const wchar_t* p, size_t n, bool bQuotes, CEscapeOutput& output)
{
    const CPlainUnits& plain = bQuotes ? s_plainButQuotes : s_plainWithQuotes;
    const wchar_t* const pEnd = p + n;
    while (p != pEnd)
    {
        const wchar_t* const pRun = p;
        p = plain.EndOfRun(p, pEnd);
        output.AddPlain(pRun, static_cast<size_t>(p - pRun));
        if (p != pEnd)
            p = AddSpecial(p, pEnd, bQuotes, output);
    }
}

} // namespace

size_t EscapeXML(const wchar_t* pIn, size_t nIn, wchar_t* pOut, size_t nOut, DWORD dwFlags)
{
    if (pIn == nullptr)
        _com_issue_error(E_FAIL);
    CEscapeOutput output(pOut, nOut);
    AddText(pIn, nIn, (dwFlags & ESCAPE_ATTRIBUTE) != 0, output);
    const size_t nTotal = static_cast<size_t>(output.Total());
    if (nTotal != output.Total())
        throw std::bad_alloc(); // more than the address space holds
    return pOut == nullptr || output.IsWhole() ? nTotal : 0;
}
