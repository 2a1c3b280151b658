// Failing calls while processes are listed and registry keys are used: on the native target, where the program's calls
// are wrapped.
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
#include <vector>

namespace
{

/// Functions that GetProcAddress answers with instead of the system's.
std::map<std::string, FARPROC> g_replaced;

/// Results that wrapped calls answer with; 0: the real call.
LONG g_lClose = 0;
LONG g_lSet = 0;
bool g_bNoHeap = false;
bool g_bNoTokenInformation = false;

/// Runs before each query of a value, with the number of the query.
std::function<void(unsigned)> g_onQuery;
unsigned g_nQueries = 0;

template <class Function>
FARPROC Address(Function* pFunction)
{
    return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(pFunction));
}

template <class T>
T Failed(DWORD dwError, T result)
{
    ::SetLastError(dwError);
    return result;
}

} // namespace

extern "C"
{
    FARPROC __real_GetProcAddress(HMODULE hModule, LPCSTR szName);
    LONG __real_RegCloseKey(HKEY hKey);
    LONG __real_RegSetValueExW(HKEY, LPCWSTR, DWORD, DWORD, const BYTE*, DWORD);
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

    LONG __wrap_RegSetValueExW(HKEY hKey, LPCWSTR szName, DWORD dwReserved, DWORD dwType, const BYTE* pData,
                               DWORD dwSize)
    {
        return g_lSet != 0 ? g_lSet : __real_RegSetValueExW(hKey, szName, dwReserved, dwType, pData, dwSize);
    }

    LONG __wrap_RegQueryValueExW(HKEY hKey, LPCWSTR szName, LPDWORD pReserved, LPDWORD pType, LPBYTE pData,
                                 LPDWORD pSize)
    {
        if (g_onQuery)
            g_onQuery(++g_nQueries);
        return __real_RegQueryValueExW(hKey, szName, pReserved, pType, pData, pSize);
    }

    LPVOID __wrap_HeapAlloc(HANDLE hHeap, DWORD dwFlags, SIZE_T nBytes)
    {
        return g_bNoHeap ? nullptr : __real_HeapAlloc(hHeap, dwFlags, nBytes);
    }

    BOOL __wrap_GetTokenInformation(HANDLE hToken, TOKEN_INFORMATION_CLASS infoClass, LPVOID pInfo, DWORD dwLength,
                                    PDWORD pdwNeeded)
    {
        return g_bNoTokenInformation && pInfo != nullptr
                   ? Failed(ERROR_ACCESS_DENIED, FALSE)
                   : __real_GetTokenInformation(hToken, infoClass, pInfo, dwLength, pdwNeeded);
    }
}

namespace
{

BOOL EnumNothing(DWORD*, DWORD, DWORD*)
{
    return Failed(ERROR_ACCESS_DENIED, FALSE);
}

BOOL EnumTooMany(DWORD*, DWORD, DWORD* pdwBytes)
{
    *pdwBytes = (COvPSProcessApi::MAX_PROCESSES + 1) * sizeof(DWORD);
    return TRUE;
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

BOOL NoModules(HANDLE, HMODULE*, DWORD, DWORD* pdwNeeded)
{
    *pdwNeeded = 0;
    return TRUE;
}

DWORD NoName(HANDLE, HMODULE, LPWSTR, DWORD)
{
    return Failed<DWORD>(ERROR_INVALID_HANDLE, 0);
}

/// A path that fills the whole room.
DWORD LongName(HANDLE, HMODULE, LPWSTR szPath, DWORD nUnits)
{
    std::fill_n(szPath, nUnits, L'n');
    return nUnits;
}

HANDLE NoSnapshot(DWORD, DWORD)
{
    return Failed(ERROR_ACCESS_DENIED, INVALID_HANDLE_VALUE);
}

HANDLE NoModuleSnapshot(DWORD dwFlags, DWORD dwProcessId)
{
    using Function = HANDLE(DWORD, DWORD);
    const HMODULE hKernel = ::GetModuleHandleW(L"kernel32.dll");
    const auto pReal = reinterpret_cast<Function*>(
        reinterpret_cast<void (*)()>(__real_GetProcAddress(hKernel, "CreateToolhelp32Snapshot")));
    return dwFlags == TH32CS_SNAPMODULE ? NoSnapshot(0, 0) : pReal(dwFlags, dwProcessId);
}

LONG QueryFails(ULONG, PVOID, ULONG, ULONG*)
{
    return static_cast<LONG>(0xC0000005);
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

template <class Api, class... Arguments>
COvProcessCollection ListWith(const std::map<std::string, FARPROC>& replaced, Arguments... arguments)
{
    g_replaced = replaced;
    Api api(arguments...);
    api.Initialize();
    g_replaced.clear();
    return api.GetAllProcesses();
}

std::wstring NameOf(const COvProcessCollection& processes, DWORD dwProcessId)
{
    bool bFound = false;
    return processes.GetByPID(dwProcessId, bFound).GetName();
}

} // namespace

TEST(ProcessFailure, EveryFailingCallIsReported)
{
    const std::wstring begin = L"0x80004005 OvOsProcessApi | ";
    const std::wstring call = begin + L"Msg: A Win32 API call failed. | Method: ::";
    EXPECT_EQ(begin + L"Method: EnumProcesses | " + ErrorItem(L"Win32 GetLastError", ERROR_ACCESS_DENIED), Raised([] {
                  ListWith<COvPSProcessApi>({ { "EnumProcesses", Address(&EnumNothing) } });
              }));
    EXPECT_EQ(begin + L"Info Msg: Number of processes exceeds MAX_PROCESSES | MAX_PROCESSES: 3000 | dwProcesses: 3001",
              Raised([] {
                  ListWith<COvPSProcessApi>({ { "EnumProcesses", Address(&EnumTooMany) } });
              }));
    EXPECT_EQ(call + L"GetModuleFileNameEx | " + ErrorItem(L"Win32 Error", ERROR_INVALID_HANDLE), Raised([] {
                  ListWith<COvPSProcessApi>({ { "GetModuleFileNameExW", Address(&NoName) } });
              }));
    EXPECT_EQ(call + L"CreateToolhelp32Snapshot | " + ErrorItem(L"Win32 Error", ERROR_ACCESS_DENIED), Raised([] {
                  ListWith<COvToolHelpProcessApi>({ { "CreateToolhelp32Snapshot", Address(&NoSnapshot) } }, true);
              }));
    EXPECT_EQ(begin + L"Method: ZwQuerySystemInformation", Raised([] {
                  ListWith<COvSysInfoProcessApi>({ { "ZwQuerySystemInformation", Address(&QueryFails) } });
              }));
    g_bNoHeap = true;
    EXPECT_EQ(begin + L"Method: HeapAlloc", Raised([] { ListWith<COvSysInfoProcessApi>({}); }));
    g_bNoHeap = false;
}

TEST(ProcessFailure, AMissingFunctionIsAFailureOfInitialize)
{
    for (const char* szName :
         { "CreateToolhelp32Snapshot", "Process32First", "Process32Next", "Module32First", "Module32Next",
           "EnumProcesses", "EnumProcessModules", "GetModuleFileNameExW", "ZwQuerySystemInformation" })
    {
        unsigned nFailures = 0;
        g_replaced = { { szName, nullptr } };
        COvToolHelpProcessApi toolHelp(true);
        COvPSProcessApi ps;
        COvSysInfoProcessApi sysInfo;
        for (COvOsProcessApi* pApi : std::initializer_list<COvOsProcessApi*>{ &toolHelp, &ps, &sysInfo })
            nFailures += Raised([&] { pApi->Initialize(); }) == L"nothing" ? 0 : 1;
        g_replaced.clear();
        EXPECT_EQ(1u, nFailures) << szName;
    }
}

TEST(ProcessFailure, AProcessWhosePathIsNotKnownIsCalledSystem)
{
    const DWORD dwSelf = ::GetCurrentProcessId();
    const COvProcessCollection three = ListWith<COvPSProcessApi>({ { "EnumProcesses", Address(&EnumThree) } });
    EXPECT_EQ(2u, three.GetCount());
    EXPECT_EQ(L"System", NameOf(three, 0xFFFFFFF0u));
    EXPECT_EQ(L"ProcessFailureTest", NameOf(three, dwSelf));
    EXPECT_EQ(L"System", NameOf(ListWith<COvPSProcessApi>({ { "EnumProcesses", Address(&EnumThree) },
                                                            { "EnumProcessModules", Address(&NoModules) } }),
                                dwSelf));
    EXPECT_EQ(L"System", NameOf(ListWith<COvToolHelpProcessApi>(
                                    { { "CreateToolhelp32Snapshot", Address(&NoModuleSnapshot) } }, true),
                                dwSelf));
    EXPECT_EQ(std::wstring(4000, L'n'),
              NameOf(ListWith<COvPSProcessApi>(
                         { { "EnumProcesses", Address(&EnumThree) }, { "GetModuleFileNameExW", Address(&LongName) } }),
                     dwSelf));
}

TEST(ProcessFailure, TheSystemsListIsAskedForWithGrowingRoom)
{
    const COvProcessCollection processes =
        ListWith<COvSysInfoProcessApi>({ { "ZwQuerySystemInformation", Address(&QueryNeedsRoom) } });
    EXPECT_EQ(2u, processes.GetCount());
    EXPECT_EQ(L"Idle", NameOf(processes, 0));
    EXPECT_EQ(L"name", NameOf(processes, 44));
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
    const std::wstring failure =
        L"0x80004005 OvRegKey | Method: ::RegCloseKey | " + ErrorItem(L"Win32 Error", ERROR_INVALID_HANDLE);
    COvRegKey key(RegView64);
    key.Create(L"SOFTWARE\\a", HKEY_LOCAL_MACHINE, KEY_READ, 0);
    g_lClose = ERROR_INVALID_HANDLE;
    EXPECT_EQ(failure, Raised([&] { key.Close(); }));
    EXPECT_FALSE(key.IsOpen());
    EXPECT_EQ(ERROR_INVALID_HANDLE, key.GetLastResult());
    EXPECT_EQ(L"nothing", Raised([] {
                  COvRegKey other(RegView64); // its destructor meets the failure
                  other.Create(L"SOFTWARE\\a", HKEY_LOCAL_MACHINE, KEY_READ, 0);
              }));
    key.OpenOpt(L"SOFTWARE\\a", HKEY_LOCAL_MACHINE, KEY_READ, 0);
    EXPECT_EQ(failure, Raised([&] { key.OpenOpt(L"SOFTWARE\\a", HKEY_LOCAL_MACHINE, KEY_READ, 0); }));
    g_lClose = 0;
    EXPECT_FALSE(key.IsOpen());
}

TEST(RegistryFailure, AValueThatIsNotWrittenIsReported)
{
    const CScratchRegistry registry;
    COvRegKey key(RegView64);
    key.Create(L"SOFTWARE\\a", HKEY_LOCAL_MACHINE, KEY_ALL_ACCESS, 0);
    g_lSet = ERROR_DISK_FULL;
    EXPECT_EQ(L"0x80004005 OvRegKey | Method: ::RegSetValueEx | " + ErrorItem(L"Win32 Error", ERROR_DISK_FULL) +
                  L" | HKEY: HKLM | m_wzPath: SOFTWARE\\a | wszName: v | Info Msg: REG_SZ",
              Raised([&] { key.SetValue(L"v", L"x"); }));
    g_lSet = 0;
}

TEST(RegistryFailure, AValueThatChangesWhileItIsReadIsReadWholeOrReported)
{
    const CScratchRegistry registry;
    const std::wstring failed = L"0x80004005 OvRegKey | Method: ::RegQueryValueEx | ";
    const std::wstring where = L" | HKEY: HKLM | m_wzPath: SOFTWARE\\a | tzValNm: v";
    const struct
    {
        const wchar_t* szChanged; // null: deleted
        std::wstring wzOutcome;
    } rows[] = {
        { L"a longer text", failed + ErrorItem(L"Win32 Error", ERROR_MORE_DATA) + where },
        { L"s", L"s" },
        { L"", L"" },
        { L"same", L"same" },
        { nullptr, failed + ErrorItem(L"Win32 Error", ERROR_FILE_NOT_FOUND) + where },
    };
    for (const auto& row : rows)
    {
        COvRegKey key(RegView64);
        key.Create(L"SOFTWARE\\a", HKEY_LOCAL_MACHINE, KEY_ALL_ACCESS, 0);
        key.SetValue(L"v", L"text");
        HKEY hOther = nullptr;
        ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\a", 0, KEY_ALL_ACCESS, &hOther);
        COvRegKey writer(RegView64);
        writer.OpenOpt(L"SOFTWARE\\a", HKEY_LOCAL_MACHINE, KEY_ALL_ACCESS, 0);
        g_nQueries = 0;
        g_onQuery = [&](unsigned nQuery) {
            if (nQuery == 2 && row.szChanged != nullptr)
                writer.SetValue(L"v", row.szChanged);
            else if (nQuery == 2)
                ::RegDeleteValueW(hOther, L"v");
        };
        std::wstring wzRead;
        const std::wstring wzRaised = Raised([&] { wzRead = key.GetStringValue(L"v"); });
        g_onQuery = nullptr;
        EXPECT_EQ(row.wzOutcome, wzRaised == L"nothing" ? wzRead : wzRaised);
        ::RegCloseKey(hOther);
    }
}
