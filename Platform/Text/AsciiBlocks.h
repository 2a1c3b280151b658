// Texts in blocks of sixteen characters, most of which are ASCII.
#pragma once

#include <cstddef>
#include <cstdint>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace OvPlatform
{

constexpr size_t AsciiBlock = 16;

template <class From>
bool IsAsciiBlock(const From* p)
{
    uint32_t nAll = 0;
    for (size_t i = 0; i < AsciiBlock; ++i)
        nAll |= static_cast<uint32_t>(p[i]);
    return nAll < 0x80;
}

template <class From, class To>
void CopyAsciiBlock(const From* p, To* pTo)
{
    for (size_t i = 0; i < AsciiBlock; ++i)
        pTo[i] = static_cast<To>(p[i]);
}

// The same with vector instructions. The compiler makes none of the loops: each access to memory may be a machine fault
// that is turned into an exception.
#ifdef __SSE2__

inline __m128i LoadVector(const void* p, int nIndex = 0)
{
    return _mm_loadu_si128(static_cast<const __m128i*>(p) + nIndex);
}

inline void StoreVector(void* p, int nIndex, __m128i value)
{
    _mm_storeu_si128(static_cast<__m128i*>(p) + nIndex, value);
}

template <>
inline bool IsAsciiBlock(const char* p)
{
    return _mm_movemask_epi8(LoadVector(p)) == 0;
}

template <>
inline bool IsAsciiBlock(const wchar_t* p)
{
    static_assert(sizeof(wchar_t) == 4);
    const __m128i all =
        _mm_or_si128(_mm_or_si128(LoadVector(p), LoadVector(p, 1)), _mm_or_si128(LoadVector(p, 2), LoadVector(p, 3)));
    const __m128i beyond = _mm_andnot_si128(_mm_set1_epi32(0x7F), all);
    return _mm_movemask_epi8(_mm_cmpeq_epi32(beyond, _mm_setzero_si128())) == 0xFFFF;
}

template <>
inline void CopyAsciiBlock(const wchar_t* p, char* pTo)
{
    StoreVector(pTo, 0,
                _mm_packus_epi16(_mm_packs_epi32(LoadVector(p), LoadVector(p, 1)),
                                 _mm_packs_epi32(LoadVector(p, 2), LoadVector(p, 3))));
}

template <>
inline void CopyAsciiBlock(const char* p, wchar_t* pTo)
{
    const __m128i zero = _mm_setzero_si128();
    const __m128i low = _mm_unpacklo_epi8(LoadVector(p), zero);
    const __m128i high = _mm_unpackhi_epi8(LoadVector(p), zero);
    StoreVector(pTo, 0, _mm_unpacklo_epi16(low, zero));
    StoreVector(pTo, 1, _mm_unpackhi_epi16(low, zero));
    StoreVector(pTo, 2, _mm_unpacklo_epi16(high, zero));
    StoreVector(pTo, 3, _mm_unpackhi_epi16(high, zero));
}

#endif

} // namespace OvPlatform
