// What the system tells about its version, from which COVOsVersion draws its conclusions.
#pragma once

#include "OvPlatform.h"

#include <string>

/// A version as the system numbers its releases.
struct COvOsNumber
{
    DWORD dwMajor = 0;
    DWORD dwMinor = 0;
    DWORD dwBuild = 0;
};

/// The facts, as they were read. A fact that could not be read has the value it is declared with.
struct COvOsRecord
{
    static constexpr LONG PRODUCT_TYPE_UNKNOWN = -1;

    COvOsNumber reported; ///< what the process is told
    COvOsNumber actual;   ///< what runs, whatever compatibility mode the process is in
    DWORD dwPlatform = 0; ///< VER_PLATFORM_*
    WORD wServicePackMajor = 0;
    WORD wServicePackMinor = 0;
    WORD wSuite = 0;                                     ///< VER_SUITE_*
    LONG lProductType = PRODUCT_TYPE_UNKNOWN;            ///< VER_NT_*
    WORD wArchitecture = PROCESSOR_ARCHITECTURE_UNKNOWN; ///< the machine's, also under WOW64
    DWORD dwProductInfo = 0;                             ///< PRODUCT_*; 0 where the system has none
    bool bServerR2 = false;                              ///< the metric of that name
    bool bMediaCenter = false;
    bool bTabletPc = false;
    bool bTerminalServer = false; ///< application compatibility mode of the terminal services
    std::wstring strEdition;      ///< "EditionID"
    std::wstring strBuildType;    ///< "CurrentType"
};

/// Reads the facts from the running system. What can't be read is left out, but for the version: when there is none,
/// raises COvException E_FAIL. Any thread. Opens no COvRegKey, which would ask for the version in turn.
COvOsRecord OvReadOsRecord();
