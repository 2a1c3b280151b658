#include "ovCore/OvDynamicLib.h"

#include "Api_Kernel32.h"
#include "ovCore/OvSystem.h"
#include "Raised.h"

#include <gtest/gtest.h>

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
