// Processes, their tokens, and the ways of listing them.
#include "KernelTesting.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{

constexpr DWORD NO_SUCH_PROCESS = 0xFFFFFFF0u;

CTestHandle TokenOf(HANDLE hProcess, DWORD dwAccess)
{
    HANDLE hToken = nullptr;
    EXPECT_TRUE(::OpenProcessToken(hProcess, dwAccess, &hToken));
    return CTestHandle(hToken);
}

template <class Function>
Function* SystemFunction(const wchar_t* szLibrary, const char* szName)
{
    return reinterpret_cast<Function*>(
        reinterpret_cast<void (*)()>(::GetProcAddress(::LoadLibraryW(szLibrary), szName)));
}

template <class T>
std::vector<T> Bytes(size_t nBytes)
{
    return std::vector<T>((nBytes + sizeof(T) - 1) / sizeof(T));
}

} // namespace

TEST(Processes, OpenOnlyWhenTheyRun)
{
    ::SetLastError(0);
    EXPECT_EQ(nullptr, ::OpenProcess(PROCESS_ALL_ACCESS, TRUE, NO_SUCH_PROCESS));
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_PARAMETER), ::GetLastError());
    const CTestHandle self(::OpenProcess(PROCESS_ALL_ACCESS, TRUE, ::GetCurrentProcessId()));
    ASSERT_NE(nullptr, self.get());
    EXPECT_EQ(WAIT_TIMEOUT, ::WaitForSingleObject(self.get(), 0));
}

TEST(Processes, ATokenGrantsWhatItWasOpenedFor)
{
    HANDLE hToken = nullptr;
    EXPECT_FALSE(::OpenProcessToken(nullptr, TOKEN_QUERY, &hToken));
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_HANDLE), ::GetLastError());

    const CTestHandle token(TokenOf(::GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES));
    DWORD dwNeeded = 0;
    EXPECT_FALSE(::GetTokenInformation(token.get(), TokenUser, nullptr, 0, &dwNeeded));
    EXPECT_EQ(static_cast<DWORD>(ERROR_ACCESS_DENIED), ::GetLastError());
}

TEST(Processes, TheTokensUserIsReadIntoRoomOfTheSizeToldFirst)
{
    const CTestHandle token(TokenOf(::GetCurrentProcess(), TOKEN_QUERY));
    DWORD dwNeeded = 0;
    EXPECT_FALSE(::GetTokenInformation(token.get(), TokenUser, nullptr, 0, &dwNeeded));
    EXPECT_EQ(static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER), ::GetLastError());
    ASSERT_LT(sizeof(TOKEN_USER), dwNeeded);
    auto info = Bytes<TOKEN_USER>(dwNeeded);
    DWORD dwAgain = 0;
    EXPECT_FALSE(::GetTokenInformation(token.get(), TokenUser, info.data(), dwNeeded - 1, &dwAgain));
    EXPECT_EQ(dwNeeded, dwAgain);
    ASSERT_TRUE(::GetTokenInformation(token.get(), TokenUser, info.data(), dwNeeded, &dwNeeded));
    const PSID pSid = info[0].User.Sid;
    EXPECT_TRUE(::IsValidSid(pSid));
    const DWORD nParts = *::GetSidSubAuthorityCount(pSid);
    EXPECT_LT(0u, nParts);
    const auto nEnd = reinterpret_cast<uintptr_t>(::GetSidSubAuthority(pSid, nParts - 1)) + sizeof(DWORD);
    EXPECT_LE(nEnd, reinterpret_cast<uintptr_t>(info.data()) + dwNeeded);
    EXPECT_LT(reinterpret_cast<uintptr_t>(info.data()), reinterpret_cast<uintptr_t>(pSid));
}

TEST(Processes, APrivilegeThatIsNotHeldIsToldByTheLastError)
{
    LUID luid = {};
    EXPECT_FALSE(::LookupPrivilegeValueW(nullptr, L"SeNoSuchPrivilege", &luid));
    EXPECT_EQ(static_cast<DWORD>(ERROR_NO_SUCH_PRIVILEGE), ::GetLastError());
    ASSERT_TRUE(::LookupPrivilegeValueW(nullptr, L"SEDEBUGprivilege", &luid));
    EXPECT_EQ(20u, luid.LowPart);

    const CTestHandle token(TokenOf(::GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY));
    TOKEN_PRIVILEGES privileges = {};
    privileges.PrivilegeCount = 1;
    privileges.Privileges[0] = { luid, SE_PRIVILEGE_ENABLED };
    ::SetLastError(ERROR_INVALID_HANDLE);
    EXPECT_TRUE(::AdjustTokenPrivileges(token.get(), FALSE, &privileges, 0, nullptr, nullptr));
    EXPECT_NE(static_cast<DWORD>(ERROR_INVALID_HANDLE), ::GetLastError());
    privileges.Privileges[0].Luid = { 0x7FFFFFFF, 0 };
    EXPECT_TRUE(::AdjustTokenPrivileges(token.get(), FALSE, &privileges, 0, nullptr, nullptr));
    EXPECT_EQ(static_cast<DWORD>(ERROR_NOT_ALL_ASSIGNED), ::GetLastError());
}

TEST(Processes, ModulesComeWithTheExecutableFirst)
{
    const auto pEnumModules =
        SystemFunction<BOOL WINAPI(HANDLE, HMODULE*, DWORD, DWORD*)>(L"psapi.dll", "EnumProcessModules");
    const auto pGetName =
        SystemFunction<DWORD WINAPI(HANDLE, HMODULE, LPWSTR, DWORD)>(L"psapi.dll", "GetModuleFileNameExW");
    ASSERT_TRUE(pEnumModules != nullptr && pGetName != nullptr);
    HMODULE modules[2] = {};
    DWORD dwNeeded = 0;
    ASSERT_TRUE(pEnumModules(::GetCurrentProcess(), modules, sizeof(modules), &dwNeeded));
    EXPECT_LT(sizeof(modules), dwNeeded);
    EXPECT_EQ(::GetModuleHandleW(nullptr), modules[0]);
    EXPECT_NE(modules[0], modules[1]);

    wchar_t szName[MAX_PATH] = {};
    wchar_t szExpected[MAX_PATH] = {};
    const DWORD nUnits = ::GetModuleFileNameW(nullptr, szExpected, MAX_PATH);
    for (const HMODULE hModule : { modules[0], HMODULE() })
    {
        EXPECT_EQ(nUnits, pGetName(::GetCurrentProcess(), hModule, szName, MAX_PATH));
        EXPECT_STREQ(szExpected, szName);
    }
    EXPECT_EQ(0u, pGetName(::GetCurrentProcess(), reinterpret_cast<HMODULE>(ULONG_PTR{ 0x123 }), szName, MAX_PATH));
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_HANDLE), ::GetLastError());
}

TEST(Processes, ASnapshotIsWalkedToItsEnd)
{
    const auto pSnapshot = SystemFunction<HANDLE WINAPI(DWORD, DWORD)>(L"kernel32.dll", "CreateToolhelp32Snapshot");
    const auto pFirst = SystemFunction<BOOL WINAPI(HANDLE, tagPROCESSENTRY32*)>(L"kernel32.dll", "Process32First");
    const auto pNext = SystemFunction<BOOL WINAPI(HANDLE, tagPROCESSENTRY32*)>(L"kernel32.dll", "Process32Next");
    const CTestHandle snapshot(pSnapshot(TH32CS_SNAPPROCESS, 0));
    unsigned nSelf = 0;
    for (int nWalk = 0; nWalk < 2; ++nWalk)
    {
        tagPROCESSENTRY32 entry = {};
        entry.dwSize = sizeof(entry);
        ASSERT_TRUE(pFirst(snapshot.get(), &entry));
        do
            nSelf += entry.th32ProcessID == ::GetCurrentProcessId() ? 1 : 0;
        while (pNext(snapshot.get(), &entry));
        EXPECT_EQ(static_cast<DWORD>(ERROR_NO_MORE_FILES), ::GetLastError());
    }
    EXPECT_EQ(2u, nSelf);
    tagPROCESSENTRY32 unsized = {};
    EXPECT_FALSE(pFirst(snapshot.get(), &unsized));
    EXPECT_EQ(static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER), ::GetLastError());
    tagPROCESSENTRY32 entry = {};
    entry.dwSize = sizeof(entry);
    EXPECT_FALSE(pFirst(nullptr, &entry));
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_HANDLE), ::GetLastError());
}

TEST(Processes, TheSystemsListTellsTheRoomItNeeds)
{
    const auto pQuery =
        SystemFunction<LONG WINAPI(ULONG, PVOID, ULONG, ULONG*)>(L"ntdll.dll", "ZwQuerySystemInformation");
    constexpr LONG TOO_SMALL = static_cast<LONG>(0xC0000004);
    constexpr LONG INVALID_CLASS = static_cast<LONG>(0xC0000003);
    SYSTEM_PROCESS_INFORMATION first = {};
    ULONG nNeeded = 0;
    EXPECT_EQ(TOO_SMALL, pQuery(5, &first, 8, &nNeeded));
    EXPECT_LT(sizeof(first), nNeeded);
    EXPECT_EQ(INVALID_CLASS, pQuery(0x7FFF, &first, sizeof(first), nullptr));
    auto list = Bytes<SYSTEM_PROCESS_INFORMATION>(nNeeded + 65536);
    EXPECT_EQ(0, pQuery(5, list.data(), static_cast<ULONG>(list.size() * sizeof(list[0])), nullptr));
}
