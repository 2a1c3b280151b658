// What escaping makes of each unit of ASCII, and of sixteen units at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#if defined(__SSE2__) && __SIZEOF_WCHAR_T__ == 4
#define OV_BLOCKS_WITH_SSE2 1
#include <emmintrin.h>
#else
#define OV_BLOCKS_WITH_SSE2 0
#endif

inline constexpr uint32_t ASCII_UNITS = 0x80;
inline constexpr ptrdiff_t UNITS_IN_BLOCK = 16;
inline constexpr size_t REFERENCE_LENGTH = 8; // of "&#xHHHH;"
inline constexpr size_t PAIR_LENGTH = 10;     // of "&#xHHHHHH;"

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

#if OV_BLOCKS_WITH_SSE2

/// The same for PIECES_WITH_QUOTES, with the vector instructions that every processor of the target has.
/// @param pSpecial  receives a bit for each unit that becomes longer, when all are ASCII.
inline size_t BlockLengthSse2(const wchar_t* p, uint32_t* pSpecial)
{
    const auto load = [p](int i) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p) + i); };
    const __m128i a = load(0), b = load(1), c = load(2), d = load(3);
    // as bytes: what is beyond ASCII becomes 0, 0x80 or more, and so less than a blank, as control characters are
    const __m128i units = _mm_packus_epi16(_mm_packs_epi32(a, b), _mm_packs_epi32(c, d));
    const auto where = [](__m128i bytes, char nUnit) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(nUnit)); };
    const auto without = [units](char bits) { return _mm_andnot_si128(_mm_set1_epi8(bits), units); };
    const __m128i references = _mm_or_si128(_mm_cmplt_epi8(units, _mm_set1_epi8(0x20)), where(units, 0x7F));
    const __m128i angles = where(without('<' ^ '>'), '<' & '>');
    const __m128i apostrophes = where(units, '\'');
    const __m128i quotes = where(without('"' ^ '&'), '"' & '&'); // and ampersands
    const __m128i special = _mm_or_si128(_mm_or_si128(references, angles), _mm_or_si128(apostrophes, quotes));
    *pSpecial = static_cast<uint32_t>(_mm_movemask_epi8(special));
    if (*pSpecial == 0)
        return UNITS_IN_BLOCK;

    const __m128i all = _mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d));
    const __m128i beyond = _mm_andnot_si128(_mm_set1_epi32(ASCII_UNITS - 1), all);
    if (_mm_movemask_epi8(_mm_cmpeq_epi32(beyond, _mm_setzero_si128())) != 0xFFFF)
        return 0;
    const auto add = [](__m128i sum, __m128i places, char n) {
        return _mm_add_epi8(sum, _mm_and_si128(places, _mm_set1_epi8(n)));
    };
    __m128i lengths = add(_mm_set1_epi8(1), references, REFERENCE_LENGTH - 1);
    lengths = add(add(lengths, angles, 4 - 1), _mm_or_si128(apostrophes, quotes), 6 - 1);
    lengths = _mm_add_epi8(lengths, where(units, '&')); // 5: one less, which is what the mask adds
    const __m128i halves = _mm_sad_epu8(lengths, _mm_setzero_si128());
    return static_cast<size_t>(_mm_cvtsi128_si32(halves) + _mm_extract_epi16(halves, 4));
}

#endif

inline size_t BlockLength(const wchar_t* p, const CPieces& pieces)
{
#if OV_BLOCKS_WITH_SSE2
    if (&pieces == &PIECES_WITH_QUOTES)
    {
        uint32_t nSpecial;
        return BlockLengthSse2(p, &nSpecial);
    }
#endif
    return BlockLengthPortably(p, pieces);
}
