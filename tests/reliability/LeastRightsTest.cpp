// What the library opens during the main job, and with which rights. Its tracing switch is read while it loads, before
// a call of it can be watched.
#include "ImportTable.h"
#include "MainJob.h"
#include "ScratchRegistry.h"

#include <gtest/gtest.h>

namespace
{

std::set<std::wstring> s_opened;

void Note(const wchar_t* szCall, const wchar_t* szName, DWORD dwRights)
{
    s_opened.insert(szCall + (L" " + std::to_wstring(dwRights & ~KEY_WOW64_64KEY)) + L" " + szName);
}

LSTATUS WINAPI CreateKey(HKEY hKey, LPCWSTR szKey, DWORD dwZero, LPWSTR szClass, DWORD dwOptions, REGSAM samDesired,
                         LPSECURITY_ATTRIBUTES pSecurity, PHKEY phKey, LPDWORD pdwDisposition)
{
    Note(pSecurity == nullptr ? L"create" : L"create for others", szKey, samDesired);
    return ::RegCreateKeyExW(hKey, szKey, dwZero, szClass, dwOptions, samDesired, pSecurity, phKey, pdwDisposition);
}

LSTATUS WINAPI OpenKey(HKEY hKey, LPCWSTR szKey, DWORD dwOptions, REGSAM samDesired, PHKEY phKey)
{
    Note(L"open", szKey, samDesired);
    return ::RegOpenKeyExW(hKey, szKey, dwOptions, samDesired, phKey);
}

HMODULE WINAPI LoadEx(LPCWSTR szName, HANDLE hReserved, DWORD dwFlags)
{
    Note(L"load", szName, dwFlags);
    return ::LoadLibraryExW(szName, hReserved, dwFlags);
}

} // namespace

TEST(LeastRights, KeysAndLibraries)
{
    const CScratchRegistry registry;
    const CComApartment apartment;
    const CLoadedLibrary library;
    const CFastPauses pauses(library.GetModule());
    CHostCallbacks callbacks;
    CAgentSimulator agent;
    agent.Start();
    ReplaceImport(library.GetModule(), reinterpret_cast<const void*>(::RegCreateKeyExW),
                  reinterpret_cast<const void*>(CreateKey));
    ReplaceImport(library.GetModule(), reinterpret_cast<const void*>(::RegOpenKeyExW),
                  reinterpret_cast<const void*>(OpenKey));
    ReplaceImport(library.GetModule(), reinterpret_cast<const void*>(::LoadLibraryExW),
                  reinterpret_cast<const void*>(LoadEx));
    IAdapterFactory* const pFactory = library.MakeFactory();
    for (int i = 0; i < 2; ++i) // the second time there is a revision to be read
    {
        IAdapter* const pAdapter = pFactory->Initialise(nullptr, nullptr, &callbacks, nullptr);
        pAdapter->GetStatus(&callbacks);
        pAdapter->SetConfiguration(SamplePolicy());
        pFactory->Uninitialise(pAdapter);
    }
    DeleteAdapterFactory(pFactory);
    EXPECT_EQ(NEW_REVISION, StoredRevision());
    const std::wstring wzCreate = L"create " + std::to_wstring(KEY_ALL_ACCESS) + L" ";
    const std::wstring wzOpen = L"open " + std::to_wstring(KEY_READ) + L" ";
    const std::wstring wzLoad = L"load " + std::to_wstring(LOAD_LIBRARY_SEARCH_SYSTEM32) + L" ";
    const std::set<std::wstring> expected = {
        wzCreate + L"SOFTWARE\\Trevok\\Trevok Patch Agent",
        wzOpen + L"SOFTWARE\\Trevok\\Trevok Patch Agent",
        wzOpen + L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion",
        wzOpen + L"System\\CurrentControlSet\\Control\\Terminal Server",
        wzOpen + L"System\\WPA\\MediaCenter",
        wzOpen + L"System\\WPA\\TabletPC",
        wzLoad + L"NTDLL.DLL",
        wzLoad + L"kernel32.dll",
        wzLoad + L"version.dll",
    };
    EXPECT_EQ(expected, s_opened);
}
