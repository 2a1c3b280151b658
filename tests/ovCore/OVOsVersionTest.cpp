#include "ovCore/OVOsVersion.h"

#include "ovCore/OvDynamicAPI.h"

#include <gtest/gtest.h>

namespace
{

constexpr LONG UNKNOWN = COvOsRecord::PRODUCT_TYPE_UNKNOWN;
constexpr LONG CLIENT = VER_NT_WORKSTATION;
constexpr LONG DC = VER_NT_DOMAIN_CONTROLLER;
constexpr LONG SERVER = VER_NT_SERVER;
constexpr DWORD W32S = VER_PLATFORM_WIN32s;
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

COVOsVersion Version(const COvOsRecord& record)
{
    COVOsVersion version;
    version.Load(record);
    return version;
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
    } rows[] = { { W32S, { 1, 25, 0 }, UNKNOWN, OsWin32s },        { W32S, { 10, 0, 19045 }, CLIENT, OsWin32s },
                 { 3, { 5, 0, 2195 }, CLIENT, OsUnknown },         { 4, { 10, 0, 19045 }, CLIENT, OsUnknown },
                 { WIN9X, { 4, 0, 949 }, UNKNOWN, OsUnknown },     { WIN9X, { 4, 0, 950 }, UNKNOWN, OsWindows95 },
                 { WIN9X, { 4, 1, 950 }, UNKNOWN, OsUnknown },     { WIN9X, { 4, 0, 951 }, UNKNOWN, OsWindows95 },
                 { WIN9X, { 4, 3, 1080 }, UNKNOWN, OsWindows95 },  { WIN9X, { 4, 0, 1081 }, UNKNOWN, OsWindows95 },
                 { WIN9X, { 4, 3, 1214 }, UNKNOWN, OsWindows95 },  { WIN9X, { 4, 9, 65535 }, UNKNOWN, OsWindows95 },
                 { WIN9X, { 4, 10, 950 }, UNKNOWN, OsUnknown },    { WIN9X, { 4, 10, 951 }, UNKNOWN, OsWindows95 },
                 { WIN9X, { 4, 90, 1080 }, UNKNOWN, OsWindows95 }, { WIN9X, { 4, 10, 1081 }, UNKNOWN, OsUnknown },
                 { WIN9X, { 4, 10, 1997 }, UNKNOWN, OsUnknown },   { WIN9X, { 4, 10, 1998 }, UNKNOWN, OsWindows98 },
                 { WIN9X, { 4, 10, 2182 }, UNKNOWN, OsWindows98 }, { WIN9X, { 4, 10, 2183 }, UNKNOWN, OsUnknown },
                 { WIN9X, { 4, 11, 1998 }, UNKNOWN, OsUnknown },   { WIN9X, { 4, 90, 950 }, UNKNOWN, OsWindowsMe },
                 { WIN9X, { 4, 90, 3000 }, UNKNOWN, OsWindowsMe }, { WIN9X, { 4, 91, 3000 }, UNKNOWN, OsUnknown },
                 { WIN9X, { 3, 0, 950 }, UNKNOWN, OsUnknown },     { WIN9X, { 5, 0, 950 }, UNKNOWN, OsUnknown },
                 { NT, { 3, 9, 1 }, UNKNOWN, OsUnknown },          { NT, { 2, 0, 1 }, CLIENT, OsUnknown },
                 { NT, { 3, 10, 528 }, UNKNOWN, OsWindowsNt },     { NT, { 3, 50, 807 }, CLIENT, OsWindowsNt },
                 { NT, { 3, 51, 1057 }, SERVER, OsWindowsNt },     { NT, { 3, 52, 1 }, SERVER, OsUnknown },
                 { NT, { 4, 0, 1381 }, CLIENT, OsWindowsNt },      { NT, { 4, 99, 1 }, UNKNOWN, OsWindowsNt },
                 { NT, { 5, 0, 2195 }, CLIENT, OsWindows2000 },    { NT, { 5, 0, 2195 }, DC, OsWindows2000 },
                 { NT, { 5, 0, 2195 }, UNKNOWN, OsWindows2000 },   { NT, { 5, 1, 2600 }, CLIENT, OsWindowsXp },
                 { NT, { 5, 2, 3790 }, CLIENT, OsWindowsXp },      { NT, { 5, 2, 3790 }, SERVER, OsServer2003 },
                 { NT, { 5, 1, 3590 }, DC, OsServer2003 },         { NT, { 5, 2, 3790 }, UNKNOWN, OsUnknown },
                 { NT, { 6, 0, 6002 }, CLIENT, OsVista },          { NT, { 6, 0, 6002 }, SERVER, OsServer2008 },
                 { NT, { 6, 1, 7601 }, DC, OsServer2008 },         { NT, { 6, 1, 7601 }, CLIENT, OsWindows7 },
                 { NT, { 6, 1, 7601 }, UNKNOWN, OsUnknown },       { NT, { 6, 2, 9200 }, CLIENT, OsWindows8 },
                 { NT, { 6, 3, 9600 }, CLIENT, OsWindows8 },       { NT, { 6, 2, 9200 }, SERVER, OsServer2012 },
                 { NT, { 6, 3, 9600 }, DC, OsServer2012 },         { NT, { 6, 4, 9841 }, CLIENT, OsWindows10 },
                 { NT, { 6, 4, 9841 }, SERVER, OsServer2016 },     { NT, { 7, 0, 1 }, CLIENT, OsWindows10 },
                 { NT, { 10, 0, 22631 }, CLIENT, OsWindows10 },    { NT, { 10, 0, 17599 }, SERVER, OsServer2016 },
                 { NT, { 10, 0, 17599 }, DC, OsServer2016 },       { NT, { 10, 0, 17600 }, SERVER, OsServerLater },
                 { NT, { 11, 0, 17600 }, DC, OsServerLater },      { NT, { 10, 0, 17600 }, UNKNOWN, OsUnknown } };
    for (const auto& row : rows)
    {
        const COVOsVersion version = Version(Record(row.dwPlatform, row.actual, row.lProductType));
        EXPECT_EQ(row.lFlavour, version.GetFlavour()) << "row " << &row - rows;
        EXPECT_EQ(row.lFlavour >= 6, version.IsPlatformNtBased()) << row.lFlavour;
        EXPECT_EQ(row.lFlavour >= 3 && row.lFlavour <= 5, version.IsPlatform9xBased()) << row.lFlavour;
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
        { { 5, 2, 3790 }, SERVER, true, ReleaseR2 },    { { 5, 2, 3790 }, SERVER, false, ReleaseFirst },
        { { 5, 2, 3790 }, DC, true, ReleaseFirst },     { { 5, 2, 3790 }, CLIENT, true, ReleaseFirst },
        { { 6, 0, 6002 }, SERVER, true, ReleaseFirst }, { { 6, 1, 7601 }, SERVER, false, ReleaseR2 },
        { { 6, 2, 9200 }, SERVER, true, ReleaseFirst }, { { 6, 3, 9600 }, DC, false, ReleaseR2 },
        { { 6, 1, 7601 }, CLIENT, true, ReleaseFirst }, { { 10, 0, 20348 }, SERVER, true, ReleaseFirst },
    };
    for (const auto& row : rows)
    {
        COvOsRecord record = Record(NT, row.actual, row.lProductType);
        record.bServerR2 = row.bServerR2;
        EXPECT_EQ(row.lRelease, Version(record).GetRelease()) << "row " << &row - rows;
    }
}

TEST(OvOsVersion, NamesTheEditionByTheFirstTestThatHolds)
{
    COvOsRecord record = Record(NT, { 10, 0, 19045 }, CLIENT);
    record.dwProductInfo = 48;
    record.strEdition = L"EnterpriseS";
    EXPECT_EQ(EditionProfessional, Version(record).GetDesignation()); // the number comes first
    record.dwProductInfo = 0xABCD;
    EXPECT_EQ(EditionEnterprise, Version(record).GetDesignation());
    record = Record(NT, { 5, 2, 3790 }, SERVER);
    record.wSuite = VER_SUITE_ENTERPRISE | VER_SUITE_DATACENTER;
    EXPECT_EQ(EditionDatacenter, Version(record).GetDesignation());
    record = Record(NT, { 4, 0, 1381 }, SERVER);
    record.bTerminalServer = true;
    EXPECT_EQ(EditionTerminalServer, Version(record).GetDesignation());
}

TEST(OvOsVersion, MapsTheMachinesProcessor)
{
    const LONG lExpected[] = { 0, 1, 2, 3, -1, -1, 9, 2, -1, 9, -1, -1, -1 }; // by PROCESSOR_ARCHITECTURE_*
    for (WORD w = 0; w < std::size(lExpected); ++w)
        EXPECT_EQ(lExpected[w], OvOsArchitectureOf(w)) << w;
    EXPECT_EQ(-1, OvOsArchitectureOf(PROCESSOR_ARCHITECTURE_UNKNOWN));
}

TEST(OvOsVersion, SaysWhichPartsAreDetermined)
{
    COvOsRecord record = Record(NT, { 10, 0, 19045 }, 0); // no kind of product
    const COVOsVersion partly = Version(record);
    EXPECT_EQ(UNKNOWN, partly.GetProductType());
    record.wServicePackMajor = 3;
    record.wServicePackMinor = 1;
    record.lProductType = CLIENT;
    record.dwProductInfo = 48;
    record.wArchitecture = PROCESSOR_ARCHITECTURE_AMD64;
    const COVOsVersion whole = Version(record);
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
    EXPECT_EQ(L"6.2.9200 3.1", whole.GetVersion().AsStr() + L" " + whole.GetServicePack().AsStr());
}

TEST(OvOsVersion, TheRunningSystemIsA64BitOneOfTheNtFamily)
{
    const COVOsVersion& current = COVOsVersion::GetCurrent();
    EXPECT_TRUE(current.IsPlatformNtBased());
    EXPECT_TRUE(current.IsPlatform64()); // in a 32-bit process too
    EXPECT_TRUE(current.GetVersion().IsValid());
    EXPECT_EQ(sizeof(void*) == 4, COvDynamicAPI::Get().IsCurrentProcessWow64());
}
