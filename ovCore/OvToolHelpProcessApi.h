// Listing processes through snapshots (9x-based systems).
#pragma once

#include "ovCore/OvDynamicLib.h"
#include "ovCore/OvOsProcessApi.h"

class COvToolHelpProcessApi : public COvOsProcessApi
{
public:
    /// @param bNtBased  the system is NT-based: the debug privilege is enabled, and a process's path is that of its
    ///                  first module; otherwise it is the one that the snapshot names.
    explicit COvToolHelpProcessApi(bool bNtBased);

    void Initialize() override;
    COvProcessCollection GetAllProcesses() const override;

private:
    // The narrow forms of the structures: the names that are looked up are the narrow functions.
    using CreateToolhelp32SnapshotFunction = HANDLE WINAPI(DWORD, DWORD);
    using Process32Function = BOOL WINAPI(HANDLE, tagPROCESSENTRY32*);
    using Module32Function = BOOL WINAPI(HANDLE, tagMODULEENTRY32*);

    std::wstring PathOf(const tagPROCESSENTRY32& entry) const;
    std::wstring FirstModulePath(DWORD dwProcessId) const;

    bool m_bNtBased;
    COvDynamicLib m_lib;
    CreateToolhelp32SnapshotFunction* m_pCreateToolhelp32Snapshot = nullptr;
    Process32Function* m_pProcess32First = nullptr;
    Process32Function* m_pProcess32Next = nullptr;
    Module32Function* m_pModule32First = nullptr;
    Module32Function* m_pModule32Next = nullptr;
};
