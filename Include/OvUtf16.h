// UTF-16 texts as the bytes that leave the process (registry data, version data): two bytes a unit, the low one first.
// Each element of a wide text is one unit, whatever the size of wchar_t.
#pragma once

#include "OvPlatform.h"

#include <cstddef>
#include <string>

/// Writes nUnits units to pBytes, which has room for twice as many bytes. Surrogates and NULs are units like any other.
inline void OvPackUtf16(const wchar_t* pText, size_t nUnits, BYTE* pBytes)
{
    for (size_t i = 0; i < nUnits; ++i)
    {
        const unsigned nUnit = static_cast<unsigned>(pText[i]);
        pBytes[2 * i] = static_cast<BYTE>(nUnit & 0xFFu);
        pBytes[2 * i + 1] = static_cast<BYTE>((nUnit >> 8) & 0xFFu);
    }
}

/// The text of the first nUnits units at pBytes, which need not be aligned. Throws std::bad_alloc.
inline std::wstring OvUnpackUtf16(const BYTE* pBytes, size_t nUnits)
{
    std::wstring text(nUnits, L'\0');
    for (size_t i = 0; i < nUnits; ++i)
        text[i] = static_cast<wchar_t>(pBytes[2 * i] | (pBytes[2 * i + 1] << 8));
    return text;
}
