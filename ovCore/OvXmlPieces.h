// What escaping makes of each unit of ASCII, and of sixteen units at a time.
#pragma once

#include "ovCore/OvXmlBlocksSse2.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

inline constexpr size_t PAIR_LENGTH = 10; // of "&#xHHHHHH;"

template <unsigned nDigits>
constexpr void WriteDigits(wchar_t* p, uint32_t nCode)
{
    p[nDigits - 1] = L"0123456789ABCDEF"[nCode & 0xF];
    if constexpr (nDigits > 1)
        WriteDigits<nDigits - 1>(p, nCode >> 4);
}

/// Writes a hexadecimal reference. @return its end.
template <unsigned nDigits>
constexpr wchar_t* WriteReference(wchar_t* p, uint32_t nCode)
{
    p[0] = L'&';
    p[1] = L'#';
    p[2] = L'x';
    WriteDigits<nDigits>(p + 3, nCode);
    p[3 + nDigits] = L';';
    return p + 4 + nDigits;
}

/// The text of every unit of ASCII.
struct CPieces
{
    /// @param bQuotes  quotes are escaped too.
    explicit constexpr CPieces(bool bQuotes)
    {
        for (uint32_t c = 0; c < ASCII_UNITS; ++c)
        {
            const bool bPlain = c >= 0x20 && c <= 0x7E;
            const wchar_t plain[] = { static_cast<wchar_t>(c) };
            wchar_t reference[REFERENCE_LENGTH] = {};
            WriteReference<4>(reference, c);
            const std::wstring_view entity = EntityOf(c, bQuotes);
            const std::wstring_view text = !entity.empty() ? entity
                                           : bPlain        ? std::wstring_view(plain, 1)
                                                           : std::wstring_view(reference, REFERENCE_LENGTH);
            lengths[c] = static_cast<uint8_t>(text.size());
            for (size_t i = 0; i < text.size(); ++i)
                units[c][i] = text[i];
        }
    }

    /// Whether a unit stays as it is.
    constexpr bool IsPlain(uint32_t c) const { return c < ASCII_UNITS && lengths[c] == 1; }

    wchar_t units[ASCII_UNITS][REFERENCE_LENGTH] = {}; ///< and zeros behind
    uint8_t lengths[ASCII_UNITS] = {};

private:
    static constexpr std::wstring_view EntityOf(uint32_t c, bool bQuotes)
    {
        switch (c)
        {
        case '&':
            return L"&amp;";
        case '<':
            return L"&lt;";
        case '>':
            return L"&gt;";
        case '"':
            return bQuotes ? L"&quot;" : L"";
        case '\'':
            return bQuotes ? L"&apos;" : L"";
        default:
            return {};
        }
    }
};

inline constexpr CPieces PIECES_WITH_QUOTES(true);
inline constexpr CPieces PIECES_WITHOUT_QUOTES(false);

/// The length of a block once it is escaped; 0 when there is more than ASCII in it.
inline size_t BlockLengthPortably(const wchar_t* p, const CPieces& pieces)
{
    uint32_t nAll = 0;
    size_t nLength = 0;
    for (ptrdiff_t i = 0; i < UNITS_IN_BLOCK; ++i)
    {
        const uint32_t c = static_cast<uint32_t>(p[i]);
        nAll |= c;
        nLength += pieces.lengths[c % ASCII_UNITS];
    }
    return nAll < ASCII_UNITS ? nLength : 0;
}

inline size_t BlockLength(const wchar_t* p, const CPieces& pieces)
{
#if OV_BLOCKS_WITH_SSE2
    if (&pieces == &PIECES_WITH_QUOTES && HasSse2())
    {
        uint32_t nSpecial;
        return BlockLengthSse2(p, &nSpecial);
    }
#endif
    return BlockLengthPortably(p, pieces);
}
