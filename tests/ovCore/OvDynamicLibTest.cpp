#include "ovCore/OvDynamicLib.h"

#include "Api_Kernel32.h"
#include "ovCore/OvSystem.h"
#include "Raised.h"

#include <gtest/gtest.h>

namespace
{

constexpr DWORD SYSTEM_FOLDER = LOAD_LIBRARY_SEARCH_SYSTEM32;

} // namespace

TEST(OvDynamicLib, FindsFunctionsOfALoadedLibrary)
{
    COvDynamicLib library(L"kernel32.dll", nullptr, SYSTEM_FOLDER);
    const auto pFunction = library.GetProc<BOOL WINAPI(HANDLE, BOOL*)>(L"IsWow64Process", true);
    ASSERT_NE(nullptr, pFunction);
    BOOL bWow64 = -1;
    EXPECT_TRUE(pFunction(::GetCurrentProcess(), &bWow64));
    EXPECT_EQ(sizeof(void*) == 4, bWow64 != FALSE);
    EXPECT_EQ(nullptr, library.GetProcAddr(L"NoSuchFunction", false));
    EXPECT_EQ(L"0x80004005 OvDynamicLib | Msg: A Win32 API call failed. | Method: GetProcAddress | tzFuncNm: "
              L"NoSuchFunction | m_wzFileNm: kernel32.dll",
              Raised([&] { library.GetProcAddr(L"NoSuchFunction", true); }));
    CApi_Kernel32 kernel;
    EXPECT_TRUE(kernel.IsWow64Process(::GetCurrentProcess(), &bWow64));
    EXPECT_EQ(sizeof(void*) == 4, bWow64 != FALSE);
}

TEST(OvDynamicLib, AFailedLoadNamesTheLibraryAndTheFolder)
{
    const std::wstring strFailure =
        L"0x80004005 OvDynamicLib | Msg: A Win32 API call failed. | Method: LoadLibraryEx | " +
        ErrorItem(L"Win32 Error", ERROR_MOD_NOT_FOUND) + L" | m_wzFileNm: NoSuchLibrary.dll | tzCurrDir: " +
        COvSystem::GetCurrentDirectoryW();
    EXPECT_EQ(strFailure, Raised([] { COvDynamicLib(L"NoSuchLibrary.dll", nullptr, SYSTEM_FOLDER); }));
    COvDynamicLib library;
    EXPECT_EQ(L"nothing", Raised([&] { library.Init(L"NoSuchLibrary.dll", nullptr, SYSTEM_FOLDER, false); }));
    EXPECT_EQ(nullptr, library.GetProcAddr(L"f", false));
    EXPECT_EQ(L"0x80004005 OvDynamicLib | Info Msg: Cannot retrieve function pointer; No module has been loaded | "
              L"tzFuncNm: f | m_wzFileNm: NoSuchLibrary.dll",
              Raised([&] { library.GetProcAddr(L"f", true); }));
}

TEST(OvDynamicLib, WithoutANameNothingHappens)
{
    COvDynamicLib library(L"kernel32.dll", nullptr, SYSTEM_FOLDER);
    library.Init(nullptr, nullptr, 0, true);
    library.Init(L"", nullptr, 0, true);
    EXPECT_NE(nullptr, library.GetProcAddr(L"IsWow64Process", false));
    EXPECT_EQ(nullptr, COvDynamicLib(nullptr, nullptr, 0).GetProcAddr(L"f", false));
}

TEST(OvDynamicLib, ClearsAndLoadsAgain)
{
    COvDynamicLib library(L"ntdll.dll", nullptr, SYSTEM_FOLDER);
    EXPECT_NE(nullptr, library.GetProcAddr(L"RtlGetVersion", false));
    library.Init(L"kernel32.dll", nullptr, SYSTEM_FOLDER, true);
    EXPECT_EQ(nullptr, library.GetProcAddr(L"RtlGetVersion", false));
    EXPECT_NE(nullptr, library.GetProcAddr(L"IsWow64Process", false));
    library.Clear();
    library.Clear();
    EXPECT_EQ(nullptr, library.GetProcAddr(L"IsWow64Process", false));
}
