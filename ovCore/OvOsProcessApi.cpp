#include "ovCore/OvOsProcessApi.h"

#include "ovCore/OvException.h"
#include "ovCore/OVOsVersion.h"
#include "ovCore/OvPSProcessApi.h"
#include "ovCore/OvStackTrace.h"
#include "ovCore/OvSysInfoProcessApi.h"
#include "ovCore/OvToolHelpProcessApi.h"
#include "OvHandleT.h"

#include <new>

namespace
{

const wchar_t s_szSource[] = L"ovCore\\OvOsProcessApi";

COvEvidence Unsupported(const wchar_t* szMessage, LONG nFlavour)
{
    return COvEvidence(L"Info Msg", szMessage) + COvEvidence(L"(long)ePlatform", nFlavour);
}

/// Null without memory.
COvOsProcessApi* NewApi(const COVOsVersion& version, bool (*pEnablePrivilege)())
{
    const LONG nFlavour = version.GetFlavour();
    if (nFlavour <= OsWindows95)
        OvRaise(E_FAIL, s_szSource, __LINE__, Unsupported(L"Unsupported Os", nFlavour));
    if (version.IsPlatform9xBased())
        return new (std::nothrow) COvToolHelpProcessApi(version.IsPlatformNtBased());
    if (!version.IsPlatformNtBased())
        OvRaise(E_FAIL, s_szSource, __LINE__, Unsupported(L"Unsupported and Unknown Os", nFlavour));
    if (!pEnablePrivilege() && nFlavour < OsVista)
        return new (std::nothrow) COvSysInfoProcessApi;
    return new (std::nothrow) COvPSProcessApi;
}

std::unique_ptr<COvOsProcessApi> MakeRunningSystemsApi()
{
    auto pApi = COvOsProcessApi::MakeApi(COVOsVersion::GetCurrent(), &COvOsProcessApi::EnableDebugPrivilege);
    pApi->Initialize();
    return pApi;
}

} // namespace

COvOsProcessApi& COvOsProcessApi::GetApi()
{
    OV_SCOPE(L"COvOsProcessApi::GetApi");
    static const std::unique_ptr<COvOsProcessApi> s_pApi = MakeRunningSystemsApi();
    return *s_pApi;
}

std::unique_ptr<COvOsProcessApi> COvOsProcessApi::MakeApi(const COVOsVersion& version, bool (*pEnablePrivilege)())
{
    OV_SCOPE(L"COvOsProcessApi::MakeApi");
    std::unique_ptr<COvOsProcessApi> pApi(NewApi(version, pEnablePrivilege));
    if (pApi == nullptr)
        OvRaise(E_FAIL, s_szSource, __LINE__, Unsupported(L"Unable to allocate api pointer", version.GetFlavour()));
    return pApi;
}

bool COvOsProcessApi::EnableDebugPrivilege()
{
    OV_SCOPE(L"COvOsProcessApi::EnableDebugPrivilege");
    HANDLE hToken = nullptr;
    if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY, &hToken))
        return false;
    const COvHandle token(hToken);
    TOKEN_PRIVILEGES privileges = {};
    privileges.PrivilegeCount = 1;
    privileges.Privileges[0].Attributes = SE_PRIVILEGE_ENABLED;
    if (!::LookupPrivilegeValueW(nullptr, L"SeDebugPrivilege", &privileges.Privileges[0].Luid))
        return false;
    // A privilege that the token does not have is no failure of the call: the last error tells.
    return ::AdjustTokenPrivileges(hToken, FALSE, &privileges, 0, nullptr, nullptr) &&
           ::GetLastError() == static_cast<DWORD>(ERROR_SUCCESS);
}
