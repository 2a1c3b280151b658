// What the helpers do when the system's calls fail: the calls are replaced at link time.
#include "ovCore/OvFile.h"
#include "ovCore/OvOsRecord.h"
#include "ovCore/OvSystem.h"
#include "ovCore/OvVersionResource.h"

#include "Platform/Control.h"
#include "Raised.h"
#include "TestPlatform.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace
{

DWORD s_dwLength = 0; // what the calls for a directory and a module's name answer; 0: they fail
bool s_bVersionFails = false;
std::string s_missing;             // a function that a library lacks
VS_FIXEDFILEINFO s_fixedInfo = {}; // what a file tells; its signature 0: nothing of its version

DWORD Fail(DWORD dwError)
{
    ::SetLastError(dwError);
    return 0;
}

template <class Function>
FARPROC Address(Function* pFunction)
{
    return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(pFunction));
}

DWORD VersionSize(LPCWSTR, LPDWORD)
{
    return 100;
}

BOOL VersionInfo(LPCWSTR, DWORD, DWORD, LPVOID)
{
    return s_bVersionFails ? static_cast<BOOL>(Fail(ERROR_SHARING_VIOLATION)) : TRUE;
}

BOOL VersionPart(LPCVOID, LPCWSTR szSubBlock, LPVOID* ppValue, UINT* pnLength)
{
    *ppValue = std::wstring(szSubBlock) == L"null" ? nullptr : &s_fixedInfo;
    *pnLength = std::wstring(szSubBlock) == L"empty" ? 0 : s_fixedInfo.dwSignature != 0 ? sizeof(s_fixedInfo) : 5;
    return TRUE;
}

} // namespace

extern "C"
{
    DWORD __wrap_GetCurrentDirectoryW(DWORD nUnits, LPWSTR szBuffer)
    {
        std::fill_n(szBuffer, std::min(nUnits, s_dwLength), L'n');
        return s_dwLength != 0 ? s_dwLength : Fail(ERROR_ACCESS_DENIED);
    }
    DWORD __wrap_GetModuleFileNameW(HMODULE, LPWSTR szBuffer, DWORD nUnits)
    {
        std::fill_n(szBuffer, std::min(nUnits, s_dwLength), L'n');
        return std::min(nUnits, s_dwLength);
    }
    HANDLE __wrap_CreateFileW(LPCWSTR, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE)
    {
        return ::CreateEventW(nullptr, TRUE, FALSE, nullptr); // something to close
    }
    FARPROC __real_GetProcAddress(HMODULE hModule, LPCSTR szName);
    FARPROC __wrap_GetProcAddress(HMODULE hModule, LPCSTR szName)
    {
        const std::string name = szName;
        return name == s_missing                   ? nullptr
               : name == "GetFileVersionInfoSizeW" ? Address(VersionSize)
               : name == "GetFileVersionInfoW"     ? Address(VersionInfo)
               : name == "VerQueryValueW"          ? Address(VersionPart)
                                                   : __real_GetProcAddress(hModule, szName);
    }
}

TEST(SystemFailure, ATextThatDoesNotFitIsAFailureOrCut)
{
    const std::wstring begin =
        L"0x80004005 OvSystem | Msg: A Win32 API call failed. | Method: ::GetCurrentDirectory | ";
    for (const DWORD dwLength : { 1023, 1024, 0 })
    {
        s_dwLength = dwLength;
        ::SetLastError(ERROR_SUCCESS);
        const std::wstring failure = begin + ErrorItem(L"Win32 Error", dwLength == 0 ? ERROR_ACCESS_DENIED : 0);
        EXPECT_EQ(dwLength == 1023 ? L"nothing" : failure,
                  Raised([] { EXPECT_EQ(std::wstring(1023, L'n'), COvSystem::GetCurrentDirectoryW()); }));
    }
    s_dwLength = 2000;
    EXPECT_EQ(std::wstring(1023, L'n'), COvFile::GetModuleFileNameW(nullptr));
}

TEST(SystemFailure, AVersionThatCannotBeReadIsRaisedAndForgotten)
{
    COvVersionResource resource;
    ASSERT_TRUE(resource.Open(L"a"));
    void* pValue = nullptr;
    UINT nLength = 0;
    EXPECT_TRUE(resource.Query(L"part", &pValue, &nLength));
    EXPECT_FALSE(resource.Query(L"empty", &pValue, &nLength));
    EXPECT_FALSE(resource.Query(L"null", &pValue, &nLength));
    EXPECT_EQ(nullptr, resource.FixedInfoOpt()); // too short
    s_bVersionFails = true;
    EXPECT_EQ(L"0x80004005 OvVersionResource | Method: GetFileVersionInfo | " +
                  ErrorItem(L"Win32 GetLastError", ERROR_SHARING_VIOLATION),
              Raised([&] { resource.Open(L"a"); }));
    s_bVersionFails = false;
    EXPECT_FALSE(resource.Query(L"part", &pValue, &nLength));
    s_missing = "GetFileVersionInfoSizeW";
    EXPECT_FALSE(resource.Open(L"a"));
    s_missing.clear();
}

TEST(SystemFailure, WhereTheSystemHidesItsVersionAFileOfItTells)
{
    const CScratchRegistry registry;
    OvPlatform::CSystemRecord system;
    system.missingFunctions = { "RtlGetVersion" };
    system.nReportedMajor = 6;
    s_dwLength = 8;
    s_fixedInfo.dwSignature = 0xFEEF04BD;
    s_fixedInfo.dwFileVersionMS = 0x000A0000;
    for (const DWORD dwMinor : { 3, 2 }) // only a 6.3 may be a later one
    {
        system.nReportedMinor = dwMinor;
        OvPlatform::SetSystemRecord(system);
        EXPECT_EQ(dwMinor == 3 ? 10u : 6u, OvReadOsRecord().actual.dwMajor);
    }
    OvPlatform::SetSystemRecord(OvPlatform::CSystemRecord());
}
