// The system's texts for result codes, in English.
#pragma once

#include "Platform/Types.h"

#include <cstdarg>

constexpr DWORD FORMAT_MESSAGE_ALLOCATE_BUFFER = 0x00000100;
constexpr DWORD FORMAT_MESSAGE_IGNORE_INSERTS = 0x00000200;
constexpr DWORD FORMAT_MESSAGE_FROM_SYSTEM = 0x00001000;

constexpr WORD LANG_NEUTRAL = 0;
constexpr WORD SUBLANG_DEFAULT = 1;
constexpr WORD MAKELANGID(WORD language, WORD sublanguage)
{
    return static_cast<WORD>(sublanguage << 10 | language);
}

extern "C"
{
    /// The text of a Win32 code or of an HRESULT (one of facility 7 has the text of its Win32 code), ended by CR LF.
    /// @param dwFlags  exactly the three above; others are refused with ERROR_INVALID_PARAMETER.
    /// @param pSource, pArguments  null.
    /// @param dwLanguage  neutral or English, else ERROR_RESOURCE_LANG_NOT_FOUND.
    /// @param szBuffer  the address of a pointer that receives the text, to be freed with LocalFree.
    /// @return units without the NUL; 0 with ERROR_MR_MID_NOT_FOUND when the system has no text for the code (it has
    /// none
    ///         for machine faults).
    OVPLATFORM_API DWORD WINAPI FormatMessageW(DWORD dwFlags, LPCVOID pSource, DWORD dwCode, DWORD dwLanguage,
                                               LPWSTR szBuffer, DWORD nSize, va_list* pArguments);
}
