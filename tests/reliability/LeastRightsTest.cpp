// What the library opens during the main job, and with which rights. Its tracing switch is read while it loads, before
// a call of it can be watched.
#include "ImportTable.h"
#include "MainJob.h"
#include "ScratchRegistry.h"

#include <gtest/gtest.h>

namespace
{

std::set<std::wstring> s_opened;

void Note(const wchar_t* szCall, const wchar_t* szName, DWORD dwRights, const void* pSecurity)
{
    wchar_t rights[40] = {};
    std::swprintf(rights, std::size(rights), L" 0x%X%ls", static_cast<unsigned>(dwRights),
                  pSecurity != nullptr ? L" with a descriptor" : L"");
    s_opened.insert(std::wstring(szCall) + L" " + szName + rights);
}

LSTATUS WINAPI CreateKey(HKEY hKey, LPCWSTR szKey, DWORD dwZero, LPWSTR szClass, DWORD dwOptions, REGSAM samDesired,
                         LPSECURITY_ATTRIBUTES pSecurity, PHKEY phKey, LPDWORD pdwDisposition)
{
    Note(L"create", szKey, samDesired & ~KEY_WOW64_64KEY, pSecurity);
    return ::RegCreateKeyExW(hKey, szKey, dwZero, szClass, dwOptions, samDesired, pSecurity, phKey, pdwDisposition);
}

LSTATUS WINAPI OpenKey(HKEY hKey, LPCWSTR szKey, DWORD dwOptions, REGSAM samDesired, PHKEY phKey)
{
    Note(L"open", szKey, samDesired & ~KEY_WOW64_64KEY, nullptr);
    return ::RegOpenKeyExW(hKey, szKey, dwOptions, samDesired, phKey);
}

HMODULE WINAPI LoadEx(LPCWSTR szName, HANDLE hReserved, DWORD dwFlags)
{
    Note(L"load", szName, dwFlags, nullptr);
    return ::LoadLibraryExW(szName, hReserved, dwFlags);
}

template <class Function>
void Watch(HMODULE hLibrary, Function* pFunction, Function* pWrapper)
{
    ReplaceImport(hLibrary, reinterpret_cast<const void*>(pFunction), reinterpret_cast<const void*>(pWrapper));
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
    Watch(library.GetModule(), ::RegCreateKeyExW, CreateKey);
    Watch(library.GetModule(), ::RegOpenKeyExW, OpenKey);
    Watch(library.GetModule(), ::LoadLibraryExW, LoadEx);
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
    const std::set<std::wstring> expected = {
        L"create SOFTWARE\\Trevok\\Trevok Patch Agent 0xF003F", // the contract's KEY_ALL_ACCESS
        L"open SOFTWARE\\Trevok\\Trevok Patch Agent 0x20019",   // KEY_READ
        L"open SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion 0x20019",
        L"open System\\CurrentControlSet\\Control\\Terminal Server 0x20019",
        L"open System\\WPA\\MediaCenter 0x20019",
        L"open System\\WPA\\TabletPC 0x20019",
        L"load NTDLL.DLL 0x800", // from the system's folder alone
        L"load kernel32.dll 0x800",
    };
    EXPECT_EQ(expected, s_opened);
}
