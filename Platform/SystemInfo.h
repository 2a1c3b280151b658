// The running system: time, version, processor. All but the time is answered from the record that Control can set.
// RtlGetVersion (ntdll.dll), GetNativeSystemInfo, GetProductInfo and IsWow64Process (kernel32.dll) exist for
// GetProcAddress.
#pragma once

#include "Platform/Types.h"

struct OSVERSIONINFOW
{
    DWORD dwOSVersionInfoSize;
    DWORD dwMajorVersion;
    DWORD dwMinorVersion;
    DWORD dwBuildNumber;
    DWORD dwPlatformId;
    WCHAR szCSDVersion[128];
};
using LPOSVERSIONINFOW = OSVERSIONINFOW*;
using RTL_OSVERSIONINFOW = OSVERSIONINFOW;

struct OSVERSIONINFOEXW
{
    DWORD dwOSVersionInfoSize;
    DWORD dwMajorVersion;
    DWORD dwMinorVersion;
    DWORD dwBuildNumber;
    DWORD dwPlatformId;
    WCHAR szCSDVersion[128];
    WORD wServicePackMajor;
    WORD wServicePackMinor;
    WORD wSuiteMask;
    BYTE wProductType;
    BYTE wReserved;
};
using RTL_OSVERSIONINFOEXW = OSVERSIONINFOEXW;

struct SYSTEM_INFO
{
    WORD wProcessorArchitecture;
    WORD wReserved;
    DWORD dwPageSize;
    LPVOID lpMinimumApplicationAddress;
    LPVOID lpMaximumApplicationAddress;
    DWORD_PTR dwActiveProcessorMask;
    DWORD dwNumberOfProcessors;
    DWORD dwProcessorType;
    DWORD dwAllocationGranularity;
    WORD wProcessorLevel;
    WORD wProcessorRevision;
};
using LPSYSTEM_INFO = SYSTEM_INFO*;

constexpr DWORD VER_PLATFORM_WIN32s = 0;
constexpr DWORD VER_PLATFORM_WIN32_WINDOWS = 1;
constexpr DWORD VER_PLATFORM_WIN32_NT = 2;
constexpr BYTE VER_NT_WORKSTATION = 1;
constexpr BYTE VER_NT_DOMAIN_CONTROLLER = 2;
constexpr BYTE VER_NT_SERVER = 3;
constexpr WORD VER_SUITE_ENTERPRISE = 0x0002;
constexpr WORD VER_SUITE_TERMINAL = 0x0010;
constexpr WORD VER_SUITE_EMBEDDEDNT = 0x0040;
constexpr WORD VER_SUITE_DATACENTER = 0x0080;
constexpr WORD VER_SUITE_SINGLEUSERTS = 0x0100;
constexpr WORD VER_SUITE_PERSONAL = 0x0200;
constexpr WORD VER_SUITE_BLADE = 0x0400;

constexpr WORD PROCESSOR_ARCHITECTURE_INTEL = 0;
constexpr WORD PROCESSOR_ARCHITECTURE_MIPS = 1;
constexpr WORD PROCESSOR_ARCHITECTURE_ALPHA = 2;
constexpr WORD PROCESSOR_ARCHITECTURE_PPC = 3;
constexpr WORD PROCESSOR_ARCHITECTURE_ARM = 5;
constexpr WORD PROCESSOR_ARCHITECTURE_IA64 = 6;
constexpr WORD PROCESSOR_ARCHITECTURE_ALPHA64 = 7;
constexpr WORD PROCESSOR_ARCHITECTURE_AMD64 = 9;
constexpr WORD PROCESSOR_ARCHITECTURE_ARM64 = 12;
constexpr WORD PROCESSOR_ARCHITECTURE_UNKNOWN = 0xFFFF;

constexpr int SM_TABLETPC = 86;
constexpr int SM_MEDIACENTER = 87;
constexpr int SM_STARTER = 88;
constexpr int SM_SERVERR2 = 89;

extern "C"
{
    /// The current time in UTC, to the millisecond.
    OVPLATFORM_API void WINAPI GetSystemTime(SYSTEMTIME* pTime);

    /// The version that the process is told.
    /// @param pInfo  its size says whether it is the plain or the extended structure, else ERROR_INSUFFICIENT_BUFFER.
    OVPLATFORM_API BOOL WINAPI GetVersionExW(LPOSVERSIONINFOW pInfo);

    /// The processor as the process sees it: for a 32-bit process on a 64-bit system a 32-bit one.
    OVPLATFORM_API void WINAPI GetSystemInfo(LPSYSTEM_INFO pInfo);

    /// The four metrics above; 0 for others.
    OVPLATFORM_API int WINAPI GetSystemMetrics(int nIndex);
}
