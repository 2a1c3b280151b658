// Access tokens, privileges and security identifiers (SIDs).
//
// One rule names users: the user of number n, the superuser (0) among them, is S-1-22-1-n.
#pragma once

#include "Platform/Types.h"

constexpr DWORD TOKEN_QUERY = 0x0008;
constexpr DWORD TOKEN_ADJUST_PRIVILEGES = 0x0020;
constexpr DWORD TOKEN_ALL_ACCESS = 0x000F01FF;
constexpr DWORD SE_PRIVILEGE_ENABLED = 0x00000002;

using PSID = void*;

struct SID_IDENTIFIER_AUTHORITY
{
    BYTE Value[6]; ///< a number, its highest byte first
};
using PSID_IDENTIFIER_AUTHORITY = SID_IDENTIFIER_AUTHORITY*;

struct SID
{
    BYTE Revision;
    BYTE SubAuthorityCount;
    SID_IDENTIFIER_AUTHORITY IdentifierAuthority;
    DWORD SubAuthority[1]; ///< as many as SubAuthorityCount says
};
constexpr BYTE SID_REVISION = 1;
constexpr BYTE SID_MAX_SUB_AUTHORITIES = 15;

struct SID_AND_ATTRIBUTES
{
    PSID Sid;
    DWORD Attributes;
};

struct TOKEN_USER
{
    SID_AND_ATTRIBUTES User;
};

struct LUID_AND_ATTRIBUTES
{
    LUID Luid;
    DWORD Attributes;
};

struct TOKEN_PRIVILEGES
{
    DWORD PrivilegeCount;
    LUID_AND_ATTRIBUTES Privileges[1]; ///< as many as PrivilegeCount says
};

enum TOKEN_INFORMATION_CLASS : DWORD
{
    TokenUser = 1
};

extern "C"
{
    /// Opens the token of a process, whose handle needs PROCESS_QUERY_INFORMATION.
    /// @param phToken  receives a handle to close; null when it fails.
    OVPLATFORM_API BOOL WINAPI OpenProcessToken(HANDLE hProcess, DWORD dwAccess, PHANDLE phToken);

    /// Reads the token's user as a TOKEN_USER whose SID stands behind it in the same block.
    /// @param infoClass  TokenUser; anything else: ERROR_INVALID_PARAMETER.
    /// @param dwLength   room in bytes. @param pdwNeeded  receives the bytes needed; with too little room the error is
    ///                   ERROR_INSUFFICIENT_BUFFER.
    OVPLATFORM_API BOOL WINAPI GetTokenInformation(HANDLE hToken, TOKEN_INFORMATION_CLASS infoClass, LPVOID pInfo,
                                                   DWORD dwLength, PDWORD pdwNeeded);

    /// @param szSystem  null: this system. @param szName  "SeDebugPrivilege", in any letter case; others:
    /// ERROR_NO_SUCH_PRIVILEGE.
    OVPLATFORM_API BOOL WINAPI LookupPrivilegeValueW(LPCWSTR szSystem, LPCWSTR szName, LUID* pLuid);

    /// Enables or disables privileges of a token. The superuser's processes have the debug privilege, others have none.
    /// @return TRUE also when the token lacks one: the last error is then ERROR_NOT_ALL_ASSIGNED, otherwise 0.
    /// @param bDisableAll, pNewState, dwLength, pPrevious, pdwNeeded  FALSE, not null, any, null, null; anything else:
    ///        ERROR_INVALID_PARAMETER.
    OVPLATFORM_API BOOL WINAPI AdjustTokenPrivileges(HANDLE hToken, BOOL bDisableAll, TOKEN_PRIVILEGES* pNewState,
                                                     DWORD dwLength, TOKEN_PRIVILEGES* pPrevious, PDWORD pdwNeeded);

    // Parts of a SID; the pointers point into it. IsValidSid looks at the revision and the count alone.
    OVPLATFORM_API BOOL WINAPI IsValidSid(PSID pSid);
    OVPLATFORM_API PSID_IDENTIFIER_AUTHORITY WINAPI GetSidIdentifierAuthority(PSID pSid);
    OVPLATFORM_API BYTE* WINAPI GetSidSubAuthorityCount(PSID pSid);
    OVPLATFORM_API PDWORD WINAPI GetSidSubAuthority(PSID pSid, DWORD nIndex);
}
