// What becomes of failing calls of the system: they are replaced at link time.
#include "ovCore/OvProcesses.h"
#include "ovCore/OvPSProcessApi.h"
#include "ovCore/OvRegKey.h"
#include "ovCore/OvSysInfoProcessApi.h"
#include "ovCore/OvToolHelpProcessApi.h"
#include "Raised.h"
#include "ScratchRegistry.h"

#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <string>

namespace
{

std::map<std::string, FARPROC> g_replaced; // what GetProcAddress answers with instead of the system's functions
LONG g_lClose = 0;                         // what RegCloseKey answers after closing; 0: its own result
bool g_bNoHeap = false;
bool g_bNoTokenInformation = false;
std::function<void()> g_onSecondQuery; // runs before the second query of a value
unsigned g_nQueries = 0;

} // namespace

extern "C"
{
    FARPROC __real_GetProcAddress(HMODULE hModule, LPCSTR szName);
    LONG __real_RegCloseKey(HKEY hKey);
    LONG __real_RegQueryValueExW(HKEY, LPCWSTR, LPDWORD, LPDWORD, LPBYTE, LPDWORD);
    LPVOID __real_HeapAlloc(HANDLE hHeap, DWORD dwFlags, SIZE_T nBytes);
    BOOL __real_GetTokenInformation(HANDLE, TOKEN_INFORMATION_CLASS, LPVOID, DWORD, PDWORD);

    FARPROC __wrap_GetProcAddress(HMODULE hModule, LPCSTR szName)
    {
        const auto found = g_replaced.find(szName);
        return found == g_replaced.end() ? __real_GetProcAddress(hModule, szName) : found->second;
    }
    LONG __wrap_RegCloseKey(HKEY hKey)
    {
        const LONG lResult = __real_RegCloseKey(hKey);
        return g_lClose != 0 ? g_lClose : lResult;
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
        return g_bNoHeap ? nullptr : __real_HeapAlloc(hHeap, dwFlags, nBytes);
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

/// Takes the place of a function that answers 0 when it fails.
ULONG_PTR Denied()
{
    ::SetLastError(ERROR_ACCESS_DENIED);
    return 0;
}

HANDLE NoSnapshot(DWORD, DWORD)
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

/// Two processes, once the room has grown to four times what is asked with first.
LONG QueryNeedsRoom(ULONG nClass, PVOID pInfo, ULONG nLength, ULONG*)
{
    if (nClass != 5 || nLength < 4 * 32768)
        return static_cast<LONG>(0xC0000004);
    auto* const pEntries = static_cast<SYSTEM_PROCESS_INFORMATION*>(pInfo);
    static wchar_t s_name[] = L"name and more";
    pEntries[0] = {};
    pEntries[0].NextEntryOffset = sizeof(SYSTEM_PROCESS_INFORMATION);
    pEntries[1] = {};
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
    const std::wstring call = L"Msg: A Win32 API call failed. | Method: ::";
    const auto tooMany = [](DWORD*, DWORD, DWORD* pdwBytes) -> BOOL { return *pdwBytes = 3001 * sizeof(DWORD); };
    const struct
    {
        COvOsProcessApi& api;
        const char* szFunction;
        FARPROC pReplaced; // null: the function is missing
        std::wstring evidence;
    } rows[] = {
        { ps, "EnumProcesses", Address(&Denied),
          L"Method: EnumProcesses | " + ErrorItem(L"Win32 GetLastError", ERROR_ACCESS_DENIED) },
        { ps, "EnumProcesses", Address(+tooMany),
          L"Info Msg: Number of processes exceeds MAX_PROCESSES | MAX_PROCESSES: 3000 | dwProcesses: 3001" },
        { ps, "GetModuleFileNameExW", Address(&Denied),
          call + L"GetModuleFileNameEx | " + ErrorItem(L"Win32 Error", ERROR_ACCESS_DENIED) },
        { toolHelp, "CreateToolhelp32Snapshot", Address(&NoSnapshot),
          call + L"CreateToolhelp32Snapshot | " + ErrorItem(L"Win32 Error", ERROR_ACCESS_DENIED) },
        { sysInfo, "ZwQuerySystemInformation", Address(+[]() -> LONG { return -1; }),
          L"Method: ZwQuerySystemInformation" },
        { toolHelp, "Module32Next", nullptr, L"" },
        { ps, "EnumProcessModules", nullptr, L"" },
        { sysInfo, "ZwQuerySystemInformation", nullptr, L"" },
    };
    for (const auto& row : rows)
    {
        g_replaced = { { row.szFunction, row.pReplaced } };
        EXPECT_EQ(row.pReplaced == nullptr, Raised([&] { row.api.Initialize(); }) != L"nothing") << row.szFunction;
        g_replaced.clear();
        if (row.pReplaced != nullptr)
        {
            EXPECT_EQ(L"0x80004005 OvOsProcessApi | " + row.evidence, Raised([&] { row.api.GetAllProcesses(); }));
        }
    }
}

TEST(ProcessFailure, WhatIsNotKnownOfAProcessHasAName)
{
    const DWORD dwSelf = ::GetCurrentProcessId();
    const auto three = std::make_pair("EnumProcesses", Address(&EnumThree));
    const auto longName = [](HANDLE, HMODULE, LPWSTR szPath, DWORD nUnits) {
        std::fill_n(szPath, nUnits, L'n'); // fills the whole room
        return nUnits;
    };
    EXPECT_EQ(L"", NameOf<COvPSProcessApi>(0, { three }));
    EXPECT_EQ(L"System", NameOf<COvPSProcessApi>(0xFFFFFFF0u, { three }));
    EXPECT_EQ(L"System", NameOf<COvPSProcessApi>(dwSelf, { three, { "EnumProcessModules", Address(&Denied) } }));
    EXPECT_EQ(std::wstring(4000, L'n'),
              NameOf<COvPSProcessApi>(dwSelf, { three, { "GetModuleFileNameExW", Address(+longName) } }));
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
    g_bNoHeap = true;
    EXPECT_EQ(L"0x80004005 OVProcessInfo | Method: HeapAlloc", Raised([&] { self.GetTextualSID(true); }));
    g_bNoHeap = false;
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
    for (const wchar_t* szNew : { L"a longer text", L"s", L"", L"same" })
    {
        COvRegKey key(RegView64);
        key.Create(L"SOFTWARE\\a", HKEY_LOCAL_MACHINE, KEY_ALL_ACCESS, 0);
        key.SetValue(L"v", L"text");
        g_nQueries = 0;
        g_onSecondQuery = [&] { key.SetValue(L"v", szNew); };
        std::wstring wzRead;
        const std::wstring raised = Raised([&] { wzRead = key.GetStringValue(L"v"); });
        g_onSecondQuery = nullptr;
        const bool bFits = std::wstring(szNew).size() <= 4;
        EXPECT_EQ(bFits ? szNew : L"", wzRead);
        EXPECT_EQ(bFits ? L"nothing"
                        : L"0x80004005 OvRegKey | Method: ::RegQueryValueEx | " +
                              ErrorItem(L"Win32 Error", ERROR_MORE_DATA) +
                              L" | HKEY: HKLM | m_wzPath: SOFTWARE\\a | tzValNm: v",
                  raised);
    }
}
