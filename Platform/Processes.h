// Processes: this one and the others, answered from the host system's process files. An id is the host system's.
#pragma once

#include "Platform/Types.h"

constexpr DWORD PROCESS_VM_READ = 0x0010;
constexpr DWORD PROCESS_QUERY_INFORMATION = 0x0400;
constexpr DWORD PROCESS_ALL_ACCESS = 0x001FFFFF;

// What snapshots and the system's own list are made of. The functions themselves are reached as on older systems,
// through GetProcAddress (see ProcessList.h).
constexpr DWORD TH32CS_SNAPPROCESS = 0x00000002;
constexpr DWORD TH32CS_SNAPMODULE = 0x00000008;
constexpr int MAX_MODULE_NAME32 = 255;

/// A process of a snapshot. The name is narrow text in the ANSI code page.
struct tagPROCESSENTRY32
{
    DWORD dwSize; ///< set by the caller to the structure's size
    DWORD cntUsage;
    DWORD th32ProcessID;
    ULONG_PTR th32DefaultHeapID;
    DWORD th32ModuleID;
    DWORD cntThreads;
    DWORD th32ParentProcessID;
    LONG pcPriClassBase;
    DWORD dwFlags;
    CHAR szExeFile[MAX_PATH];
};

/// A module of a process of a snapshot. The texts are narrow, in the ANSI code page.
struct tagMODULEENTRY32
{
    DWORD dwSize; ///< set by the caller to the structure's size
    DWORD th32ModuleID;
    DWORD th32ProcessID;
    DWORD GlblcntUsage;
    DWORD ProccntUsage;
    BYTE* modBaseAddr;
    DWORD modBaseSize;
    HMODULE hModule;
    CHAR szModule[MAX_MODULE_NAME32 + 1];
    CHAR szExePath[MAX_PATH];
};

/// A counted text. Its lengths are in bytes: sizeof(WCHAR) times its units.
struct UNICODE_STRING
{
    USHORT Length;
    USHORT MaximumLength;
    LPWSTR Buffer;
};

/// An entry of the system's process list; of its fields only those that are read.
struct SYSTEM_PROCESS_INFORMATION
{
    ULONG NextEntryOffset; ///< bytes from this entry to the next; 0 for the last
    ULONG NumberOfThreads;
    UNICODE_STRING ImageName; ///< no text for the idle process
    HANDLE UniqueProcessId;
};

extern "C"
{
    /// A pseudo-handle of this process; it needs no closing.
    OVPLATFORM_API HANDLE WINAPI GetCurrentProcess();

    OVPLATFORM_API DWORD WINAPI GetCurrentProcessId();

    /// Opens a process. @param bInherit  no effect: no process is ever started from here.
    /// @return a handle to close, or null: ERROR_INVALID_PARAMETER when there is no process of that id,
    ///         ERROR_ACCESS_DENIED for one of another user, unless this process is the superuser's.
    OVPLATFORM_API HANDLE WINAPI OpenProcess(DWORD dwAccess, BOOL bInherit, DWORD dwProcessId);
}
