// What is made of the systems that there are: the stand-in pretends to be one after the other.
#include "ovCore/OVOsVersion.h"

#include "ovCore/OvDynamicAPI.h"
#include "ovCore/OvUtf16.h"
#include "Platform/Control.h"
#include "Raised.h"
#include "ScratchRegistry.h"

#include <gtest/gtest.h>

namespace
{

using OvPlatform::CSystemRecord;

class CPretendedSystem
{
public:
    explicit CPretendedSystem(const CSystemRecord& record) { OvPlatform::SetSystemRecord(record); }
    ~CPretendedSystem() { OvPlatform::SetSystemRecord(CSystemRecord()); }
    CPretendedSystem(const CPretendedSystem&) = delete;
    CPretendedSystem& operator=(const CPretendedSystem&) = delete;
};

COvOsRecord ReadAs(const CSystemRecord& record)
{
    const CPretendedSystem system(record);
    return OvReadOsRecord();
}

void Store(const wchar_t* szKey, const wchar_t* szName, DWORD dwType, const std::vector<BYTE>& data)
{
    HKEY hKey = nullptr;
    ASSERT_EQ(ERROR_SUCCESS,
              ::RegCreateKeyExW(HKEY_LOCAL_MACHINE, szKey, 0, nullptr, 0, KEY_WRITE, nullptr, &hKey, nullptr));
    EXPECT_EQ(ERROR_SUCCESS, ::RegSetValueExW(hKey, szName, 0, dwType, data.data(), static_cast<DWORD>(data.size())));
    ::RegCloseKey(hKey);
}

void StoreText(const wchar_t* szKey, const wchar_t* szName, const std::wstring& strText, DWORD dwType = REG_SZ)
{
    std::vector<BYTE> data(2 * (strText.size() + 1));
    OvPackUtf16(strText.c_str(), strText.size() + 1, data.data());
    Store(szKey, szName, dwType, data);
}

std::wstring Text(const COvOsNumber& number)
{
    return std::to_wstring(number.dwMajor) + L"." + std::to_wstring(number.dwMinor) + L"." +
           std::to_wstring(number.dwBuild);
}

const wchar_t s_szVersionKey[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
const wchar_t s_szProductKey[] = L"System\\CurrentControlSet\\Control\\ProductOptions";

} // namespace

TEST(OvOsRecord, TheTrueVersionIsNotTheReportedOne)
{
    const CScratchRegistry registry;
    CSystemRecord system;
    system.nReportedMajor = 6;
    system.nReportedMinor = 2;
    system.nReportedBuild = 9200;
    const COvOsRecord record = ReadAs(system);
    EXPECT_EQ(L"6.2.9200", Text(record.reported));
    EXPECT_EQ(L"10.0.19045", Text(record.actual));
    EXPECT_EQ(OsWindows10, OvOsFlavourOf(record));
    system.nProductType = VER_NT_SERVER;
    EXPECT_EQ(OsServerLater, OvOsFlavourOf(ReadAs(system)));
}

TEST(OvOsRecord, EachSourceFillsItsFacts)
{
    const CScratchRegistry registry;
    CSystemRecord system;
    system.nServicePackMajor = 2;
    system.nServicePackMinor = 5;
    system.nSuiteMask = VER_SUITE_BLADE;
    system.nProductType = VER_NT_DOMAIN_CONTROLLER;
    system.nProductInfo = 8;
    system.nServerR2 = 3790;
    const BYTE one[] = { 1, 0, 0, 0 };
    Store(L"System\\WPA\\MediaCenter", L"Installed", REG_DWORD, { one, one + 4 });
    Store(L"System\\CurrentControlSet\\Control\\Terminal Server", L"TSAppCompat", REG_DWORD, { one, one + 4 });
    Store(L"System\\WPA\\TabletPC", L"Installed", REG_BINARY, { one, one + 4 }); // not a number
    StoreText(s_szVersionKey, L"EditionID", L"ServerDatacenter");
    StoreText(s_szVersionKey, L"CurrentType", L"Multiprocessor Free");
    const COvOsRecord record = ReadAs(system);
    EXPECT_EQ(DWORD{ VER_PLATFORM_WIN32_NT }, record.dwPlatform);
    EXPECT_EQ(2, record.wServicePackMajor);
    EXPECT_EQ(5, record.wServicePackMinor);
    EXPECT_EQ(VER_SUITE_BLADE, record.wSuite);
    EXPECT_EQ(VER_NT_DOMAIN_CONTROLLER, record.lProductType);
    EXPECT_EQ(8u, record.dwProductInfo);
    EXPECT_TRUE(record.bServerR2);
    EXPECT_TRUE(record.bMediaCenter);
    EXPECT_FALSE(record.bTabletPc);
    EXPECT_TRUE(record.bTerminalServer);
    EXPECT_EQ(L"ServerDatacenter", record.strEdition);
    EXPECT_EQ(L"Multiprocessor Free", record.strBuildType);
}

TEST(OvOsRecord, TheMachinesProcessorCountsNotTheProcesss)
{
    const CScratchRegistry registry;
    CSystemRecord system;
    system.nNativeProcessor = PROCESSOR_ARCHITECTURE_AMD64;
    system.nProcessProcessor = PROCESSOR_ARCHITECTURE_INTEL;
    EXPECT_EQ(PROCESSOR_ARCHITECTURE_AMD64, ReadAs(system).wArchitecture);
    system.missingFunctions = { "GetNativeSystemInfo", "GetProductInfo" };
    EXPECT_EQ(PROCESSOR_ARCHITECTURE_INTEL, ReadAs(system).wArchitecture);
    EXPECT_EQ(0u, ReadAs(system).dwProductInfo);
}

TEST(OvOsRecord, AnOldSystemIsReadFromThePlainStructureAndTheRegistry)
{
    const CScratchRegistry registry;
    CSystemRecord system;
    system.nReportedMajor = 4;
    system.nReportedMinor = 0;
    system.nReportedBuild = 1380;
    system.bHasExtendedInfo = false;
    system.missingFunctions = { "RtlGetVersion" };
    system.servicePack = L"Service Pack 6";
    const struct
    {
        const wchar_t* szProductType;
        LONG lProductType;
    } rows[] = { { L"WINNT", VER_NT_WORKSTATION },
                 { L"LANMANNT", VER_NT_DOMAIN_CONTROLLER },
                 { L"SERVERNT", VER_NT_SERVER },
                 { L"other", COvOsRecord::PRODUCT_TYPE_UNKNOWN } };
    for (const auto& row : rows)
    {
        StoreText(s_szProductKey, L"ProductType", row.szProductType);
        EXPECT_EQ(row.lProductType, ReadAs(system).lProductType) << row.szProductType;
    }
    StoreText(s_szProductKey, L"ProductSuite", std::wstring(L"Terminal Server\0Enterprise\0", 27), REG_MULTI_SZ);
    StoreText(s_szVersionKey, L"CurrentBuildNumber", L"1381");
    COvOsRecord record = ReadAs(system);
    EXPECT_EQ(VER_SUITE_TERMINAL | VER_SUITE_ENTERPRISE, record.wSuite);
    EXPECT_EQ(6, record.wServicePackMajor);
    EXPECT_EQ(0, record.wServicePackMinor);
    EXPECT_EQ(L"4.0.1380", Text(record.reported));
    EXPECT_EQ(L"4.0.1381", Text(record.actual));
    StoreText(L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Hotfix\\Q246009", L"Installed", L"1");
    EXPECT_EQ(1, ReadAs(system).wServicePackMinor);

    system.nPlatformId = VER_PLATFORM_WIN32_WINDOWS;
    system.nReportedMinor = 10;
    system.nReportedBuild = 0x040A0000 | 1998; // the version stands above the build
    system.servicePack = L" A ";
    record = ReadAs(system);
    EXPECT_EQ(L"4.10.1998", Text(record.actual));
    EXPECT_EQ(OsWindows98, OvOsFlavourOf(record));
    EXPECT_EQ(0, record.wServicePackMajor);
}

TEST(OvOsRecord, OneSourceOfTheVersionIsEnough)
{
    const CScratchRegistry registry;
    CSystemRecord system;
    system.bHasVersionInfo = false;
    EXPECT_EQ(L"10.0.19045", Text(ReadAs(system).reported));
    system.bHasVersionInfo = true;
    system.missingFunctions = { "RtlGetVersion" };
    system.nReportedMajor = 6;
    system.nReportedMinor = 3;
    EXPECT_EQ(L"6.3.19045", Text(ReadAs(system).actual)); // and no file to ask instead
}

TEST(OvOsRecord, AFirstLoadThatFailedIsNotRepeated)
{
    const CScratchRegistry registry;
    CSystemRecord unknown;
    unknown.bHasVersionInfo = false;
    unknown.missingFunctions = { "RtlGetVersion" };
    const std::wstring strFailure = L"0x80004005 OVOsVersion | Info Msg: Failed Loading OS version information";
    {
        const CPretendedSystem system(unknown);
        EXPECT_EQ(strFailure, Raised([] { OvReadOsRecord(); }));
        EXPECT_EQ(strFailure, Raised([] { COVOsVersion::GetCurrent(); }));
    }
    COVOsVersion* pCurrent = nullptr;
    EXPECT_EQ(L"nothing", Raised([&] { pCurrent = &COVOsVersion::GetCurrent(); }));
    EXPECT_EQ(OsUnknown, pCurrent->GetFlavour());
    EXPECT_FALSE(pCurrent->IsPlatform64());
    BOOL bWow64 = -1;
    EXPECT_TRUE(COvDynamicAPI::Get().IsWow64Process(::GetCurrentProcess(), &bWow64)); // true: not answered
    EXPECT_EQ(-1, bWow64);
    EXPECT_FALSE(COvDynamicAPI::Get().IsCurrentProcessWow64());
    pCurrent->LoadCurrent();
    EXPECT_EQ(OsWindows10, pCurrent->GetFlavour());
    EXPECT_FALSE(COvDynamicAPI::Get().IsWow64Process(::GetCurrentProcess(), &bWow64));
}
