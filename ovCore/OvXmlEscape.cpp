#include "OvXmlEscape.h"

#include "OvException.h"
#include "OvStackTrace.h"
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

/// Copies a text piece by piece, each looked through just before, so that a long one goes through the cache once.
/// @return whether there is nothing in it to escape; else the copy is of no use.
bool CopyWhileClean(std::wstring_view text, std::wstring& strCopy)
{
    constexpr size_t PIECE = 4096;
    for (size_t nDone = 0; nDone < text.size(); nDone += PIECE)
    {
        const std::wstring_view piece = text.substr(nDone, PIECE);
        if (LengthOf(piece) != piece.size()) // whatever is escaped becomes longer
            return false;
        strCopy.reserve(text.size());
        strCopy.append(piece);
    }
    return true;
}

/// Escapes in a buffer of the input's length times a factor, plus 1. The factor and the count of attempts go up
/// together from the least factor on; the attempts that are known to be too small for nEscaped units count as made.
std::wstring EscapeInAttempts(const std::wstring& strToEncode, size_t nEscaped)
{
    const size_t nLength = strToEncode.size();
    size_t nFactor = std::max(MIN_FACTOR, (nEscaped - 1 + nLength - 1) / nLength);
    LONG iNumAttempts = static_cast<LONG>(nFactor - MIN_FACTOR);
    for (;;)
    {
        COvBufferT<wchar_t> buffer;
        buffer.Resize(nLength * nFactor + 1);
        ++nFactor;
        ++iNumAttempts;
        const size_t n = EscapeXML(strToEncode.data(), nLength, buffer.Data(), buffer.Size(), ESCAPE_ATTRIBUTE);
        if (iNumAttempts >= MAX_ATTEMPTS)
            OvRaise(E_FAIL, s_szSource, __LINE__,
                    COvEvidence(L"Info Msg", L"FAILED to allocate enough memory after max attempts") +
                        COvEvidence(L"Method", L"EscapeXML") + COvEvidence(L"strToEncode", strToEncode) +
                        COvEvidence(L"iNumAttempts", iNumAttempts));
        if (n != 0)
            return std::wstring(buffer.Data(), n);
    }
}

} // namespace

std::wstring COvXmlEscape::Escape(const std::wstring& strToEncode)
{
    COvStackTraceScope scope(L"COvXmlEscape::Escape", s_szSource, __LINE__, COvStackTrace::Get());
    try
    {
        std::wstring strClean;
        if (CopyWhileClean(strToEncode, strClean))
            return strClean;
        strClean = std::wstring(); // gives the memory back
        return EscapeInAttempts(strToEncode, LengthOf(strToEncode));
    }
    catch (const COvBaseException&)
    {
        throw;
    }
    catch (...)
    {
        OvRaise(E_FAIL, s_szSource, __LINE__,
                COvEvidence(L"Msg", L"A Win32 API call failed.") + COvEvidence(L"Method", L"EscapeXML") +
                    COvEvidence(L"strToEncode", strToEncode));
    }
}
