// What escaping makes of sixteen units at a time, with vector instructions where the processor has them.
#pragma once

#include <cstddef>
#include <cstdint>

inline constexpr uint32_t ASCII_UNITS = 0x80;
inline constexpr ptrdiff_t UNITS_IN_BLOCK = 16;
inline constexpr size_t REFERENCE_LENGTH = 8; // of "&#xHHHH;"

#if defined(__i386__) || defined(__x86_64__)
#define OV_BLOCKS_WITH_SSE2 1
#include <emmintrin.h>

/// Whether the processor has the instructions: each one of 64 bits does.
inline bool HasSse2()
{
#ifdef __SSE2__
    return true;
#else
    return __builtin_cpu_supports("sse2") != 0;
#endif
}

#ifndef __SSE2__
#pragma GCC push_options
#pragma GCC target("sse2")
#endif

/// A place in a block is a byte, of all ones where something holds.
struct COvBytes
{
    __m128i bytes;

    COvBytes Where(char nByte) const { return { _mm_cmpeq_epi8(bytes, _mm_set1_epi8(nByte)) }; }
    COvBytes Below(char nByte) const { return { _mm_cmplt_epi8(bytes, _mm_set1_epi8(nByte)) }; }
    COvBytes Without(char nBits) const { return { _mm_andnot_si128(_mm_set1_epi8(nBits), bytes) }; }
    COvBytes Or(COvBytes other) const { return { _mm_or_si128(bytes, other.bytes) }; }
    COvBytes Add(COvBytes places, char n) const
    {
        return { _mm_add_epi8(bytes, _mm_and_si128(places.bytes, _mm_set1_epi8(n))) };
    }
    uint32_t Mask() const { return static_cast<uint32_t>(_mm_movemask_epi8(bytes)); }

    size_t Sum() const
    {
        const __m128i halves = _mm_sad_epu8(bytes, _mm_setzero_si128());
        return static_cast<size_t>(_mm_cvtsi128_si32(halves) + _mm_extract_epi16(halves, 4));
    }
};

/// A block as bytes: what is beyond ASCII becomes 0, 0x80 or more, and so less than a blank, as control characters are.
/// @param pBeyond  receives the bits that lie beyond ASCII.
inline COvBytes BlockAsBytes(const wchar_t* p, __m128i* pBeyond)
{
    const auto* const pVectors = reinterpret_cast<const __m128i*>(p);
    const __m128i a = _mm_loadu_si128(pVectors), b = _mm_loadu_si128(pVectors + 1);
    if constexpr (sizeof(wchar_t) == 2)
    {
        *pBeyond = _mm_andnot_si128(_mm_set1_epi16(ASCII_UNITS - 1), _mm_or_si128(a, b));
        return { _mm_packus_epi16(a, b) };
    }
    else
    {
        const __m128i c = _mm_loadu_si128(pVectors + 2), d = _mm_loadu_si128(pVectors + 3);
        const __m128i all = _mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d));
        *pBeyond = _mm_andnot_si128(_mm_set1_epi32(ASCII_UNITS - 1), all);
        return { _mm_packus_epi16(_mm_packs_epi32(a, b), _mm_packs_epi32(c, d)) };
    }
}

/// The length of a block once it is escaped, quotes too; 0 when there is more than ASCII in it. To be called when
/// HasSse2. A host's stack of 32 bits may be aligned to four bytes.
/// @param pSpecial  receives a bit for each unit that becomes longer, when all are ASCII.
#ifdef __i386__
[[gnu::force_align_arg_pointer]]
#endif
inline size_t
BlockLengthSse2(const wchar_t* p, uint32_t* pSpecial)
{
    __m128i beyond;
    const COvBytes units = BlockAsBytes(p, &beyond);
    const COvBytes references = units.Below(0x20).Or(units.Where(0x7F));
    const COvBytes angles = units.Without('<' ^ '>').Where('<' & '>');
    const COvBytes apostrophes = units.Where('\'');
    const COvBytes quotes = units.Without('"' ^ '&').Where('"' & '&'); // and ampersands
    *pSpecial = references.Or(angles).Or(apostrophes).Or(quotes).Mask();
    if (*pSpecial == 0)
        return UNITS_IN_BLOCK;
    if (COvBytes{ beyond }.Where(0).Mask() != 0xFFFF)
        return 0;
    const COvBytes lengths = COvBytes{ _mm_set1_epi8(1) }
                                 .Add(references, REFERENCE_LENGTH - 1)
                                 .Add(angles, 4 - 1)
                                 .Add(apostrophes.Or(quotes), 6 - 1)
                                 .Add(units.Where('&'), -1); // which has been counted as a quote
    return lengths.Sum();
}

#ifndef __SSE2__
#pragma GCC pop_options
#endif

#else
#define OV_BLOCKS_WITH_SSE2 0
#endif
