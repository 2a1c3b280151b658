#include "ovCore/OVOsVersion.h"

#include "ovCore/OvStackTrace.h"

#include <algorithm>
#include <exception>
#include <iterator>

namespace
{

const wchar_t s_szSource[] = L"ovCore\\OVOsVersion";

bool IsWorkstation(const COvOsRecord& record)
{
    return record.lProductType == VER_NT_WORKSTATION;
}

bool IsServer(const COvOsRecord& record)
{
    return record.lProductType == VER_NT_SERVER || record.lProductType == VER_NT_DOMAIN_CONTROLLER;
}

/// The flavour by the kind of product; unknown where that is unknown.
LONG ByProduct(const COvOsRecord& record, LONG lWorkstation, LONG lServer)
{
    if (IsWorkstation(record))
        return lWorkstation;
    return IsServer(record) ? lServer : OsUnknown;
}

LONG FlavourOf9x(const COvOsNumber& version)
{
    if (version.dwMajor != 4)
        return OsUnknown;
    const DWORD dwMinor = version.dwMinor;
    const DWORD dwBuild = version.dwBuild;
    if ((dwMinor == 0 && dwBuild == 950) || (dwBuild >= 951 && dwBuild <= 1080) || (dwMinor < 10 && dwBuild >= 1081))
        return OsWindows95;
    if (dwMinor == 10 && dwBuild >= 1998 && dwBuild <= 2182)
        return OsWindows98;
    return dwMinor == 90 ? OsWindowsMe : OsUnknown;
}

LONG FlavourOfNt3(DWORD dwMinor)
{
    return dwMinor == 10 || dwMinor == 50 || dwMinor == 51 ? OsWindowsNt : OsUnknown;
}

LONG FlavourOfNt6(const COvOsRecord& record)
{
    switch (record.actual.dwMinor)
    {
    case 0:
        return ByProduct(record, OsVista, OsServer2008);
    case 1:
        return ByProduct(record, OsWindows7, OsServer2008);
    default:
        return ByProduct(record, OsWindows8, OsServer2012);
    }
}

LONG FlavourOfNt(const COvOsRecord& record)
{
    constexpr DWORD FIRST_LATER_BUILD = 17600;
    const COvOsNumber& version = record.actual;
    if (version.dwMajor > 6 || (version.dwMajor == 6 && version.dwMinor >= 4))
        return ByProduct(record, OsWindows10, version.dwBuild < FIRST_LATER_BUILD ? OsServer2016 : OsServerLater);
    switch (version.dwMajor)
    {
    case 3:
        return FlavourOfNt3(version.dwMinor);
    case 4:
        return OsWindowsNt;
    case 5:
        return version.dwMinor == 0 ? LONG{ OsWindows2000 } : ByProduct(record, OsWindowsXp, OsServer2003);
    case 6:
        return FlavourOfNt6(record);
    default:
        return OsUnknown;
    }
}

struct CEditionTest
{
    LONG lFirstFlavour;
    LONG lLastFlavour;
    bool (*Holds)(const COvOsRecord& record);
    LONG lDesignation;
};

template <WORD wSuite>
bool HasSuite(const COvOsRecord& record)
{
    return (record.wSuite & wSuite) != 0;
}

/// One of up to four values of the platform's product information.
template <DWORD dwFirst, DWORD dwSecond = dwFirst, DWORD dwThird = dwFirst, DWORD dwFourth = dwFirst>
bool IsProduct(const COvOsRecord& record)
{
    const DWORD dw = record.dwProductInfo;
    return dw == dwFirst || dw == dwSecond || dw == dwThird || dw == dwFourth;
}

bool EditionHas(const COvOsRecord& record, const wchar_t* szPart)
{
    return record.strEdition.find(szPart) != std::wstring::npos;
}

// In order: the first test of the flavour that holds gives the edition.
const CEditionTest s_editionTests[] = {
    { OsWindowsNt, OsServerLater,
      [](const COvOsRecord& r) { return r.strBuildType.find(L"Checked") != std::wstring::npos; }, EditionCheckedBuild },
    { OsWindowsNt, OsServer2003, HasSuite<VER_SUITE_DATACENTER>, EditionDatacenter },
    { OsWindowsNt, OsServer2003, HasSuite<VER_SUITE_ENTERPRISE>, EditionAdvancedServer },
    { OsServer2003, OsServer2003, HasSuite<VER_SUITE_BLADE>, EditionWebServer },
    { OsWindowsXp, OsWindowsXp, [](const COvOsRecord& r) { return r.bMediaCenter; }, EditionMediaCenter },
    { OsWindowsXp, OsWindowsXp, [](const COvOsRecord& r) { return r.bTabletPc; }, EditionTabletPc },
    { OsWindowsXp, OsWindowsXp, HasSuite<VER_SUITE_PERSONAL>, EditionHome },
    { OsWindowsNt, OsServer2003, HasSuite<VER_SUITE_EMBEDDEDNT>, EditionEmbedded },
    { OsWindowsNt, OsServer2003, [](const COvOsRecord& r) { return r.bTerminalServer && IsServer(r); },
      EditionTerminalServer },
    { OsWindowsNt, OsServer2003, IsWorkstation, EditionProfessional },
    { OsWindowsNt, OsServer2003, IsServer, EditionStandardServer },
    { OsVista, OsServerLater, IsProduct<0x08, 0x0C, 0x25, 0x27>, EditionDatacenter },
    { OsVista, OsServerLater, IsProduct<0x0A, 0x0E, 0x26, 0x29>, EditionAdvancedServer },
    { OsVista, OsServerLater, IsProduct<0x11, 0x1D>, EditionWebServer },
    { OsVista, OsServerLater, IsProduct<0x07, 0x0D, 0x24, 0x28>, EditionStandardServer },
    { OsVista, OsServerLater, IsProduct<0x01, 0x1C>, EditionUltimate },
    { OsVista, OsServerLater, IsProduct<0x03, 0x1A>, EditionHomePremium },
    { OsVista, OsServerLater, IsProduct<0x02, 0x05, 0x62, 0x65>, EditionHome },
    { OsVista, OsServerLater, IsProduct<0x04, 0x1B, 0x7D>, EditionEnterprise },
    { OsVista, OsServerLater, IsProduct<0x06, 0x10, 0x30, 0x31>, EditionProfessional },
    { OsVista, OsServerLater, IsProduct<0x0B, 0x2F>, EditionStarter },
    { OsVista, OsServerLater, IsProduct<0x79, 0x7A>, EditionEducation },
    { OsVista, OsServerLater, [](const COvOsRecord& r) { return EditionHas(r, L"Datacenter"); }, EditionDatacenter },
    { OsVista, OsServerLater, IsServer, EditionStandardServer },
    { OsVista, OsServerLater, [](const COvOsRecord& r) { return EditionHas(r, L"Enterprise"); }, EditionEnterprise },
    { OsVista, OsServerLater, [](const COvOsRecord& r) { return EditionHas(r, L"Education"); }, EditionEducation },
    { OsVista, OsServerLater, [](const COvOsRecord& r) { return EditionHas(r, L"Professional"); },
      EditionProfessional },
};

std::wstring Joined(DWORD dwFirst, DWORD dwSecond)
{
    return std::to_wstring(dwFirst) + L"." + std::to_wstring(dwSecond);
}

} // namespace

LONG OvOsFlavourOf(const COvOsRecord& record)
{
    switch (record.dwPlatform)
    {
    case VER_PLATFORM_WIN32s:
        return OsWin32s;
    case VER_PLATFORM_WIN32_WINDOWS:
        return FlavourOf9x(record.actual);
    case VER_PLATFORM_WIN32_NT:
        return FlavourOfNt(record);
    default:
        return OsUnknown;
    }
}

LONG OvOsDesignationOf(LONG lFlavour, const COvOsRecord& record)
{
    const auto itTest = std::find_if(std::begin(s_editionTests), std::end(s_editionTests), [&](const auto& test) {
        return lFlavour >= test.lFirstFlavour && lFlavour <= test.lLastFlavour && test.Holds(record);
    });
    return itTest != std::end(s_editionTests) ? itTest->lDesignation : LONG{ EditionUnknown };
}

LONG OvOsReleaseOf(LONG lFlavour, const COvOsRecord& record)
{
    bool bR2 = false;
    if (lFlavour == OsServer2003)
        bR2 = record.lProductType == VER_NT_SERVER && record.bServerR2;
    else if (lFlavour == OsServer2008)
        bR2 = record.actual.dwMinor != 0;
    else if (lFlavour == OsServer2012)
        bR2 = record.actual.dwMinor >= 3;
    return bR2 ? ReleaseR2 : ReleaseFirst;
}

LONG OvOsArchitectureOf(WORD wNative)
{
    switch (wNative)
    {
    case PROCESSOR_ARCHITECTURE_INTEL:
        return 0;
    case PROCESSOR_ARCHITECTURE_MIPS:
        return 1;
    case PROCESSOR_ARCHITECTURE_ALPHA:
    case PROCESSOR_ARCHITECTURE_ALPHA64:
        return 2;
    case PROCESSOR_ARCHITECTURE_PPC:
        return 3;
    case PROCESSOR_ARCHITECTURE_AMD64:
    case PROCESSOR_ARCHITECTURE_IA64:
        return 9;
    default:
        return -1;
    }
}

bool COVOsVersion::AreBothPartsSet(const COVOsVersion& a, const COVOsVersion& b, size_t bit) const
{
    OV_SCOPE(L"COVOsVersion::AreBothPartsSet");
    return a.m_Flags.test(bit) && b.m_Flags.test(bit);
}

COVOsVersion& COVOsVersion::GetCurrent()
{
    OV_SCOPE(L"COVOsVersion::GetCurrent");
    static COVOsVersion s_current;
    std::exception_ptr pFailure;
    [[maybe_unused]] static const bool s_bLoadTried = [&pFailure] { // other threads wait here while one loads
        try
        {
            s_current.LoadCurrent();
        }
        catch (...)
        {
            pFailure = std::current_exception(); // an exception out of here would have the next call load again
        }
        return true;
    }();
    if (pFailure != nullptr)
        std::rethrow_exception(pFailure);
    return s_current;
}

void COVOsVersion::LoadCurrent()
{
    OV_SCOPE(L"COVOsVersion::LoadCurrent");
    m_Flags.reset();
    Load(OvReadOsRecord());
}

void COVOsVersion::Load(const COvOsRecord& record)
{
    OV_SCOPE(L"COVOsVersion::Load");
    const COvOsNumber& version = record.reported;
    m_Version.SetVersion(Joined(version.dwMajor, version.dwMinor) + L"." + std::to_wstring(version.dwBuild));
    m_Flags.set(PartVersion);
    m_ServicePack.SetVersion(Joined(record.wServicePackMajor, record.wServicePackMinor));
    m_Flags.set(PartServicePack);
    m_lFlavour = OvOsFlavourOf(record);
    m_Flags.set(PartFlavour, m_lFlavour != OsUnknown);
    m_lDesignation = OvOsDesignationOf(m_lFlavour, record);
    m_Flags.set(PartDesignation, m_lDesignation != EditionUnknown);
    m_lArchitecture = OvOsArchitectureOf(record.wArchitecture);
    m_Flags.set(PartArchitecture, m_lArchitecture != -1);
    m_lProductType =
        IsWorkstation(record) || IsServer(record) ? record.lProductType : COvOsRecord::PRODUCT_TYPE_UNKNOWN;
    m_Flags.set(PartProductType, m_lProductType != COvOsRecord::PRODUCT_TYPE_UNKNOWN);
    m_dwProductInfo = record.dwProductInfo;
    m_Flags.set(PartProductInfo);
    m_lRelease = OvOsReleaseOf(m_lFlavour, record);
    m_Flags.set(PartRelease, m_lRelease != 0);
}

bool COVOsVersion::IsPlatformNtBased() const
{
    OV_SCOPE(L"COVOsVersion::IsPlatformNtBased");
    return m_lFlavour >= OsWindowsNt && m_lFlavour <= OsServerLater;
}

bool COVOsVersion::IsPlatform9xBased() const
{
    OV_SCOPE(L"COVOsVersion::IsPlatform9xBased");
    return m_lFlavour >= OsWindows95 && m_lFlavour <= OsWindowsMe;
}

bool COVOsVersion::IsPlatform64() const
{
    OV_SCOPE(L"COVOsVersion::IsPlatform64");
    return m_lArchitecture == 9;
}
