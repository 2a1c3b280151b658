// Listing processes through the process status library (NT-based systems).
#pragma once

#include "ovCore/OvDynamicLib.h"
#include "ovCore/OvOsProcessApi.h"

class COvPSProcessApi : public COvOsProcessApi
{
public:
    /// The most processes that are listed.
    static constexpr DWORD MAX_PROCESSES = 3000;

    /// Enables the debug privilege where it can.
    COvPSProcessApi();

    void Initialize() override;
    COvProcessCollection GetAllProcesses() const override;

private:
    using EnumProcessesFunction = BOOL WINAPI(DWORD*, DWORD, DWORD*);
    using EnumProcessModulesFunction = BOOL WINAPI(HANDLE, HMODULE*, DWORD, DWORD*);
    using GetModuleFileNameExFunction = DWORD WINAPI(HANDLE, HMODULE, LPWSTR, DWORD);

    std::wstring PathOf(DWORD dwProcessId) const;

    COvDynamicLib m_lib;
    EnumProcessesFunction* m_pEnumProcesses = nullptr;
    EnumProcessModulesFunction* m_pEnumProcessModules = nullptr;
    GetModuleFileNameExFunction* m_pGetModuleFileNameEx = nullptr;
};
