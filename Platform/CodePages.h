// Conversion between code pages and UTF-16. Wide texts are counted in UTF-16 units, one per wchar_t.
#pragma once

#include "Platform/Types.h"

constexpr UINT CP_ACP = 0;        ///< the ANSI code page: 1252 unless Control changes it
constexpr UINT CP_THREAD_ACP = 3; ///< the same here
constexpr UINT CP_UTF8 = 65001;
constexpr DWORD MB_PRECOMPOSED = 0x00000001;
constexpr DWORD MB_ERR_INVALID_CHARS = 0x00000008;
constexpr DWORD WC_ERR_INVALID_CHARS = 0x00000080;
constexpr DWORD WC_NO_BEST_FIT_CHARS = 0x00000400;

extern "C"
{
    /// Bytes of a code page to UTF-16 units.
    ///
    /// Bytes that the page does not define lose no other character: 0x80 to 0x9F become the control characters of the
    /// same value, others the page's replacement (U+FFFD in UTF-8 and in single-byte pages, "?" or U+30FB in
    /// double-byte ones). With MB_ERR_INVALID_CHARS such a byte fails the call with ERROR_NO_UNICODE_TRANSLATION.
    /// @param nBytes  bytes to convert; -1: up to the NUL, which is converted too; 0 fails with
    /// ERROR_INVALID_PARAMETER.
    /// @param nUnits  room in szWide; 0 only counts, and szWide may be null.
    /// @return units written or counted; 0 with ERROR_INSUFFICIENT_BUFFER when there is too little room (what fitted
    /// has
    ///         been written), with ERROR_INVALID_PARAMETER for a code page that is not known or an argument that is
    ///         none.
    OVPLATFORM_API int WINAPI MultiByteToWideChar(UINT nCodePage, DWORD dwFlags, LPCSTR szBytes, int nBytes,
                                                  LPWSTR szWide, int nUnits);

    /// UTF-16 units to bytes of a code page, counted and failing like the above.
    ///
    /// A unit that the page lacks becomes a similar character where the platform has one for the page (1252 only; not
    /// with WC_NO_BEST_FIT_CHARS), else the default character: one for each unit, so two for a surrogate pair. In UTF-8
    /// a lone surrogate becomes U+FFFD, or fails with WC_ERR_INVALID_CHARS.
    /// @param pDefaultChar  null stands for "?"; for UTF-8 it must be null, and so must pbUsedDefault.
    /// @param pbUsedDefault  null, or receives whether the default character was needed.
    OVPLATFORM_API int WINAPI WideCharToMultiByte(UINT nCodePage, DWORD dwFlags, LPCWSTR szWide, int nUnits,
                                                  LPSTR szBytes, int nBytes, LPCSTR pDefaultChar, LPBOOL pbUsedDefault);

    /// The number of the ANSI code page.
    OVPLATFORM_API UINT WINAPI GetACP();
}
