#include "ovCore/OVOsVersion.h"

#include "ovCore/OvDynamicAPI.h"

#include <gtest/gtest.h>

namespace
{

constexpr LONG UNKNOWN = COvOsRecord::PRODUCT_TYPE_UNKNOWN;
constexpr LONG WORKSTATION = VER_NT_WORKSTATION;
constexpr LONG CONTROLLER = VER_NT_DOMAIN_CONTROLLER;
constexpr LONG SERVER = VER_NT_SERVER;
constexpr DWORD WIN9X = VER_PLATFORM_WIN32_WINDOWS;
constexpr DWORD NT = VER_PLATFORM_WIN32_NT;

COvOsRecord Record(DWORD dwPlatform, const COvOsNumber& actual, LONG lProductType)
{
    COvOsRecord record;
    record.dwPlatform = dwPlatform;
    record.reported = { 6, 2, 9200 }; // what a program without a manifest is told
    record.actual = actual;
    record.lProductType = lProductType;
    return record;
}

} // namespace

TEST(OvOsVersion, ClassifiesByTheTrueVersion)
{
    const struct
    {
        DWORD dwPlatform;
        COvOsNumber actual;
        LONG lProductType;
        LONG lFlavour;
    } rows[] = {
        { VER_PLATFORM_WIN32s, { 1, 25, 0 }, UNKNOWN, OsWin32s },
        { VER_PLATFORM_WIN32s, { 10, 0, 19045 }, WORKSTATION, OsWin32s },
        { 3, { 5, 0, 2195 }, WORKSTATION, OsUnknown }, // CE
        { 4, { 10, 0, 19045 }, WORKSTATION, OsUnknown },

        { WIN9X, { 4, 0, 949 }, UNKNOWN, OsUnknown },
        { WIN9X, { 4, 0, 950 }, UNKNOWN, OsWindows95 },
        { WIN9X, { 4, 1, 950 }, UNKNOWN, OsUnknown },
        { WIN9X, { 4, 0, 951 }, UNKNOWN, OsWindows95 },
        { WIN9X, { 4, 3, 1080 }, UNKNOWN, OsWindows95 },
        { WIN9X, { 4, 0, 1081 }, UNKNOWN, OsWindows95 },
        { WIN9X, { 4, 3, 1214 }, UNKNOWN, OsWindows95 },
        { WIN9X, { 4, 9, 65535 }, UNKNOWN, OsWindows95 },
        { WIN9X, { 4, 10, 950 }, UNKNOWN, OsUnknown },
        { WIN9X, { 4, 10, 951 }, UNKNOWN, OsWindows95 }, // any minor number has these builds
        { WIN9X, { 4, 90, 1080 }, UNKNOWN, OsWindows95 },
        { WIN9X, { 4, 10, 1081 }, UNKNOWN, OsUnknown },
        { WIN9X, { 4, 10, 1997 }, UNKNOWN, OsUnknown },
        { WIN9X, { 4, 10, 1998 }, UNKNOWN, OsWindows98 },
        { WIN9X, { 4, 10, 2182 }, UNKNOWN, OsWindows98 },
        { WIN9X, { 4, 10, 2183 }, UNKNOWN, OsUnknown },
        { WIN9X, { 4, 11, 1998 }, UNKNOWN, OsUnknown },
        { WIN9X, { 4, 90, 950 }, UNKNOWN, OsWindowsMe },
        { WIN9X, { 4, 90, 3000 }, UNKNOWN, OsWindowsMe },
        { WIN9X, { 4, 91, 3000 }, UNKNOWN, OsUnknown },
        { WIN9X, { 3, 0, 950 }, UNKNOWN, OsUnknown },
        { WIN9X, { 5, 0, 950 }, UNKNOWN, OsUnknown },

        { NT, { 3, 9, 1 }, UNKNOWN, OsUnknown },
        { NT, { 3, 10, 528 }, UNKNOWN, OsWindowsNt },
        { NT, { 3, 50, 807 }, WORKSTATION, OsWindowsNt },
        { NT, { 3, 51, 1057 }, SERVER, OsWindowsNt },
        { NT, { 3, 52, 1 }, SERVER, OsUnknown },
        { NT, { 4, 0, 1381 }, WORKSTATION, OsWindowsNt },
        { NT, { 4, 99, 1 }, UNKNOWN, OsWindowsNt },
        { NT, { 5, 0, 2195 }, WORKSTATION, OsWindows2000 },
        { NT, { 5, 0, 2195 }, CONTROLLER, OsWindows2000 },
        { NT, { 5, 0, 2195 }, UNKNOWN, OsWindows2000 },
        { NT, { 5, 1, 2600 }, WORKSTATION, OsWindowsXp },
        { NT, { 5, 2, 3790 }, WORKSTATION, OsWindowsXp },
        { NT, { 5, 2, 3790 }, SERVER, OsServer2003 },
        { NT, { 5, 1, 3590 }, CONTROLLER, OsServer2003 },
        { NT, { 5, 2, 3790 }, UNKNOWN, OsUnknown },
        { NT, { 6, 0, 6002 }, WORKSTATION, OsVista },
        { NT, { 6, 0, 6002 }, SERVER, OsServer2008 },
        { NT, { 6, 1, 7601 }, CONTROLLER, OsServer2008 },
        { NT, { 6, 1, 7601 }, WORKSTATION, OsWindows7 },
        { NT, { 6, 1, 7601 }, UNKNOWN, OsUnknown },
        { NT, { 6, 2, 9200 }, WORKSTATION, OsWindows8 },
        { NT, { 6, 3, 9600 }, WORKSTATION, OsWindows8 },
        { NT, { 6, 2, 9200 }, SERVER, OsServer2012 },
        { NT, { 6, 3, 9600 }, CONTROLLER, OsServer2012 },
        { NT, { 6, 4, 9841 }, WORKSTATION, OsWindows10 },
        { NT, { 6, 4, 9841 }, SERVER, OsServer2016 },
        { NT, { 7, 0, 1 }, WORKSTATION, OsWindows10 },
        { NT, { 10, 0, 22631 }, WORKSTATION, OsWindows10 },
        { NT, { 10, 0, 17599 }, SERVER, OsServer2016 },
        { NT, { 10, 0, 17599 }, CONTROLLER, OsServer2016 },
        { NT, { 10, 0, 17600 }, SERVER, OsServerLater },
        { NT, { 11, 0, 17600 }, CONTROLLER, OsServerLater },
        { NT, { 10, 0, 17600 }, UNKNOWN, OsUnknown },
    };
    for (const auto& row : rows)
    {
        const COvOsRecord record = Record(row.dwPlatform, row.actual, row.lProductType);
        EXPECT_EQ(row.lFlavour, OvOsFlavourOf(record))
            << row.dwPlatform << ": " << row.actual.dwMajor << "." << row.actual.dwMinor << "." << row.actual.dwBuild
            << " type " << row.lProductType;
        COVOsVersion version;
        version.Load(record);
        EXPECT_EQ(row.lFlavour, version.GetFlavour());
        EXPECT_EQ(row.lFlavour >= 6, version.IsPlatformNtBased()) << row.lFlavour;
        EXPECT_EQ(row.lFlavour >= 3 && row.lFlavour <= 5, version.IsPlatform9xBased()) << row.lFlavour;
        EXPECT_EQ(row.lFlavour != OsUnknown, version.IsPartSet(COVOsVersion::PartFlavour));
    }
}

TEST(OvOsVersion, KnowsTheSecondReleases)
{
    const struct
    {
        COvOsNumber actual;
        LONG lProductType;
        bool bServerR2;
        LONG lRelease;
    } rows[] = {
        { { 5, 2, 3790 }, SERVER, true, ReleaseR2 },         { { 5, 2, 3790 }, SERVER, false, ReleaseFirst },
        { { 5, 2, 3790 }, CONTROLLER, true, ReleaseFirst },  { { 5, 2, 3790 }, WORKSTATION, true, ReleaseFirst },
        { { 6, 0, 6002 }, SERVER, true, ReleaseFirst },      { { 6, 1, 7601 }, SERVER, false, ReleaseR2 },
        { { 6, 2, 9200 }, SERVER, true, ReleaseFirst },      { { 6, 3, 9600 }, CONTROLLER, false, ReleaseR2 },
        { { 6, 1, 7601 }, WORKSTATION, true, ReleaseFirst }, { { 10, 0, 20348 }, SERVER, true, ReleaseFirst },
    };
    for (const auto& row : rows)
    {
        COvOsRecord record = Record(NT, row.actual, row.lProductType);
        record.bServerR2 = row.bServerR2;
        COVOsVersion version;
        version.Load(record);
        EXPECT_EQ(row.lRelease, version.GetRelease()) << row.actual.dwMajor << "." << row.actual.dwMinor;
    }
}

TEST(OvOsVersion, NamesTheEditionByTheFirstTestThatHolds)
{
    const struct
    {
        COvOsNumber actual;
        LONG lProductType;
        WORD wSuite;
        DWORD dwProductInfo;
        const wchar_t* szEdition;
        LONG lDesignation;
    } rows[] = {
        { { 5, 1, 2600 }, WORKSTATION, 0, 0, L"", EditionProfessional },
        { { 5, 1, 2600 }, WORKSTATION, VER_SUITE_PERSONAL, 0, L"", EditionHome },
        { { 5, 1, 2600 }, WORKSTATION, VER_SUITE_EMBEDDEDNT, 0, L"", EditionEmbedded },
        { { 5, 2, 3790 }, SERVER, 0, 0, L"", EditionStandardServer },
        { { 5, 2, 3790 }, SERVER, VER_SUITE_BLADE, 0, L"", EditionWebServer },
        { { 5, 2, 3790 }, SERVER, VER_SUITE_ENTERPRISE | VER_SUITE_DATACENTER, 0, L"", EditionDatacenter },
        { { 4, 0, 1381 }, SERVER, VER_SUITE_ENTERPRISE, 0, L"", EditionAdvancedServer },
        { { 4, 0, 1381 }, UNKNOWN, 0, 0, L"", EditionUnknown },
        { { 6, 1, 7601 }, WORKSTATION, 0, 1, L"", EditionUltimate },
        { { 10, 0, 19045 }, WORKSTATION, 0, 48, L"Enterprise", EditionProfessional }, // the number comes first
        { { 10, 0, 19045 }, WORKSTATION, 0, 0xABCD, L"EnterpriseS", EditionEnterprise },
        { { 10, 0, 20348 }, SERVER, 0, 0xABCD, L"ServerDatacenter", EditionDatacenter },
        { { 10, 0, 20348 }, SERVER, 0, 0xABCD, L"", EditionStandardServer },
        { { 10, 0, 19045 }, WORKSTATION, VER_SUITE_PERSONAL, 0xABCD, L"", EditionUnknown },
    };
    for (const auto& row : rows)
    {
        COvOsRecord record = Record(NT, row.actual, row.lProductType);
        record.wSuite = row.wSuite;
        record.dwProductInfo = row.dwProductInfo;
        record.strEdition = row.szEdition;
        COVOsVersion version;
        version.Load(record);
        EXPECT_EQ(row.lDesignation, version.GetDesignation()) << row.lDesignation;
        EXPECT_EQ(row.lDesignation != EditionUnknown, version.IsPartSet(COVOsVersion::PartDesignation));
    }
    COvOsRecord record = Record(NT, { 5, 1, 2600 }, WORKSTATION);
    record.bTabletPc = true;
    EXPECT_EQ(EditionTabletPc, OvOsDesignationOf(OsWindowsXp, record));
    record.bMediaCenter = true;
    EXPECT_EQ(EditionMediaCenter, OvOsDesignationOf(OsWindowsXp, record));
    record.strBuildType = L"Uniprocessor Checked";
    EXPECT_EQ(EditionCheckedBuild, OvOsDesignationOf(OsWindowsXp, record));
    EXPECT_EQ(EditionUnknown, OvOsDesignationOf(OsUnknown, record));
    record = Record(NT, { 5, 0, 2195 }, SERVER);
    record.bTerminalServer = true;
    EXPECT_EQ(EditionTerminalServer, OvOsDesignationOf(OsWindows2000, record));
}

TEST(OvOsVersion, MapsTheMachinesProcessor)
{
    const LONG lExpected[] = { 0, 1, 2, 3, -1, -1, 9, 2, -1, 9, -1, -1, -1 }; // by PROCESSOR_ARCHITECTURE_*
    for (WORD w = 0; w < std::size(lExpected); ++w)
    {
        COvOsRecord record = Record(NT, { 10, 0, 1 }, WORKSTATION);
        record.wArchitecture = w;
        COVOsVersion version;
        version.Load(record);
        EXPECT_EQ(lExpected[w], version.GetArchitecture()) << w;
        EXPECT_EQ(lExpected[w] == 9, version.IsPlatform64()) << w;
        EXPECT_EQ(lExpected[w] != -1, version.IsPartSet(COVOsVersion::PartArchitecture)) << w;
    }
    EXPECT_EQ(-1, OvOsArchitectureOf(PROCESSOR_ARCHITECTURE_UNKNOWN));
}

TEST(OvOsVersion, SaysWhichPartsAreDetermined)
{
    COvOsRecord record = Record(NT, { 10, 0, 19045 }, UNKNOWN);
    record.wServicePackMajor = 3;
    record.wServicePackMinor = 1;
    COVOsVersion partly;
    partly.Load(record);
    record.lProductType = WORKSTATION;
    record.dwProductInfo = 48;
    record.wArchitecture = PROCESSOR_ARCHITECTURE_AMD64;
    COVOsVersion whole;
    whole.Load(record);
    const COVOsVersion none;

    const bool bPartly[] = { false, false, true, true, false, false, true, true };
    for (size_t nBit = 0; nBit < 8; ++nBit)
    {
        EXPECT_TRUE(none.AreBothPartsSet(whole, whole, nBit)) << nBit;
        EXPECT_EQ(bPartly[nBit], none.AreBothPartsSet(whole, partly, nBit)) << nBit;
        EXPECT_EQ(bPartly[nBit], none.AreBothPartsSet(partly, whole, nBit)) << nBit;
        EXPECT_FALSE(none.AreBothPartsSet(none, whole, nBit)) << nBit;
    }
    EXPECT_THROW(none.AreBothPartsSet(none, whole, 8), std::out_of_range);
    EXPECT_THROW(none.AreBothPartsSet(whole, whole, SIZE_MAX), std::out_of_range);
    EXPECT_EQ(L"6.2.9200", whole.GetVersion().AsStr());
    EXPECT_EQ(L"3.1", whole.GetServicePack().AsStr());
    EXPECT_EQ(WORKSTATION, whole.GetProductType());
    EXPECT_EQ(48u, whole.GetProductInfo());
}

TEST(OvOsVersion, TheRunningSystemIsA64BitOneOfTheNtFamily)
{
    const COVOsVersion& current = COVOsVersion::GetCurrent();
    EXPECT_EQ(&current, &COVOsVersion::GetCurrent());
    EXPECT_TRUE(current.IsPlatformNtBased());
    EXPECT_FALSE(current.IsPlatform9xBased());
    EXPECT_EQ(9, current.GetArchitecture());
    EXPECT_TRUE(current.IsPlatform64()); // in a 32-bit process too
    EXPECT_TRUE(current.GetVersion().IsValid());
    const bool bIs32BitProcess = sizeof(void*) == 4;
    EXPECT_EQ(bIs32BitProcess, COvDynamicAPI::Get().IsCurrentProcessWow64());
    BOOL bWow64 = -1;
    EXPECT_FALSE(COvDynamicAPI::Get().IsWow64Process(::GetCurrentProcess(), &bWow64)); // false: it was answered
    EXPECT_EQ(bIs32BitProcess, bWow64 != FALSE);
}
