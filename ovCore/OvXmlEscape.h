// Escaping of texts for XML attribute values and element content.
#pragma once

#include "ovCore/OvEvidence.h"
#include "OvPlatform.h"

#include <cstddef>
#include <string>

/// EscapeXML escapes quotes and apostrophes too.
inline constexpr DWORD ESCAPE_ATTRIBUTE = 1;

/// Escapes UTF-16 text to printable ASCII: markup characters become entities; control characters, DEL and whatever is
/// not ASCII become hexadecimal references, a surrogate pair one for both units. Safe on any thread.
/// @param pIn    the text, not null, nIn units; zeros in it are escaped like other control characters.
/// @param pOut   room for nOut units, or null to count only. Each unit's output is written whole or not at all, the
///               first that does not fit ends the writing, and no terminating zero is added.
/// @param dwFlags  0 or ESCAPE_ATTRIBUTE.
/// @return the units that the whole escaped text needs; 0 when pOut was given and they did not fit.
/// Raises the COM error E_FAIL for a null pIn, std::bad_alloc when the length goes beyond the address space.
size_t EscapeXML(const wchar_t* pIn, size_t nIn, wchar_t* pOut, size_t nOut, DWORD dwFlags);

/// How many units at the start of a text are not changed by escaping with ESCAPE_ATTRIBUTE. Safe on any thread.
size_t CleanUnits(const wchar_t* pIn, size_t nIn);

/// Escaping with a buffer of its own, which is wiped before it is freed.
class COvXmlEscape
{
public:
    COvXmlEscape() = delete;

    /// The escaped text; quotes are escaped too. Safe on any thread.
    /// Raises COvException E_FAIL when there is not enough memory; the input stands in its evidence.
    static std::wstring Escape(const std::wstring& strToEncode);

    /// Raises what Escape does without memory, for the writer, which needs memory for the result too.
    /// @param input  the item "strToEncode". Making it needs no memory to succeed: this is called in handlers.
    [[noreturn]] static void RaiseNotEscaped(const COvEvidence& input);
};
