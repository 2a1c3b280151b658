#include "ovCore/OvPSProcessApi.h"

#include "ovCore/OvException.h"
#include "ovCore/OvStackTrace.h"
#include "OvHandleT.h"

#include <vector>

namespace
{

const wchar_t s_szSource[] = L"ovCore\\OvOsProcessApi";

const wchar_t s_szUnknownPath[] = L"System";
constexpr DWORD MAX_PATH_UNITS = 4000;

} // namespace

COvPSProcessApi::COvPSProcessApi()
{
    OV_SCOPE(L"COvPSProcessApi::COvPSProcessApi");
    EnableDebugPrivilege();
}

void COvPSProcessApi::Initialize()
{
    OV_SCOPE(L"COvPSProcessApi::Initialize");
    constexpr bool bThrow = true;
    m_lib.Init(L"PSAPI.DLL", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32, bThrow);
    m_pEnumProcesses = m_lib.GetProc<EnumProcessesFunction>(L"EnumProcesses", bThrow);
    m_pEnumProcessModules = m_lib.GetProc<EnumProcessModulesFunction>(L"EnumProcessModules", bThrow);
    m_pGetModuleFileNameEx = m_lib.GetProc<GetModuleFileNameExFunction>(L"GetModuleFileNameExW", bThrow);
}

COvProcessCollection COvPSProcessApi::GetAllProcesses() const
{
    OV_SCOPE(L"COvPSProcessApi::GetAllProcesses");
    std::vector<DWORD> ids(MAX_PROCESSES);
    DWORD dwBytes = 0;
    if (!m_pEnumProcesses(ids.data(), MAX_PROCESSES * sizeof(DWORD), &dwBytes))
    {
        const LONG lError = static_cast<LONG>(::GetLastError());
        OvRaise(E_FAIL, s_szSource, __LINE__,
                COvEvidence(L"Method", L"EnumProcesses") + COvEvidence(L"Win32 GetLastError", lError, true));
    }
    const DWORD dwProcesses = dwBytes / sizeof(DWORD);
    if (dwProcesses > MAX_PROCESSES)
        OvRaise(E_FAIL, s_szSource, __LINE__,
                COvEvidence(L"Info Msg", L"Number of processes exceeds MAX_PROCESSES") +
                    COvEvidence(L"MAX_PROCESSES", MAX_PROCESSES) + COvEvidence(L"dwProcesses", dwProcesses));
    ids.resize(dwProcesses);
    COvProcessCollection processes;
    for (const DWORD dwProcessId : ids)
        if (dwProcessId != 0)
            processes.AddProcess(PathOf(dwProcessId), dwProcessId);
    return processes;
}

std::wstring COvPSProcessApi::PathOf(DWORD dwProcessId) const
{
    constexpr BOOL bInheritable = FALSE;
    const COvHandle process(::OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, bInheritable, dwProcessId));
    HMODULE hModule = nullptr;
    DWORD dwNeeded = 0;
    if (process.Get() == nullptr || !m_pEnumProcessModules(process.Get(), &hModule, sizeof(hModule), &dwNeeded) ||
        dwNeeded < sizeof(hModule))
        return s_szUnknownPath;
    std::vector<wchar_t> path(MAX_PATH_UNITS);
    const DWORD nUnits = m_pGetModuleFileNameEx(process.Get(), hModule, path.data(), MAX_PATH_UNITS);
    if (nUnits == 0)
    {
        const LONG lError = static_cast<LONG>(::GetLastError());
        OvRaise(E_FAIL, s_szSource, __LINE__,
                COvEvidence(L"Msg", L"A Win32 API call failed.") + COvEvidence(L"Method", L"::GetModuleFileNameEx") +
                    COvEvidence(L"Win32 Error", lError, true));
    }
    return std::wstring(path.data(), std::min(nUnits, MAX_PATH_UNITS));
}
