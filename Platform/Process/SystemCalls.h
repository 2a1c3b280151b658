// Functions of the system that older systems lack, so that they are reached through GetProcAddress alone.
#pragma once

#include "Platform/SystemInfo.h"

extern "C"
{
    /// The processor of the machine.
    void WINAPI GetNativeSystemInfo(LPSYSTEM_INFO pInfo);

    /// @return 1 and the product in *pdwType.
    BOOL WINAPI GetProductInfo(DWORD dwMajor, DWORD dwMinor, DWORD dwPackMajor, DWORD dwPackMinor, DWORD* pdwType);

    /// Whether a process is a 32-bit one on a 64-bit system.
    BOOL WINAPI IsWow64Process(HANDLE hProcess, BOOL* pbWow64);

    /// The true version. @return 0 (STATUS_SUCCESS).
    LONG WINAPI RtlGetVersion(OSVERSIONINFOW* pInfo);
}

namespace OvPlatform
{

/// Whether the system that is pretended lacks the function.
bool IsFunctionMissing(const char* szName);

} // namespace OvPlatform
