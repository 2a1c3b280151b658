#include "ovCore/OvXmlEscape.h"

#include "ovCore/OvException.h"
#include "ovCore/OvStackTrace.h"
#include "OVTemplates.h"

#include <algorithm>
#include <string_view>

namespace
{

const wchar_t s_szSource[] = L"ovCore\\OvXmlDocument";
constexpr size_t MIN_FACTOR = 2;
constexpr LONG MAX_ATTEMPTS = 10;

size_t LengthOf(std::wstring_view text)
{
    return EscapeXML(text.data(), text.size(), nullptr, 0, ESCAPE_ATTRIBUTE);
}

/// The least factor that does for the text.
size_t FactorFor(std::wstring_view text)
{
    return std::max(MIN_FACTOR, (LengthOf(text) - 1 + text.size() - 1) / text.size());
}

/// The factor of the first attempt: the least one if it does for what begins at the first place to escape.
size_t FirstFactor(std::wstring_view text, size_t nDirty)
{
    constexpr size_t SAMPLE = 256;
    return FactorFor(text.substr(nDirty, SAMPLE)) == MIN_FACTOR ? MIN_FACTOR : FactorFor(text);
}

/// Escapes in a buffer of the input's length times a factor, plus 1. The factor and the count of attempts go up
/// together from the least factor on, and so those that are left out count as made.
std::wstring EscapeInAttempts(const std::wstring& strToEncode, size_t nFactor)
{
    const size_t nLength = strToEncode.size();
    for (;;)
    {
        COvBufferT<wchar_t> buffer;
        buffer.Resize(nLength * nFactor + 1);
        ++nFactor;
        const LONG iNumAttempts = static_cast<LONG>(nFactor - MIN_FACTOR);
        const size_t n = EscapeXML(strToEncode.data(), nLength, buffer.Data(), buffer.Size(), ESCAPE_ATTRIBUTE);
        if (iNumAttempts >= MAX_ATTEMPTS)
            OvRaise(E_FAIL, s_szSource, __LINE__,
                    COvEvidence(L"Info Msg", L"FAILED to allocate enough memory after max attempts") +
                        COvEvidence(L"Method", L"EscapeXML") + COvEvidence(L"strToEncode", strToEncode) +
                        COvEvidence(L"iNumAttempts", iNumAttempts));
        if (n != 0)
            return std::wstring(buffer.Data(), n);
        nFactor = std::max(nFactor, FactorFor(strToEncode));
    }
}

} // namespace

std::wstring COvXmlEscape::Escape(const std::wstring& strToEncode)
{
    OV_SCOPE(L"COvXmlEscape::Escape");
    try
    {
        const size_t nDirty = CleanUnits(strToEncode.data(), strToEncode.size());
        if (nDirty == strToEncode.size())
            return strToEncode;
        return EscapeInAttempts(strToEncode, FirstFactor(strToEncode, nDirty));
    }
    catch (const COvBaseException&)
    {
        throw;
    }
    catch (...)
    {
        RaiseNotEscaped(COvEvidence(L"strToEncode", strToEncode));
    }
}

void COvXmlEscape::RaiseNotEscaped(const COvEvidence& input)
{
    OvRaise(E_FAIL, s_szSource, __LINE__,
            COvEvidence(L"Msg", L"A Win32 API call failed.") + COvEvidence(L"Method", L"EscapeXML") + input);
}
