// Listing processes: functions of psapi.dll, kernel32.dll and ntdll.dll that are reached through GetProcAddress alone.
#pragma once

#include "Platform/Processes.h"

extern "C"
{
    /// The ids of all processes. @param dwRoom  of pIds in bytes; what does not fit is left out.
    /// @param pdwBytes  receives the bytes written.
    BOOL WINAPI EnumProcesses(DWORD* pIds, DWORD dwRoom, DWORD* pdwBytes);

    /// The modules of a process, the executable first. The handle needs PROCESS_QUERY_INFORMATION and PROCESS_VM_READ.
    /// @param dwRoom  of phModules in bytes. @param pdwNeeded  receives the bytes of all.
    /// ERROR_PARTIAL_COPY for a process without any, or that may not be read.
    BOOL WINAPI EnumProcessModules(HANDLE hProcess, HMODULE* phModules, DWORD dwRoom, DWORD* pdwNeeded);

    /// The path of a module; null: the executable's. A longer one is cut, ended by NUL, and answered with nUnits.
    /// @return units without the NUL; 0 with ERROR_INVALID_HANDLE for what is no module of the process.
    DWORD WINAPI GetModuleFileNameExW(HANDLE hProcess, HMODULE hModule, LPWSTR szPath, DWORD nUnits);

    /// All processes, or the modules of one, as they are now. A snapshot is for one thread at a time.
    /// @param dwFlags      TH32CS_SNAPPROCESS or TH32CS_SNAPMODULE; anything else: ERROR_INVALID_PARAMETER.
    /// @param dwProcessId  whose modules; 0: this process's.
    /// @return a handle to close, or INVALID_HANDLE_VALUE.
    HANDLE WINAPI CreateToolhelp32Snapshot(DWORD dwFlags, DWORD dwProcessId);

    // The entries of a snapshot one by one; FALSE with ERROR_NO_MORE_FILES behind the last one.
    BOOL WINAPI Process32First(HANDLE hSnapshot, tagPROCESSENTRY32* pEntry);
    BOOL WINAPI Process32Next(HANDLE hSnapshot, tagPROCESSENTRY32* pEntry);
    BOOL WINAPI Module32First(HANDLE hSnapshot, tagMODULEENTRY32* pEntry);
    BOOL WINAPI Module32Next(HANDLE hSnapshot, tagMODULEENTRY32* pEntry);

    /// The system's process list, the idle process first: entries of SYSTEM_PROCESS_INFORMATION.
    /// @param nClass  5; anything else: STATUS_INVALID_INFO_CLASS.
    /// @param pnNeeded  may be null. @return STATUS_INFO_LENGTH_MISMATCH when nLength bytes are too few.
    LONG WINAPI ZwQuerySystemInformation(ULONG nClass, PVOID pInfo, ULONG nLength, ULONG* pnNeeded);
}
