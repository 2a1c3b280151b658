// What is made of the systems that there are: the stand-in pretends to be one after the other.
#include "ovCore/OVOsVersion.h"

#include "ovCore/OvDynamicAPI.h"
#include "OvUtf16.h"
#include "Platform/Control.h"
#include "Raised.h"
#include "TestPlatform.h"

#include <gtest/gtest.h>

namespace
{

using OvPlatform::CSystemRecord;

void Store(const wchar_t* szKey, const wchar_t* szName, DWORD dwType, const std::vector<BYTE>& data)
{
    HKEY hKey = nullptr;
    ::RegCreateKeyExW(HKEY_LOCAL_MACHINE, szKey, 0, nullptr, 0, KEY_WRITE, nullptr, &hKey, nullptr);
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

class OvOsRecord : public testing::Test
{
protected:
    ~OvOsRecord() override { OvPlatform::SetSystemRecord(CSystemRecord()); }

    COvOsRecord Read() const
    {
        OvPlatform::SetSystemRecord(m_system);
        return OvReadOsRecord();
    }

    const CScratchRegistry m_registry;
    CSystemRecord m_system;
};

} // namespace

TEST_F(OvOsRecord, EachSourceFillsItsFacts)
{
    m_system.nReportedMajor = 6;
    m_system.nReportedMinor = 2;
    m_system.nServicePackMinor = 5;
    m_system.nSuiteMask = VER_SUITE_BLADE;
    m_system.nProductType = VER_NT_DOMAIN_CONTROLLER;
    m_system.nProductInfo = 8;
    m_system.nServerR2 = 3790;
    m_system.nProcessProcessor = PROCESSOR_ARCHITECTURE_INTEL;
    Store(L"System\\WPA\\MediaCenter", L"Installed", REG_DWORD, { 1, 0, 0, 0 });
    Store(L"System\\WPA\\TabletPC", L"Installed", REG_BINARY, { 1, 0, 0, 0 }); // not a number
    StoreText(s_szVersionKey, L"EditionID", L"ServerDatacenter");
    const COvOsRecord record = Read();
    EXPECT_EQ(L"6.2.19045 10.0.19045", Text(record.reported) + L" " + Text(record.actual));
    EXPECT_EQ(OsServerLater, OvOsFlavourOf(record)); // by the true version
    EXPECT_EQ(5, record.wServicePackMinor);
    EXPECT_EQ(VER_SUITE_BLADE, record.wSuite);
    EXPECT_EQ(8u, record.dwProductInfo);
    EXPECT_TRUE(record.bServerR2 && record.bMediaCenter && !record.bTabletPc);
    EXPECT_EQ(L"ServerDatacenter", record.strEdition);
    EXPECT_EQ(PROCESSOR_ARCHITECTURE_AMD64, record.wArchitecture); // the machine's
    m_system.missingFunctions = { "GetNativeSystemInfo", "GetProductInfo" };
    EXPECT_EQ(PROCESSOR_ARCHITECTURE_INTEL, Read().wArchitecture);
    EXPECT_EQ(0u, Read().dwProductInfo);
}

TEST_F(OvOsRecord, AnOldSystemIsReadFromThePlainStructureAndTheRegistry)
{
    m_system.nReportedMajor = 4;
    m_system.nReportedMinor = 0;
    m_system.nReportedBuild = 1380;
    m_system.bHasExtendedInfo = false;
    m_system.missingFunctions = { "RtlGetVersion" };
    m_system.servicePack = L"Service Pack 6";
    const std::pair<const wchar_t*, LONG> types[] = { { L"WINNT", VER_NT_WORKSTATION },
                                                      { L"LANMANNT", VER_NT_DOMAIN_CONTROLLER },
                                                      { L"SERVERNT", VER_NT_SERVER },
                                                      { L"other", COvOsRecord::PRODUCT_TYPE_UNKNOWN } };
    for (const auto& [szType, lType] : types)
    {
        StoreText(s_szProductKey, L"ProductType", szType);
        EXPECT_EQ(lType, Read().lProductType) << szType;
    }
    StoreText(s_szProductKey, L"ProductSuite", std::wstring(L"Terminal Server\0Enterprise\0", 27), REG_MULTI_SZ);
    StoreText(s_szVersionKey, L"CurrentBuildNumber", L"1381");
    COvOsRecord record = Read();
    EXPECT_EQ(VER_SUITE_TERMINAL | VER_SUITE_ENTERPRISE, record.wSuite);
    EXPECT_EQ(6, record.wServicePackMajor);
    EXPECT_EQ(0, record.wServicePackMinor);
    EXPECT_EQ(L"4.0.1380 4.0.1381", Text(record.reported) + L" " + Text(record.actual));
    StoreText(L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Hotfix\\Q246009", L"Installed", L"1");
    EXPECT_EQ(1, Read().wServicePackMinor);

    m_system.nPlatformId = VER_PLATFORM_WIN32_WINDOWS;
    m_system.nReportedMinor = 10;
    m_system.nReportedBuild = 0x040A0000 | 1998; // the version stands above the build
    m_system.servicePack = L" A ";
    record = Read();
    EXPECT_EQ(L"4.10.1998", Text(record.actual));
    EXPECT_EQ(0, record.wServicePackMajor);
}

TEST_F(OvOsRecord, OneSourceOfTheVersionIsEnough)
{
    m_system.bHasVersionInfo = false;
    EXPECT_EQ(L"10.0.19045", Text(Read().reported));
    m_system.bHasVersionInfo = true;
    m_system.missingFunctions = { "RtlGetVersion" };
    m_system.nReportedMajor = 6;
    m_system.nReportedMinor = 3;
    EXPECT_EQ(L"6.3.19045", Text(Read().actual)); // and no file to ask instead
}

TEST_F(OvOsRecord, AFirstLoadThatFailedIsNotRepeated)
{
    m_system.bHasVersionInfo = false;
    m_system.missingFunctions = { "RtlGetVersion" };
    const std::wstring strFailure = L"0x80004005 OVOsVersion | Info Msg: Failed Loading OS version information";
    EXPECT_EQ(strFailure, Raised([&] { Read(); }));
    EXPECT_EQ(strFailure, Raised([] { COVOsVersion::GetCurrent(); }));
    OvPlatform::SetSystemRecord(CSystemRecord());
    EXPECT_EQ(L"nothing", Raised([] { EXPECT_EQ(OsUnknown, COVOsVersion::GetCurrent().GetFlavour()); }));
    BOOL bWow64 = -1;
    EXPECT_TRUE(COvDynamicAPI::Get().IsWow64Process(::GetCurrentProcess(), &bWow64)); // true: not answered
    EXPECT_EQ(-1, bWow64);
    EXPECT_FALSE(COvDynamicAPI::Get().IsCurrentProcessWow64());
}
