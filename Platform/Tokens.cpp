#include "Platform/Tokens.h"

#include "Platform/Handles.h"
#include "Platform/Kernel/LastError.h"
#include "Platform/Process/ProcessObject.h"
#include "Platform/Processes.h"
#include "Platform/Text/Text.h"

#include <cstring>
#include <iterator>

namespace OvPlatform
{

namespace
{

constexpr CAccessMap TokenAccess = { READ_CONTROL | TOKEN_QUERY, READ_CONTROL | TOKEN_ADJUST_PRIVILEGES, READ_CONTROL,
                                     TOKEN_ALL_ACCESS };
constexpr LUID DebugPrivilege = { 20, 0 };
constexpr unsigned Superuser = 0;

constexpr SID_IDENTIFIER_AUTHORITY UnixUsersAuthority = { { 0, 0, 0, 0, 0, 22 } };
constexpr DWORD UnixUsersFirstPart = 1;
constexpr BYTE UserSidParts = 2;

/// What a process may do as its user. The user is the one at the time when it was opened.
class CToken final : public CKernelObject
{
public:
    explicit CToken(unsigned nUser) : CKernelObject(TokenAccess), m_nUser(nUser) {}
    unsigned User() const { return m_nUser; }

private:
    const unsigned m_nUser;
};

/// A TOKEN_USER and the SID behind it.
struct CUserInformation
{
    TOKEN_USER user;
    SID sid;
    DWORD dwSecondPart; // continues the SID
};

constexpr DWORD UserInformationSize = offsetof(CUserInformation, dwSecondPart) + sizeof(DWORD);
static_assert(offsetof(CUserInformation, dwSecondPart) == offsetof(CUserInformation, sid) + sizeof(SID));

void WriteUser(unsigned nUser, void* pInfo)
{
    CUserInformation info = {};
    info.user.User.Sid = static_cast<BYTE*>(pInfo) + offsetof(CUserInformation, sid);
    info.sid = { SID_REVISION, UserSidParts, UnixUsersAuthority, { UnixUsersFirstPart } };
    info.dwSecondPart = nUser;
    std::memcpy(pInfo, &info, UserInformationSize);
}

bool HasPrivilege(const CToken& token, const LUID& luid)
{
    return token.User() == Superuser && luid.LowPart == DebugPrivilege.LowPart &&
           luid.HighPart == DebugPrivilege.HighPart;
}

} // namespace

} // namespace OvPlatform

using namespace OvPlatform;

BOOL OpenProcessToken(HANDLE hProcess, DWORD dwAccess, PHANDLE phToken)
{
    *phToken = nullptr;
    return OrNoMemory(FALSE, [&] {
        const auto pProcess = FindObject<CProcessObject>(hProcess, PROCESS_QUERY_INFORMATION);
        if (!pProcess)
            return FALSE;
        CProcessStatus status;
        if (!ReadStatus(pProcess->Files(), status))
            return Fail(ERROR_INVALID_PARAMETER, FALSE);
        *phToken = OpenHandle(std::make_shared<CToken>(status.nUser), dwAccess);
        return TRUE;
    });
}

BOOL GetTokenInformation(HANDLE hToken, TOKEN_INFORMATION_CLASS infoClass, LPVOID pInfo, DWORD dwLength,
                         PDWORD pdwNeeded)
{
    const auto pToken = FindObject<CToken>(hToken, TOKEN_QUERY);
    if (!pToken)
        return FALSE;
    if (infoClass != TokenUser)
        return Fail(ERROR_INVALID_PARAMETER, FALSE);
    *pdwNeeded = UserInformationSize;
    if (pInfo == nullptr || dwLength < UserInformationSize)
        return Fail(ERROR_INSUFFICIENT_BUFFER, FALSE);
    WriteUser(pToken->User(), pInfo);
    return TRUE;
}

BOOL LookupPrivilegeValueW(LPCWSTR szSystem, LPCWSTR szName, LUID* pLuid)
{
    if (szSystem != nullptr)
        return Fail(ERROR_INVALID_PARAMETER, FALSE);
    if (!EqualsNoCase(szName, L"SeDebugPrivilege"))
        return Fail(ERROR_NO_SUCH_PRIVILEGE, FALSE);
    *pLuid = DebugPrivilege;
    return TRUE;
}

BOOL AdjustTokenPrivileges(HANDLE hToken, BOOL bDisableAll, TOKEN_PRIVILEGES* pNewState, DWORD,
                           TOKEN_PRIVILEGES* pPrevious, PDWORD pdwNeeded)
{
    const auto pToken = FindObject<CToken>(hToken, TOKEN_ADJUST_PRIVILEGES);
    if (!pToken)
        return FALSE;
    if (bDisableAll || pNewState == nullptr || pPrevious != nullptr || pdwNeeded != nullptr)
        return Fail(ERROR_INVALID_PARAMETER, FALSE);
    DWORD dwResult = ERROR_SUCCESS;
    for (DWORD i = 0; i < pNewState->PrivilegeCount; ++i)
        if (!HasPrivilege(*pToken, pNewState->Privileges[i].Luid))
            dwResult = ERROR_NOT_ALL_ASSIGNED;
    SetLastError(dwResult);
    return TRUE;
}

BOOL IsValidSid(PSID pSid)
{
    const auto* pHead = static_cast<const SID*>(pSid);
    return pHead != nullptr && pHead->Revision == SID_REVISION && pHead->SubAuthorityCount <= SID_MAX_SUB_AUTHORITIES;
}

PSID_IDENTIFIER_AUTHORITY GetSidIdentifierAuthority(PSID pSid)
{
    return &static_cast<SID*>(pSid)->IdentifierAuthority;
}

BYTE* GetSidSubAuthorityCount(PSID pSid)
{
    return &static_cast<SID*>(pSid)->SubAuthorityCount;
}

PDWORD GetSidSubAuthority(PSID pSid, DWORD nIndex)
{
    BYTE* const pFirst = static_cast<BYTE*>(pSid) + offsetof(SID, SubAuthority);
    return reinterpret_cast<DWORD*>(pFirst) + nIndex;
}
