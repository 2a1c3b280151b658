// Files, as far as their existence is asked for.
//
// One rule maps names: what the host's system calls /a/b is shown as Z:\a\b. A name that is taken may have either kind
// of separator and any drive letter, each of which stands for the one root; behind "\\?\" only backslashes separate.
// Names on other computers (\\server\share) do not exist here (ERROR_BAD_NETPATH). Letter case counts, unlike on
// Windows.
#pragma once

#include "Platform/Types.h"

constexpr DWORD FILE_SHARE_READ = 0x00000001;
constexpr DWORD FILE_SHARE_WRITE = 0x00000002;
constexpr DWORD FILE_SHARE_DELETE = 0x00000004;
constexpr DWORD OPEN_EXISTING = 3;
constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x00000080;
constexpr DWORD FILE_FLAG_NO_BUFFERING = 0x20000000;

extern "C"
{
    /// Opens an existing file for reading. A directory answers ERROR_ACCESS_DENIED, a missing file
    /// ERROR_FILE_NOT_FOUND, one in a missing folder ERROR_PATH_NOT_FOUND, one that is open in this process without
    /// FILE_SHARE_READ ERROR_SHARING_VIOLATION.
    /// @param dwAccess  GENERIC_READ; @param dwDisposition  OPEN_EXISTING; @param dwFlags  FILE_ATTRIBUTE_NORMAL or
    ///        FILE_FLAG_NO_BUFFERING, or 0; @param hTemplate  null. Anything else: ERROR_INVALID_PARAMETER.
    /// @return a handle to close, or INVALID_HANDLE_VALUE.
    OVPLATFORM_API HANDLE WINAPI CreateFileW(LPCWSTR szName, DWORD dwAccess, DWORD dwShare,
                                             LPSECURITY_ATTRIBUTES pAttributes, DWORD dwDisposition, DWORD dwFlags,
                                             HANDLE hTemplate);

    /// @param nUnits  room in szBuffer.
    /// @return units written without the NUL; when there is too little room, the units needed with the NUL; 0 when it
    /// fails.
    OVPLATFORM_API DWORD WINAPI GetCurrentDirectoryW(DWORD nUnits, LPWSTR szBuffer);
}
