// UTF-8 to UTF-16 units and back, one unit or byte at a time.
#pragma once

#include "Platform/Types.h"

#include <string_view>

namespace OvPlatform
{

constexpr wchar_t ReplacementUnit = 0xFFFD;

constexpr bool IsHighSurrogate(wchar_t nUnit)
{
    return nUnit >= 0xD800 && nUnit <= 0xDBFF;
}
constexpr bool IsLowSurrogate(wchar_t nUnit)
{
    return nUnit >= 0xDC00 && nUnit <= 0xDFFF;
}

/// How the bytes of a character continue after its first: how many follow, and the bounds of the first of them (which
/// rule out overlong forms, surrogates and values above U+10FFFF). nMore is 0 for a byte that cannot begin one.
struct CUtf8Lead
{
    unsigned nMore;
    BYTE nFirstMin;
    BYTE nFirstMax;

    static constexpr CUtf8Lead Of(BYTE nByte)
    {
        if (nByte < 0xC2 || nByte > 0xF4)
            return { 0, 0, 0 };
        if (nByte < 0xE0)
            return { 1, 0x80, 0xBF };
        if (nByte < 0xF0)
            return { 2, static_cast<BYTE>(nByte == 0xE0 ? 0xA0 : 0x80),
                     static_cast<BYTE>(nByte == 0xED ? 0x9F : 0xBF) };
        return { 3, static_cast<BYTE>(nByte == 0xF0 ? 0x90 : 0x80), static_cast<BYTE>(nByte == 0xF4 ? 0x8F : 0xBF) };
    }
};

/// The character at i, which goes behind it, or behind the longest beginning of one when there is none.
/// @return whether there was one.
inline bool DecodeUtf8Character(std::string_view text, size_t& i, uint32_t& nCode)
{
    const auto nByte = static_cast<BYTE>(text[i++]);
    const CUtf8Lead lead = CUtf8Lead::Of(nByte);
    nCode = nByte < 0x80 ? nByte : nByte & (0x3Fu >> lead.nMore);
    unsigned nMissing = lead.nMore;
    for (BYTE nMin = lead.nFirstMin, nMax = lead.nFirstMax; nMissing > 0 && i < text.size(); --nMissing, ++i)
    {
        const auto nNext = static_cast<BYTE>(text[i]);
        if (nNext < nMin || nNext > nMax)
            break;
        nCode = nCode << 6 | (nNext & 0x3Fu);
        nMin = 0x80;
        nMax = 0xBF;
    }
    return nMissing == 0 && (nByte < 0x80 || lead.nMore > 0);
}

/// Hands each unit to put. What is not UTF-8 becomes U+FFFD, one for the longest beginning of a character.
/// @return whether all of it was UTF-8.
template <class Put>
bool DecodeUtf8(std::string_view text, Put&& put)
{
    bool bValid = true;
    for (size_t i = 0; i < text.size();)
    {
        uint32_t nCode = static_cast<BYTE>(text[i]);
        if (nCode < 0x80)
        {
            put(static_cast<wchar_t>(nCode));
            ++i;
            continue;
        }
        if (!DecodeUtf8Character(text, i, nCode))
        {
            bValid = false;
            nCode = ReplacementUnit;
        }
        if (nCode < 0x10000)
        {
            put(static_cast<wchar_t>(nCode));
            continue;
        }
        put(static_cast<wchar_t>(0xD7C0 + (nCode >> 10)));
        put(static_cast<wchar_t>(0xDC00 + (nCode & 0x3FF)));
    }
    return bValid;
}

/// Hands each byte to put. A lone surrogate, or a value that is no unit, becomes U+FFFD.
/// @return whether all of it was UTF-16.
template <class Put>
bool EncodeUtf8(std::wstring_view text, Put&& put)
{
    bool bValid = true;
    for (size_t i = 0; i < text.size(); ++i)
    {
        auto nCode = static_cast<uint32_t>(text[i]);
        if (IsHighSurrogate(text[i]) && i + 1 < text.size() && IsLowSurrogate(text[i + 1]))
            nCode = ((nCode - 0xD7C0) << 10) + (static_cast<uint32_t>(text[++i]) - 0xDC00);
        else if (IsHighSurrogate(text[i]) || IsLowSurrogate(text[i]) || nCode > 0xFFFF)
        {
            bValid = false;
            nCode = ReplacementUnit;
        }
        if (nCode < 0x80)
        {
            put(static_cast<char>(nCode));
            continue;
        }
        const unsigned nMore = nCode < 0x800 ? 1 : nCode < 0x10000 ? 2 : 3;
        put(static_cast<char>((0xF00u >> (nMore + 1) & 0xF0u) | nCode >> 6 * nMore));
        for (unsigned n = nMore; n-- > 0;)
            put(static_cast<char>(0x80u | (nCode >> 6 * n & 0x3Fu)));
    }
    return bValid;
}

} // namespace OvPlatform
