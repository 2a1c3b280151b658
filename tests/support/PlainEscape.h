// Escaping written down as plainly as possible, to compare the real one with.
#pragma once

#include <cstdio>
#include <map>
#include <string>

inline std::wstring PlainReference(unsigned nCode, const char* szFormat)
{
    char szText[16];
    const int n = std::snprintf(szText, sizeof(szText), szFormat, nCode);
    return std::wstring(szText, szText + n);
}

inline std::wstring PlainUnit(unsigned c, bool bQuotes)
{
    static const std::map<unsigned, const wchar_t*> s_names = {
        { '&', L"&amp;" }, { '<', L"&lt;" }, { '>', L"&gt;" }, { '"', L"&quot;" }, { '\'', L"&apos;" }
    };
    if (s_names.count(c) != 0 && (bQuotes || (c != '"' && c != '\'')))
        return s_names.at(c);
    return c >= 0x20 && c <= 0x7E ? std::wstring(1, static_cast<wchar_t>(c)) : PlainReference(c, "&#x%04X;");
}

/// Unit by unit, each surrogate with the one behind it in mind.
inline std::wstring PlainEscape(const std::wstring& strText, bool bQuotes = true)
{
    std::wstring strResult;
    for (size_t i = 0; i < strText.size(); ++i)
    {
        const unsigned c = static_cast<unsigned>(strText[i]);
        const unsigned nNext = i + 1 < strText.size() ? static_cast<unsigned>(strText[i + 1]) : 0;
        const bool bPair = c >= 0xD800 && c <= 0xDBFF && nNext >= 0xDC00 && nNext <= 0xDFFF;
        strResult += bPair ? PlainReference((c - 0xD800) * 0x400 + (nNext - 0xDC00) + 0x10000, "&#x%06X;")
                           : PlainUnit(c, bQuotes);
        i += bPair ? 1 : 0;
    }
    return strResult;
}
