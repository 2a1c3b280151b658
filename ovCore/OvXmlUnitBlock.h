// Sixteen units of a text at a time, looked through for what escaping changes.
#pragma once

#include <cstddef>
#include <cstdint>

#if defined(__SSE2__) && __SIZEOF_WCHAR_T__ == 4
#define OV_UNIT_BLOCK_SSE2 1
#include <emmintrin.h>
#else
#define OV_UNIT_BLOCK_SSE2 0
#endif

inline constexpr ptrdiff_t UNITS_IN_BLOCK = 16;

enum class UnitBlock
{
    Plain, ///< printable ASCII without markup characters and quotes
    Ascii, ///< nothing beyond ASCII, but not plain
    Other
};

/// The plain way, for every machine.
inline UnitBlock KindOfBlockPortably(const wchar_t* p)
{
    uint32_t nAll = 0;
    bool bPlain = true;
    for (ptrdiff_t i = 0; i < UNITS_IN_BLOCK; ++i)
    {
        const uint32_t c = static_cast<uint32_t>(p[i]);
        nAll |= c;
        bPlain = bPlain && c >= 0x20 && c != 0x7F && c != '&' && c != '<' && c != '>' && c != '"' && c != '\'';
    }
    return nAll > 0x7F ? UnitBlock::Other : bPlain ? UnitBlock::Plain : UnitBlock::Ascii;
}

#if OV_UNIT_BLOCK_SSE2

/// The same with the vector instructions that the target always has.
inline UnitBlock KindOfBlock(const wchar_t* p)
{
    const auto load = [p](int i) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p) + i); };
    const auto isEqual = [](__m128i units, char c) { return _mm_cmpeq_epi8(units, _mm_set1_epi8(c)); };
    const auto without = [](__m128i units, char bits) { return _mm_andnot_si128(_mm_set1_epi8(bits), units); };

    const __m128i a = load(0), b = load(1), c = load(2), d = load(3);
    const __m128i all = _mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d));
    const __m128i beyond = _mm_andnot_si128(_mm_set1_epi32(0x7F), all);
    if (_mm_movemask_epi8(_mm_cmpeq_epi32(beyond, _mm_setzero_si128())) != 0xFFFF)
        return UnitBlock::Other;
    const __m128i units = _mm_packus_epi16(_mm_packs_epi32(a, b), _mm_packs_epi32(c, d));
    const __m128i controls = _mm_or_si128(_mm_cmplt_epi8(units, _mm_set1_epi8(0x20)), isEqual(units, 0x7F));
    const __m128i angles = isEqual(without(units, 2), '<');                                     // and '>'
    const __m128i others = _mm_or_si128(isEqual(without(units, 4), '"'), isEqual(units, '\'')); // and '&'
    const __m128i special = _mm_or_si128(_mm_or_si128(controls, angles), others);
    return _mm_movemask_epi8(special) == 0 ? UnitBlock::Plain : UnitBlock::Ascii;
}

#else

inline UnitBlock KindOfBlock(const wchar_t* p)
{
    return KindOfBlockPortably(p);
}

#endif
