// What the helpers do when the system's calls fail: the calls are replaced at link time.
#include "ovCore/OvFile.h"
#include "ovCore/OvOsRecord.h"
#include "ovCore/OvSystem.h"
#include "ovCore/OvVersion.h"
#include "ovCore/OvVersionResource.h"

#include "Platform/Control.h"
#include "Raised.h"
#include "ScratchRegistry.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace
{

DWORD s_dwDirectoryLength = 0; // what the call for the current directory answers
DWORD s_dwNameLength = 0;      // what the call for a module's name answers, at most its room
bool s_bVersionFails = false;
VS_FIXEDFILEINFO s_fixedInfo = {}; // what a file tells; its signature 0: nothing of its version

DWORD Fail(DWORD dwError)
{
    ::SetLastError(dwError);
    return 0;
}

} // namespace

extern "C"
{
    DWORD __wrap_GetCurrentDirectoryW(DWORD nUnits, LPWSTR szBuffer)
    {
        std::fill_n(szBuffer, std::min(nUnits, s_dwDirectoryLength), L'd');
        return s_dwDirectoryLength != 0 ? s_dwDirectoryLength : Fail(ERROR_ACCESS_DENIED);
    }

    DWORD __wrap_GetModuleFileNameW(HMODULE, LPWSTR szBuffer, DWORD nUnits)
    {
        const DWORD dwLength = std::min(nUnits, s_dwNameLength);
        std::fill_n(szBuffer, dwLength, L'n');
        return dwLength;
    }

    HANDLE __wrap_CreateFileW(LPCWSTR, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE)
    {
        return ::CreateEventW(nullptr, TRUE, FALSE, nullptr); // something to close
    }

    DWORD __wrap_GetFileVersionInfoSizeW(LPCWSTR, LPDWORD)
    {
        return 100;
    }

    BOOL __wrap_GetFileVersionInfoW(LPCWSTR, DWORD, DWORD, LPVOID)
    {
        return s_bVersionFails ? static_cast<BOOL>(Fail(ERROR_SHARING_VIOLATION)) : TRUE;
    }

    BOOL __wrap_VerQueryValueW(LPCVOID, LPCWSTR szSubBlock, LPVOID* ppValue, UINT* pnLength)
    {
        static wchar_t s_value[] = L"value";
        if (std::wstring(szSubBlock) == L"\\" && s_fixedInfo.dwSignature != 0)
        {
            *ppValue = &s_fixedInfo;
            *pnLength = sizeof(s_fixedInfo);
            return TRUE;
        }
        const bool bEmpty = std::wstring(szSubBlock) == L"empty";
        *ppValue = std::wstring(szSubBlock) == L"null" ? nullptr : s_value;
        *pnLength = bEmpty ? 0 : 5;
        return TRUE;
    }
}

TEST(SystemFailure, ATextThatDoesNotFitIsAFailureOrCut)
{
    for (const DWORD dwLength : { 1023, 1024, 0 })
    {
        s_dwDirectoryLength = dwLength;
        ::SetLastError(ERROR_SUCCESS);
        std::wstring strRead;
        const std::wstring strRaised = Raised([&] { strRead = COvSystem::GetCurrentDirectoryW(); });
        EXPECT_EQ(std::wstring(dwLength == 1023 ? dwLength : 0, L'd'), strRead);
        EXPECT_EQ(dwLength == 1023 ? L"nothing"
                                   : L"0x80004005 OvSystem | Msg: A Win32 API call failed. | Method: "
                                     L"::GetCurrentDirectory | " +
                                         ErrorItem(L"Win32 Error", dwLength == 0 ? ERROR_ACCESS_DENIED : 0),
                  strRaised);
    }
    for (const DWORD dwLength : { 1023, 2000 })
    {
        s_dwNameLength = dwLength;
        EXPECT_EQ(std::wstring(1023, L'n'), COvFile::GetModuleFileNameW(nullptr));
    }
}

TEST(SystemFailure, AVersionThatCannotBeReadIsRaisedAndForgotten)
{
    COvVersionResource resource;
    s_bVersionFails = false;
    ASSERT_TRUE(resource.Open(L"a"));
    void* pValue = nullptr;
    UINT nLength = 0;
    EXPECT_TRUE(resource.Query(L"part", &pValue, &nLength));
    EXPECT_FALSE(resource.Query(L"empty", &pValue, &nLength));
    EXPECT_FALSE(resource.Query(L"null", &pValue, &nLength));
    COvVersion version;
    EXPECT_FALSE(resource.GetVersion(version)); // a part too short for the fixed information
    s_bVersionFails = true;
    EXPECT_EQ(L"0x80004005 OvVersionResource | Method: GetFileVersionInfo | " +
                  ErrorItem(L"Win32 GetLastError", ERROR_SHARING_VIOLATION),
              Raised([&] { resource.Open(L"a"); }));
    EXPECT_FALSE(resource.Query(L"part", &pValue, &nLength));
}

TEST(SystemFailure, WhereTheSystemHidesItsVersionAFileOfItTells)
{
    const struct
    {
        DWORD dwMinor;
        DWORD dwSignature;
        DWORD dwBuild;
    } rows[] = {
        { 3, 0xFEEF04BD, 22621 },
        { 3, 0, 9600 },          // no version in the file
        { 2, 0xFEEF04BD, 9600 }, // only a 6.3 may be a later one
    };
    const CScratchRegistry registry;
    OvPlatform::CSystemRecord system;
    system.missingFunctions = { "RtlGetVersion" };
    system.nReportedMajor = 6;
    system.nReportedBuild = 9600;
    s_dwNameLength = 8;
    s_bVersionFails = false;
    s_fixedInfo.dwFileVersionMS = 0x000A0000;
    s_fixedInfo.dwFileVersionLS = 22621u << 16;
    for (const auto& row : rows)
    {
        system.nReportedMinor = row.dwMinor;
        s_fixedInfo.dwSignature = row.dwSignature;
        OvPlatform::SetSystemRecord(system);
        EXPECT_EQ(row.dwBuild, OvReadOsRecord().actual.dwBuild);
    }
    s_fixedInfo.dwSignature = 0;
    OvPlatform::SetSystemRecord(OvPlatform::CSystemRecord());
}
