#include "ovCore/OvStringUtil.h"

#include "ovCore/OvException.h"
#include "ovCore/OvStackTrace.h"

#include <algorithm>
#include <climits>
#include <string_view>

namespace
{

const wchar_t s_szSource[] = L"ovCore\\OvStringUtil";

/// Asks for the size that the narrow text takes.
int NarrowSize(std::wstring_view s, int nLength)
{
    const int nSize = ::WideCharToMultiByte(CP_ACP, 0, s.data(), nLength, nullptr, 0, nullptr, nullptr);
    if (nSize < 0)
        throw COvStdException("iBufferSize < 0");
    if (nSize == 0)
        throw COvStdException("WideCharToMultiByte");
    return nSize;
}

/// The next size to try when the announced one was too small.
int LargerSize(int nSize)
{
    if (nSize == INT_MAX)
        throw COvStdException("iBufferSize == INT_MAX");
    return nSize > (INT_MAX - 2) / 2 ? INT_MAX : nSize * 2 + 2;
}

std::wstring Widen(std::string_view s, UINT nCodePage)
{
    if (s.empty())
        return std::wstring();
    if (s.length() > static_cast<size_t>(INT_MAX))
        throw COvStdException("szSrc.length() > static_cast<unsigned>(INT_MAX)");

    const int nLength = static_cast<int>(s.length());
    const int nSize = ::MultiByteToWideChar(nCodePage, 0, s.data(), nLength, nullptr, 0);
    if (nSize < 0)
        throw COvStdException("iBufferSize < 0");
    if (nSize == 0)
        throw COvStdException("MultiByteToWideChar");

    std::wstring result(static_cast<size_t>(nSize), L'\0');
    if (::MultiByteToWideChar(nCodePage, 0, s.data(), nLength, result.data(), nSize) <= 0)
        throw COvStdException("iBufferSize <= 0");
    return result;
}

template <class Char>
std::basic_string<Char> FindReplaceT(const Char* szFind, const Char* szReplace, const Char* szSource, LONG* pnCount)
{
    OV_SCOPE(L"FindReplaceT");
    const auto view = [](const Char* szText) {
        return szText == nullptr ? std::basic_string_view<Char>() : std::basic_string_view<Char>(szText);
    };
    const auto find = view(szFind);
    const auto replace = view(szReplace);
    const auto source = view(szSource);

    LONG nCount = 0;
    size_t nPos = 0;
    std::basic_string<Char> result;
    if (!find.empty())
        for (size_t nHit; (nHit = source.find(find, nPos)) != source.npos; nPos = nHit + find.length(), ++nCount)
            result.append(source, nPos, nHit - nPos).append(replace);
    result.append(source, nPos);

    if (pnCount != nullptr)
        *pnCount = nCount;
    return result;
}

_variant_t ChangedVariant(const VARIANT& vSrc, VARTYPE vtNew, USHORT nFlags)
{
    _variant_t copy(vSrc);
    _variant_t result;
    const HRESULT hr = ::VariantChangeType(&result, &copy, nFlags, vtNew);
    if (FAILED(hr))
        OvRaise(hr, s_szSource, __LINE__,
                COvEvidence(L"Msg", L"A Win32 API call failed.") + COvEvidence(L"Info Msg", L"VariantChangeType") +
                    COvEvidence(L"vSrc.vt", static_cast<LONG>(vSrc.vt)) +
                    COvEvidence(L"vtNew", static_cast<LONG>(vtNew)) +
                    COvEvidence(L"nFlags", static_cast<LONG>(nFlags)) + COvEvidence(L"hr", hr, true));
    return result;
}

bool IsAsciiUpper(wchar_t c)
{
    return c >= L'A' && c <= L'Z';
}

bool IsAsciiLower(wchar_t c)
{
    return c >= L'a' && c <= L'z';
}

bool IsAsciiDigit(wchar_t c)
{
    return c >= L'0' && c <= L'9';
}

bool IsAsciiHexDigit(wchar_t c)
{
    return IsAsciiDigit(c) || (c >= L'a' && c <= L'f') || (c >= L'A' && c <= L'F');
}

} // namespace

std::string COvStringUtil::WideToNarrow(std::wstring_view s)
{
    if (s.empty())
        return std::string();
    if (s.length() > static_cast<size_t>(INT_MAX))
        throw COvStdException("s.length() > static_cast<unsigned>(INT_MAX)");

    const int nLength = static_cast<int>(s.length());
    for (int nSize = NarrowSize(s, nLength);; nSize = LargerSize(nSize))
    {
        std::string buffer(static_cast<size_t>(nSize), '\0');
        const int nWritten =
            ::WideCharToMultiByte(CP_ACP, 0, s.data(), nLength, buffer.data(), nSize, nullptr, nullptr);
        if (nWritten < 0)
            throw COvStdException("iActualBufferSize < 0");
        if (nWritten > 0 || ::GetLastError() != ERROR_INSUFFICIENT_BUFFER)
        {
            buffer.resize(static_cast<size_t>(nWritten));
            return buffer;
        }
    }
}

std::string COvStringUtil::WideToNarrow(const wchar_t* s)
{
    return s == nullptr ? std::string() : WideToNarrow(std::wstring_view(s));
}

std::wstring COvStringUtil::NarrowToWide(const std::string& s)
{
    return Widen(s, CP_ACP);
}

std::wstring COvStringUtil::NarrowToWide(const char* s)
{
    return s == nullptr ? std::wstring() : Widen(s, CP_ACP);
}

std::wstring COvStringUtil::NarrowToWide(const std::string& s, UINT nCodePage)
{
    return Widen(s, nCodePage);
}

std::wstring COvStringUtil::FindReplace(const wchar_t* szFind, const wchar_t* szReplace, const wchar_t* szSource,
                                        LONG* pnCount)
{
    OV_SCOPE(L"COvStringUtil::FindReplace");
    return FindReplaceT(szFind, szReplace, szSource, pnCount);
}

bool COvStringUtil::IsNumeric(std::wstring_view s, bool bLeadingOnly)
{
    OV_SCOPE(L"COvStringUtil::IsNumeric");
    if (s.empty())
        return false;

    const bool bHex = s.size() > 1 && s[0] == L'0' && (s[1] == L'x' || s[1] == L'X');
    const auto isDigit = bHex ? IsAsciiHexDigit : IsAsciiDigit;
    const auto first = s.begin() + (bHex ? 2 : 0);
    return (bLeadingOnly && first != s.end() && isDigit(*first)) || std::all_of(first, s.end(), isDigit);
}

_variant_t COvStringUtil::VariantChangeType(const VARIANT& vSrc, VARTYPE vtNew, USHORT nFlags)
{
    OV_SCOPE(L"COvStringUtil::VariantChangeType");
    return vSrc.vt == vtNew ? _variant_t(vSrc) : ChangedVariant(vSrc, vtNew, nFlags);
}

std::wstring COvStringUtil::ToLower(const std::wstring& s)
{
    std::wstring lower = s;
    for (wchar_t& c : lower)
        c = IsAsciiUpper(c) ? static_cast<wchar_t>(c - L'A' + L'a') : c;
    return lower;
}

std::wstring COvStringUtil::ToUpper(const std::wstring& s)
{
    std::wstring upper = s;
    for (wchar_t& c : upper)
        c = IsAsciiLower(c) ? static_cast<wchar_t>(c - L'a' + L'A') : c;
    return upper;
}

std::wstring COvStringUtil::TrimLeft(std::wstring& s, wchar_t c)
{
    s.erase(0, s.find_first_not_of(c));
    return s;
}

std::wstring COvStringUtil::LongToString(LONG n, int nRadix)
{
    constexpr size_t nMaxText = 24; // what the platform's conversion puts into its buffer of 25
    if (nRadix < 2 || nRadix > 36)
        return std::wstring();

    const bool bMinus = nRadix == 10 && n < 0;
    const uint32_t nBits = static_cast<uint32_t>(n);
    const uint32_t nBase = static_cast<uint32_t>(nRadix);
    std::wstring text;
    for (uint32_t nRest = bMinus ? 0u - nBits : nBits; nRest != 0 || text.empty(); nRest /= nBase)
        text += L"0123456789abcdefghijklmnopqrstuvwxyz"[nRest % nBase];
    if (bMinus)
        text += L'-';
    if (text.length() > nMaxText)
        return std::wstring();
    return std::wstring(text.rbegin(), text.rend());
}

std::wstring COvStringUtil::FromBSTR(const COvBstr& str)
{
    return str.IsNull() ? std::wstring() : std::wstring(str.Get(), ::SysStringLen(str.Get()));
}

const wchar_t* COvStringUtil::FileNameOf(const wchar_t* szPath) noexcept
{
    if (szPath == nullptr)
        return nullptr;
    const size_t nBackslash = std::wstring_view(szPath).rfind(L'\\');
    return nBackslash == std::wstring_view::npos ? szPath : szPath + nBackslash + 1;
}
