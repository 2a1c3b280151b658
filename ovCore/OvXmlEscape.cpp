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

/// A part of a text in which there is something to escape: its length as it is, and escaped.
struct CDirtyPart
{
    size_t nUnits = 0; ///< 0: there is none
    size_t nEscaped = 0;
};

/// Copies a text piece by piece, each looked through just before, so that a long one goes through the cache once.
/// @return the first piece in which there is something to escape, after which the copy is of no use.
CDirtyPart CopyWhileClean(std::wstring_view text, std::wstring& strCopy)
{
    constexpr size_t PIECE = 4096;
    for (size_t nDone = 0; nDone < text.size(); nDone += PIECE)
    {
        const std::wstring_view piece = text.substr(nDone, PIECE);
        const size_t nEscaped = LengthOf(piece);
        if (nEscaped != piece.size()) // whatever is escaped becomes longer
            return { piece.size(), nEscaped };
        strCopy.reserve(text.size());
        strCopy.append(piece);
    }
    return {};
}

/// The factor of the first attempt that is worth its while: the least one if it does for a part of the text, else the
/// one that does for the whole.
size_t FirstFactor(std::wstring_view text, const CDirtyPart& part)
{
    if (part.nEscaped <= part.nUnits * MIN_FACTOR)
        return MIN_FACTOR;
    const size_t nEscaped = part.nUnits == text.size() ? part.nEscaped : LengthOf(text);
    return std::max(MIN_FACTOR, (nEscaped - 1 + text.size() - 1) / text.size());
}

/// Escapes in a buffer of the input's length times a factor, plus 1. The factor and the count of attempts go up
/// together from the least factor on, and so those below nFactor count as made.
std::wstring EscapeInAttempts(const std::wstring& strToEncode, size_t nFactor)
{
    const size_t nLength = strToEncode.size();
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
        const CDirtyPart part = CopyWhileClean(strToEncode, strClean);
        if (part.nUnits == 0)
            return strClean;
        strClean = std::wstring(); // gives the memory back
        return EscapeInAttempts(strToEncode, FirstFactor(strToEncode, part));
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
