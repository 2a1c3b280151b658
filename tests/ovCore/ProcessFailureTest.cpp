// What becomes of failing calls of the system: they are replaced at link time.
#include "ovCore/OvProcesses.h"
#include "ovCore/OvPSProcessApi.h"
#include "ovCore/OvRegKey.h"
#include "ovCore/OvSysInfoProcessApi.h"
#include "ovCore/OvToolHelpProcessApi.h"
#include "Raised.h"
#include "TestPlatform.h"

#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <string>

namespace
{

std::map<std::string, FARPROC> g_replaced; // what GetProcAddress answers with instead of the system's functions
LONG g_lClose = 0;                         // what RegCloseKey answers after closing
constexpr SIZE_T ROOM = 4 * 32768;         // all that the heap gives
bool g_bNoTokenInformation = false;
std::function<void()> g_onSecondQuery; // runs before the second query of a value
unsigned g_nQueries = 0;

} // namespace

extern "C"
{
    decltype(GetProcAddress) __real_GetProcAddress;
    decltype(RegCloseKey) __real_RegCloseKey;
    decltype(RegQueryValueExW) __real_RegQueryValueExW;
    decltype(HeapAlloc) __real_HeapAlloc;
    decltype(GetTokenInformation) __real_GetTokenInformation;

    FARPROC __wrap_GetProcAddress(HMODULE hModule, LPCSTR szName)
    {
        const auto found = g_replaced.find(szName);
        return found == g_replaced.end() ? __real_GetProcAddress(hModule, szName) : found->second;
    }
    LONG __wrap_RegCloseKey(HKEY hKey)
    {
        __real_RegCloseKey(hKey);
        return g_lClose;
    }
    LONG __wrap_RegQueryValueExW(HKEY hKey, LPCWSTR szName, LPDWORD pReserved, LPDWORD pType, LPBYTE pData,
                                 LPDWORD pSize)
    {
        if (g_onSecondQuery && ++g_nQueries == 2)
            g_onSecondQuery();
        return __real_RegQueryValueExW(hKey, szName, pReserved, pType, pData, pSize);
    }
    LPVOID __wrap_HeapAlloc(HANDLE hHeap, DWORD dwFlags, SIZE_T nBytes)
    {
        return nBytes > ROOM ? nullptr : __real_HeapAlloc(hHeap, dwFlags, nBytes);
    }
    BOOL __wrap_GetTokenInformation(HANDLE hToken, TOKEN_INFORMATION_CLASS info, LPVOID pInfo, DWORD dwLength,
                                    PDWORD pdwNeeded)
    {
        if (!g_bNoTokenInformation || pInfo == nullptr)
            return __real_GetTokenInformation(hToken, info, pInfo, dwLength, pdwNeeded);
        ::SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    }
}

namespace
{

template <class Function>
FARPROC Address(Function* pFunction)
{
    return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(pFunction));
}

ULONG_PTR Denied()
{
    ::SetLastError(ERROR_ACCESS_DENIED);
    return 0;
}

HANDLE NoSnapshot()
{
    Denied();
    return INVALID_HANDLE_VALUE;
}

/// Id 0, which is left out, an id that does not run, and this process.
BOOL EnumThree(DWORD* pIds, DWORD, DWORD* pdwBytes)
{
    pIds[0] = 0;
    pIds[1] = 0xFFFFFFF0u;
    pIds[2] = ::GetCurrentProcessId();
    *pdwBytes = 3 * sizeof(DWORD);
    return TRUE;
}

LONG AlwaysTooSmall()
{
    return static_cast<LONG>(0xC0000004);
}

/// Two processes, once the room has grown to four times what is asked with first.
LONG QueryNeedsRoom(ULONG nClass, PVOID pInfo, ULONG nLength, ULONG*)
{
    if (nClass != 5 || nLength < ROOM)
        return AlwaysTooSmall();
    auto* const pEntries = static_cast<SYSTEM_PROCESS_INFORMATION*>(pInfo);
    static wchar_t s_name[] = L"name and more";
    pEntries[0] = pEntries[1] = {};
    pEntries[0].NextEntryOffset = sizeof(SYSTEM_PROCESS_INFORMATION);
    pEntries[1].ImageName = { 4 * sizeof(wchar_t), 4 * sizeof(wchar_t), s_name };
    pEntries[1].UniqueProcessId = reinterpret_cast<HANDLE>(ULONG_PTR{ 44 });
    return 0;
}

/// The name under which the method lists a process.
template <class Api>
std::wstring NameOf(DWORD dwProcessId, const std::map<std::string, FARPROC>& replaced)
{
    g_replaced = replaced;
    Api api;
    api.Initialize();
    g_replaced.clear();
    bool bFound = false;
    const COvProcessCollection processes = api.GetAllProcesses();
    return processes.GetByPID(dwProcessId, bFound).GetName();
}

} // namespace

TEST(ProcessFailure, EveryFailingCallIsReported)
{
    COvToolHelpProcessApi toolHelp(true);
    COvPSProcessApi ps;
    COvSysInfoProcessApi sysInfo;
    const std::wstring begin = L"0x80004005 OvOsProcessApi | ";
    const std::wstring call = begin + L"Msg: A Win32 API call failed. | Method: ::";
    const auto tooMany = [](DWORD*, DWORD, DWORD* pdwBytes) -> BOOL { return *pdwBytes = 3001 * sizeof(DWORD); };
    const auto refused = []() -> LONG { return -1; };
    const std::tuple<COvOsProcessApi*, const char*, FARPROC, std::wstring> rows[] = {
        // null: a missing function
        { &ps, "EnumProcesses", Address(&Denied),
          begin + L"Method: EnumProcesses | " + ErrorItem(L"Win32 GetLastError", ERROR_ACCESS_DENIED) },
        { &ps, "EnumProcesses", Address(+tooMany),
          begin + L"Info Msg: Number of processes exceeds MAX_PROCESSES | MAX_PROCESSES: 3000 | dwProcesses: 3001" },
        { &ps, "GetModuleFileNameExW", Address(&Denied),
          call + L"GetModuleFileNameEx | " + ErrorItem(L"Win32 Error", ERROR_ACCESS_DENIED) },
        { &toolHelp, "CreateToolhelp32Snapshot", Address(&NoSnapshot),
          call + L"CreateToolhelp32Snapshot | " + ErrorItem(L"Win32 Error", ERROR_ACCESS_DENIED) },
        { &sysInfo, "ZwQuerySystemInformation", Address(+refused), begin + L"Method: ZwQuerySystemInformation" },
        { &sysInfo, "ZwQuerySystemInformation", Address(&AlwaysTooSmall), begin + L"Method: HeapAlloc" },
        { &ps, "EnumProcessModules", nullptr,
          L"0x80004005 OvDynamicLib | Msg: A Win32 API call failed. | Method: GetProcAddress | tzFuncNm: "
          L"EnumProcessModules | m_wzFileNm: PSAPI.DLL" },
    };
    for (const auto& [pApi, szFunction, pReplaced, failure] : rows)
    {
        g_replaced = { { szFunction, pReplaced } };
        EXPECT_EQ(failure, Raised([&api = *pApi] {
                      api.Initialize();
                      g_replaced.clear();
                      api.GetAllProcesses();
                  }));
        g_replaced.clear();
    }
}

TEST(ProcessFailure, WhatIsNotKnownOfAProcessHasAName)
{
    const DWORD dwSelf = ::GetCurrentProcessId();
    const auto three = std::make_pair("EnumProcesses", Address(&EnumThree));
    EXPECT_EQ(L"", NameOf<COvPSProcessApi>(0, { three }));
    EXPECT_EQ(L"System", NameOf<COvPSProcessApi>(0xFFFFFFF0u, { three }));
    EXPECT_EQ(L"System", NameOf<COvPSProcessApi>(dwSelf, { three, { "EnumProcessModules", Address(&Denied) } }));
    const auto system = std::make_pair("ZwQuerySystemInformation", Address(&QueryNeedsRoom));
    EXPECT_EQ(L"Idle", NameOf<COvSysInfoProcessApi>(0, { system }));
    EXPECT_EQ(L"name", NameOf<COvSysInfoProcessApi>(44, { system }));
}

TEST(ProcessFailure, ATokenThatTellsNothingIsAFailure)
{
    const COvProcessInfo self(L"", ::GetCurrentProcessId());
    g_bNoTokenInformation = true;
    EXPECT_EQ(L"0x80004005 OVProcessInfo | Info Msg: Failed getting token | " +
                  ErrorItem(L"Win32 GetLastError", ERROR_ACCESS_DENIED),
              Raised([&] { self.GetTextualSID(true); }));
    g_bNoTokenInformation = false;
}

TEST(RegistryFailure, AKeyThatDoesNotCloseCountsAsClosed)
{
    const CScratchRegistry registry;
    COvRegKey key(RegView64);
    key.Create(L"SOFTWARE\\a", HKEY_LOCAL_MACHINE, KEY_READ, 0);
    g_lClose = ERROR_INVALID_HANDLE;
    EXPECT_EQ(L"0x80004005 OvRegKey | Method: ::RegCloseKey | " + ErrorItem(L"Win32 Error", ERROR_INVALID_HANDLE),
              Raised([&] { key.OpenOpt(L"SOFTWARE\\a", HKEY_LOCAL_MACHINE, KEY_READ, 0); }));
    EXPECT_FALSE(key.IsOpen());
    EXPECT_EQ(ERROR_INVALID_HANDLE, key.GetLastResult());
    key.OpenOpt(L"SOFTWARE\\a", HKEY_LOCAL_MACHINE, KEY_READ, 0); // its destructor meets the failure
}

TEST(RegistryFailure, AValueThatChangesWhileItIsReadIsReadWholeOrReported)
{
    const CScratchRegistry registry;
    g_lClose = 0;
    const std::wstring failure = L"0x80004005 OvRegKey | Method: ::RegQueryValueEx | " +
                                 ErrorItem(L"Win32 Error", ERROR_MORE_DATA) +
                                 L" | HKEY: HKLM | m_wzPath: SOFTWARE\\a | tzValNm: v";
    for (const std::wstring wzNew : { L"a longer text", L"s", L"", L"same" })
    {
        COvRegKey key(RegView64);
        key.Create(L"SOFTWARE\\a", HKEY_LOCAL_MACHINE, KEY_ALL_ACCESS, 0);
        key.SetValue(L"v", L"text");
        g_nQueries = 0;
        g_onSecondQuery = [&] { key.SetValue(L"v", wzNew); };
        EXPECT_EQ(wzNew.size() > 4 ? failure : L"nothing", Raised([&] { EXPECT_EQ(wzNew, key.GetStringValue(L"v")); }));
        g_onSecondQuery = nullptr;
    }
}
