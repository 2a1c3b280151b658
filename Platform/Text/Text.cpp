#include "Platform/Text/Text.h"

#include "Platform/Text/Utf8.h"

#include <algorithm>

namespace OvPlatform
{

namespace
{

wchar_t LowerAscii(wchar_t c)
{
    return c >= L'A' && c <= L'Z' ? c + (L'a' - L'A') : c;
}

} // namespace

std::string Utf8FromWide(std::wstring_view text)
{
    std::string bytes;
    bytes.reserve(text.size());
    EncodeUtf8(text, [&](char c) { bytes += c; });
    return bytes;
}

std::wstring WideFromUtf8(std::string_view text)
{
    std::wstring units(text.size(), L'\0'); // no character has more units than bytes
    wchar_t* pEnd = units.data();
    DecodeUtf8(text, [&](wchar_t nUnit) { *pEnd++ = nUnit; });
    units.resize(static_cast<size_t>(pEnd - units.data()));
    return units;
}

bool EqualsNoCase(std::wstring_view a, std::wstring_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](wchar_t x, wchar_t y) { return LowerAscii(x) == LowerAscii(y); });
}

} // namespace OvPlatform
