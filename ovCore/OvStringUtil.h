// String operations that the whole system shares.
#pragma once

#include "ovCore/OvBstr.h"
#include "OvPlatform.h"

#include <string>
#include <string_view>

/// Static operations without state; any thread. Wide texts are UTF-16 units, narrow texts are in the system's ANSI code
/// page unless a code page is named. A failed allocation is let out as std::bad_alloc.
class COvStringUtil
{
public:
    COvStringUtil() = delete;

    /// Wide to narrow. What the code page lacks becomes the system's default character.
    /// An empty or null text gives an empty one; other failures of the conversion throw std::exception with a text.
    static std::string WideToNarrow(std::wstring_view s);
    static std::string WideToNarrow(const wchar_t* s);

    /// Narrow to wide. An empty or null text gives an empty one; failures throw std::exception with a text.
    static std::wstring NarrowToWide(const std::string& s);
    static std::wstring NarrowToWide(const char* s);

    /// Narrow to wide from another code page (CP_THREAD_ACP). Otherwise as above.
    static std::wstring NarrowToWide(const std::string& s, UINT nCodePage);

    /// Replaces each occurrence of szFind, left to right, without looking at replaced text again.
    /// @param szFind     null or empty: the result is the source.
    /// @param szReplace  may be null only where nothing is found.
    /// @param szSource   null or empty: the result is empty.
    /// @param pnCount    receives the number of replacements; may be null.
    static std::wstring FindReplace(const wchar_t* szFind, const wchar_t* szReplace, const wchar_t* szSource,
                                    LONG* pnCount);

    /// Whether the text consists of decimal digits, or of "0x" ("0X") and hexadecimal digits; "0x" alone is numeric.
    /// No sign, blank or point is accepted; an empty text is not numeric.
    /// @param bLeadingOnly  one digit at the front is enough.
    static bool IsNumeric(std::wstring_view s, bool bLeadingOnly);

    /// A copy of the value changed to the type vtNew; a plain copy when it has that type already.
    /// @param nFlags  VARIANT_* flags of the platform's call.
    /// Raises COvException with the platform's code when the value cannot be changed; a failed copy raises a COM error
    /// object (_com_error).
    static _variant_t VariantChangeType(const VARIANT& vSrc, VARTYPE vtNew, USHORT nFlags);

    /// Maps the letters A to Z and nothing else.
    static std::wstring ToLower(const std::wstring& s);
    static std::wstring ToUpper(const std::wstring& s);

    /// Removes every c from the front of s itself. @return a copy of s as it is then.
    static std::wstring TrimLeft(std::wstring& s, wchar_t c);

    /// The number in a radix of 2 to 36, lower-case digits. Radix 10 is signed; any other takes the value's 32 bits as
    /// an unsigned number. An empty text for another radix, or for a text of more than 24 characters (radix 2).
    static std::wstring LongToString(LONG n, int nRadix);

    /// The whole text of a BSTR, embedded NULs included; null gives an empty text.
    static std::wstring FromBSTR(const COvBstr& str);

    /// The part of a path after its last backslash, or the whole path. Points into szPath; null stays null.
    static const wchar_t* FileNameOf(const wchar_t* szPath) noexcept;
};
