// Loaded libraries. A module's handle is the address at which it is loaded. The system's own libraries (kernel32.dll,
// ntdll.dll, psapi.dll, version.dll, in any letter case, bare or with the system's folder) are there without a file and
// answer from a table of the stand-in's functions.
#pragma once

#include "Platform/Types.h"

constexpr DWORD LOAD_WITH_ALTERED_SEARCH_PATH = 0x00000008;
constexpr DWORD LOAD_LIBRARY_SEARCH_SYSTEM32 = 0x00000800;

constexpr DWORD DLL_PROCESS_DETACH = 0;
constexpr DWORD DLL_PROCESS_ATTACH = 1;

extern "C"
{
    /// Loads a library and runs its DllMain (see ModuleEntry.cpp); a loaded one is counted once more.
    /// @param szName  a path (see Files.h), or a bare name, which is looked for among the system's libraries and,
    /// without
    ///                LOAD_LIBRARY_SEARCH_SYSTEM32, beside the executable; nowhere else.
    /// @param hReserved  null. @param dwFlags  0 or one of the two above. Else ERROR_INVALID_PARAMETER.
    /// @return null with ERROR_MOD_NOT_FOUND (also for a library that it needs), ERROR_BAD_EXE_FORMAT for what is no
    ///         library, ERROR_DLL_INIT_FAILED when its DllMain returned FALSE.
    OVPLATFORM_API HMODULE WINAPI LoadLibraryExW(LPCWSTR szName, HANDLE hReserved, DWORD dwFlags);
    OVPLATFORM_API HMODULE WINAPI LoadLibraryW(LPCWSTR szName);

    /// The folder in which the system's libraries are: it holds no files.
    /// @return units without the NUL, or with it when nUnits are too few.
    OVPLATFORM_API UINT WINAPI GetSystemDirectoryW(LPWSTR szBuffer, UINT nUnits);

    /// Undoes one load; the last one runs DllMain again and unloads. ERROR_MOD_NOT_FOUND for what was not loaded so.
    OVPLATFORM_API BOOL WINAPI FreeLibrary(HMODULE hModule);

    /// A function that the module itself exports, not one of a library that it needs; ERROR_PROC_NOT_FOUND.
    /// @param szName  narrow; letter case counts. Ordinals do not exist here.
    OVPLATFORM_API FARPROC WINAPI GetProcAddress(HMODULE hModule, LPCSTR szName);

    /// A loaded module by its file name (".dll" is added to a name without a dot) or path; null: the executable. It is
    /// not counted and not to be freed. ERROR_MOD_NOT_FOUND.
    OVPLATFORM_API HMODULE WINAPI GetModuleHandleW(LPCWSTR szName);

    /// The module's full path; null: the executable's.
    /// @param nUnits  room in szBuffer. A longer name is cut, ended by NUL, and answered with nUnits and
    ///                ERROR_INSUFFICIENT_BUFFER.
    /// @return units without the NUL; 0 with ERROR_MOD_NOT_FOUND.
    OVPLATFORM_API DWORD WINAPI GetModuleFileNameW(HMODULE hModule, LPWSTR szBuffer, DWORD nUnits);
}
