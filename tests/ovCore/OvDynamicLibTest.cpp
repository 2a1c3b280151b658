#include "ovCore/OvDynamicLib.h"

#include "Api_Kernel32.h"
#include "ImportTable.h"
#include "ovCore/OvSystem.h"
#include "Raised.h"

#include <gtest/gtest.h>

namespace
{

std::vector<std::wstring> s_loaded;

/// As on a Windows that does not know the flag for the system's folder.
HMODULE WINAPI LoadWithoutFlag(LPCWSTR szName, HANDLE, DWORD dwFlags)
{
    if (dwFlags == LOAD_LIBRARY_SEARCH_SYSTEM32)
    {
        ::SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    EXPECT_EQ(static_cast<DWORD>(LOAD_WITH_ALTERED_SEARCH_PATH), dwFlags);
    s_loaded.push_back(szName);
    return ::LoadLibraryW(szName); // the other import goes here
}

} // namespace

TEST(OvDynamicLib, LoadsAndFindsOrSaysWhatIsMissing)
{
    constexpr DWORD SYSTEM_FOLDER = LOAD_LIBRARY_SEARCH_SYSTEM32;
    COvDynamicLib library(L"ntdll.dll", nullptr, SYSTEM_FOLDER);
    EXPECT_NE(nullptr, library.GetProcAddr(L"RtlGetVersion", true));
    library.Init(L"kernel32.dll", nullptr, SYSTEM_FOLDER, true);
    library.Init(nullptr, nullptr, 0, true);
    library.Init(L"", nullptr, 0, true);
    EXPECT_NE(nullptr, library.GetProcAddr(L"IsWow64Process", true));
    EXPECT_EQ(nullptr, library.GetProcAddr(L"RtlGetVersion", false));
    EXPECT_EQ(L"0x80004005 OvDynamicLib | Msg: A Win32 API call failed. | Method: GetProcAddress | tzFuncNm: "
              L"RtlGetVersion | m_wzFileNm: kernel32.dll",
              Raised([&] { library.GetProcAddr(L"RtlGetVersion", true); }));
    library.Init(L"NoSuchLibrary.dll", nullptr, SYSTEM_FOLDER, false);
    EXPECT_EQ(nullptr, library.GetProcAddr(L"f", false));
    EXPECT_EQ(L"0x80004005 OvDynamicLib | Info Msg: Cannot retrieve function pointer; No module has been loaded | "
              L"tzFuncNm: f | m_wzFileNm: NoSuchLibrary.dll",
              Raised([&] { library.GetProcAddr(L"f", true); }));
    const std::wstring strFailure =
        L"0x80004005 OvDynamicLib | Msg: A Win32 API call failed. | Method: LoadLibraryEx | " +
        ErrorItem(L"Win32 Error", ERROR_MOD_NOT_FOUND) + L" | m_wzFileNm: NoSuchLibrary.dll | tzCurrDir: " +
        COvSystem::GetCurrentDirectoryW();
    EXPECT_EQ(strFailure, Raised([] { COvDynamicLib(L"NoSuchLibrary.dll", nullptr, SYSTEM_FOLDER); }));
    BOOL bWow64 = -1;
    EXPECT_TRUE(CApi_Kernel32().IsWow64Process(::GetCurrentProcess(), &bWow64));
    EXPECT_EQ(sizeof(void*) == 4, bWow64 != FALSE);
}

TEST(OvDynamicLib, LoadsFromTheSystemsFolderWhereTheFlagForItIsUnknown)
{
    const HMODULE hProgram = ::GetModuleHandleW(nullptr);
    const void* const pReal = reinterpret_cast<const void*>(::LoadLibraryExW);
    const void* const pWithoutFlag = reinterpret_cast<const void*>(LoadWithoutFlag);
    wchar_t szFolder[MAX_PATH] = {};
    ASSERT_NE(0u, ::GetSystemDirectoryW(szFolder, MAX_PATH));
    ReplaceImport(hProgram, pReal, pWithoutFlag);
    COvDynamicLib library;
    const std::wstring strRaised = Raised([&] {
        library.Init(L"version.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32, true);
        library.Init(L"NoSuch.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32, true);
    });
    ReplaceImport(hProgram, pWithoutFlag, pReal);
    EXPECT_EQ((std::vector<std::wstring>{ szFolder + std::wstring(L"\\version.dll"),
                                          szFolder + std::wstring(L"\\NoSuch.dll") }),
              s_loaded);
    EXPECT_EQ(L"0x80004005 OvDynamicLib | Msg: A Win32 API call failed. | Method: LoadLibraryEx | " +
                  ErrorItem(L"Win32 Error", ERROR_MOD_NOT_FOUND) + L" | m_wzFileNm: NoSuch.dll | tzCurrDir: " +
                  COvSystem::GetCurrentDirectoryW(),
              strRaised);
}
