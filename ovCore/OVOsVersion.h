// Which Windows is running.
#pragma once

#include "ovCore/OvOsRecord.h"
#include "ovCore/OvVersion.h"
#include "OvPlatform.h"

#include <bitset>

/// Platform family and generation.
enum OvOsFlavour : LONG
{
    OsUnknown = 0,
    OsWin32s = 2,
    OsWindows95 = 3,
    OsWindows98 = 4,
    OsWindowsMe = 5,
    OsWindowsNt = 6, ///< 3.x and 4.0
    OsWindows2000 = 7,
    OsWindowsXp = 8,
    OsServer2003 = 9,
    OsVista = 10,
    OsServer2008 = 11, ///< and 2008 R2
    OsWindows7 = 12,
    OsWindows8 = 13,   ///< and 8.1
    OsServer2012 = 14, ///< and 2012 R2
    OsWindows10 = 15,
    OsServer2016 = 16,
    OsServerLater = 17
};

/// Edition within a flavour.
enum OvOsDesignation : LONG
{
    EditionUnknown = 0,
    EditionCheckedBuild = 1,
    EditionStarter = 2,
    EditionHome = 3,
    EditionHomePremium = 4,
    EditionProfessional = 5,
    EditionEnterprise = 6,
    EditionUltimate = 7,
    EditionEducation = 8,
    EditionMediaCenter = 9,
    EditionTabletPc = 10,
    EditionEmbedded = 11,
    EditionStandardServer = 12,
    EditionAdvancedServer = 13,
    EditionDatacenter = 14,
    EditionWebServer = 15,
    EditionTerminalServer = 16
};

enum OvOsRelease : LONG
{
    ReleaseFirst = 1,
    ReleaseR2 = 3
};

/// The conclusions from a record. Pure functions.
LONG OvOsFlavourOf(const COvOsRecord& record);
LONG OvOsDesignationOf(LONG lFlavour, const COvOsRecord& record);
LONG OvOsReleaseOf(LONG lFlavour, const COvOsRecord& record);

/// 0 x86, 1 MIPS, 2 Alpha, 3 PowerPC, 9 64-bit (x64 or Itanium), -1 others. @param wNative  PROCESSOR_ARCHITECTURE_*.
LONG OvOsArchitectureOf(WORD wNative);

/// A description of a Windows. A plain value; the process's own is only read once it is loaded.
class COVOsVersion
{
public:
    /// The bits that say which parts have been determined.
    enum Part : size_t
    {
        PartFlavour,
        PartDesignation,
        PartVersion,
        PartServicePack,
        PartArchitecture,
        PartProductType,
        PartProductInfo,
        PartRelease,
        PART_COUNT
    };

    COVOsVersion() = default;
    COVOsVersion(const COVOsVersion&) = default;
    COVOsVersion& operator=(const COVOsVersion&) = default;
    virtual ~COVOsVersion() = default;

    /// Whether a part has been determined in both. Raises std::out_of_range for a bit of 8 or more.
    virtual bool AreBothPartsSet(const COVOsVersion& a, const COVOsVersion& b, size_t bit) const;

    /// The process's one description, loaded at first use and kept until the library unloads; any thread. When that
    /// load raises, the exception reaches the caller whose load it was, and later calls return the description as far
    /// as it was filled.
    static COVOsVersion& GetCurrent();

    /// Fills the description from the running system. Raises COvException E_FAIL when the system tells no version.
    void LoadCurrent();

    /// Fills the description from a record.
    void Load(const COvOsRecord& record);

    bool IsPlatformNtBased() const;
    bool IsPlatform9xBased() const;

    /// Whether the machine's processor is a 64-bit one, also for a 32-bit process.
    bool IsPlatform64() const;

    bool IsPartSet(size_t bit) const { return m_Flags.test(bit); }
    LONG GetFlavour() const { return m_lFlavour; }             ///< an OvOsFlavour
    LONG GetDesignation() const { return m_lDesignation; }     ///< an OvOsDesignation
    const COvVersion& GetVersion() const { return m_Version; } ///< as the process is told it
    const COvVersion& GetServicePack() const { return m_ServicePack; }
    LONG GetArchitecture() const { return m_lArchitecture; }
    LONG GetProductType() const { return m_lProductType; } ///< 1 workstation, 2 domain controller, 3 server, -1
    LONG GetRelease() const { return m_lRelease; }         ///< an OvOsRelease
    DWORD GetProductInfo() const { return m_dwProductInfo; }

private:
    std::bitset<PART_COUNT> m_Flags; // the parts that have been determined
    LONG m_lFlavour = OsUnknown;
    LONG m_lDesignation = EditionUnknown;
    COvVersion m_Version;
    COvVersion m_ServicePack;
    LONG m_lArchitecture = -1;
    LONG m_lProductType = COvOsRecord::PRODUCT_TYPE_UNKNOWN;
    LONG m_lRelease = 0;
    DWORD m_dwProductInfo = 0;
};
