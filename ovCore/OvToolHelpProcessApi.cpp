#include "ovCore/OvToolHelpProcessApi.h"

#include "ovCore/OvException.h"
#include "ovCore/OvStackTrace.h"
#include "ovCore/OvStringUtil.h"
#include "OvHandleT.h"

namespace
{

const wchar_t s_szSource[] = L"ovCore\\OvOsProcessApi";

const wchar_t s_szUnknownPath[] = L"System";

} // namespace

COvToolHelpProcessApi::COvToolHelpProcessApi(bool bNtBased) : m_bNtBased(bNtBased)
{
    OV_SCOPE(L"COvToolHelpProcessApi::COvToolHelpProcessApi");
    if (bNtBased)
        EnableDebugPrivilege();
}

void COvToolHelpProcessApi::Initialize()
{
    OV_SCOPE(L"COvToolHelpProcessApi::Initialize");
    constexpr bool bThrow = true;
    m_lib.Init(L"Kernel32.DLL", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32, bThrow);
    m_pCreateToolhelp32Snapshot = m_lib.GetProc<CreateToolhelp32SnapshotFunction>(L"CreateToolhelp32Snapshot", bThrow);
    m_pProcess32First = m_lib.GetProc<Process32Function>(L"Process32First", bThrow);
    m_pProcess32Next = m_lib.GetProc<Process32Function>(L"Process32Next", bThrow);
    m_pModule32First = m_lib.GetProc<Module32Function>(L"Module32First", bThrow);
    m_pModule32Next = m_lib.GetProc<Module32Function>(L"Module32Next", bThrow);
}

COvProcessCollection COvToolHelpProcessApi::GetAllProcesses() const
{
    OV_SCOPE(L"COvToolHelpProcessApi::GetAllProcesses");
    const COvHandle snapshot(m_pCreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    if (!snapshot.IsValid())
    {
        const LONG lError = static_cast<LONG>(::GetLastError());
        OvRaise(E_FAIL, s_szSource, __LINE__,
                COvEvidence(L"Msg", L"A Win32 API call failed.") +
                    COvEvidence(L"Method", L"::CreateToolhelp32Snapshot") + COvEvidence(L"Win32 Error", lError, true));
    }
    COvProcessCollection processes;
    tagPROCESSENTRY32 entry = {};
    entry.dwSize = sizeof(entry);
    for (BOOL bMore = m_pProcess32First(snapshot.Get(), &entry); bMore;
         bMore = m_pProcess32Next(snapshot.Get(), &entry))
        if (entry.th32ProcessID != 0)
            processes.AddProcess(PathOf(entry), entry.th32ProcessID);
    return processes;
}

std::wstring COvToolHelpProcessApi::PathOf(const tagPROCESSENTRY32& entry) const
{
    return m_bNtBased ? FirstModulePath(entry.th32ProcessID) : COvStringUtil::NarrowToWide(entry.szExeFile);
}

std::wstring COvToolHelpProcessApi::FirstModulePath(DWORD dwProcessId) const
{
    const COvHandle snapshot(m_pCreateToolhelp32Snapshot(TH32CS_SNAPMODULE, dwProcessId));
    tagMODULEENTRY32 module = {};
    module.dwSize = sizeof(module);
    if (!snapshot.IsValid() || !m_pModule32First(snapshot.Get(), &module))
        return s_szUnknownPath;
    return COvStringUtil::NarrowToWide(module.szExePath);
}
