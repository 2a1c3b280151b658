// Escaping written down as plainly as possible, to compare the real one with.
#pragma once

#include <cstdio>
#include <string>

inline std::wstring PlainReference(unsigned nCode, const char* szFormat)
{
    char szText[16];
    const int n = std::snprintf(szText, sizeof(szText), szFormat, nCode);
    return std::wstring(szText, szText + n);
}

inline std::wstring PlainUnit(unsigned c, bool bQuotes)
{
    if (c == '"' && bQuotes)
        return L"&quot;";
    if (c == '\'' && bQuotes)
        return L"&apos;";
    if (c == '&')
        return L"&amp;";
    if (c == '<')
        return L"&lt;";
    if (c == '>')
        return L"&gt;";
    return c >= 0x20 && c <= 0x7E ? std::wstring(1, static_cast<wchar_t>(c)) : PlainReference(c, "&#x%04X;");
}

/// Unit by unit, with one pending high surrogate.
inline std::wstring PlainEscape(const std::wstring& strText, bool bQuotes = true)
{
    std::wstring strResult;
    unsigned nPending = 0;
    for (const wchar_t unit : strText)
    {
        const unsigned c = static_cast<unsigned>(unit);
        if (nPending != 0 && c >= 0xDC00 && c <= 0xDFFF)
        {
            strResult += PlainReference((nPending - 0xD800) * 0x400 + (c - 0xDC00) + 0x10000, "&#x%06X;");
            nPending = 0;
            continue;
        }
        if (nPending != 0)
            strResult += PlainReference(nPending, "&#x%04X;");
        nPending = c >= 0xD800 && c <= 0xDBFF ? c : 0;
        if (nPending == 0)
            strResult += PlainUnit(c, bQuotes);
    }
    return nPending != 0 ? strResult + PlainReference(nPending, "&#x%04X;") : strResult;
}
