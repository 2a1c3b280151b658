// What tests, and the native host tool, may turn and read of the stand-in. The product never includes this.
#pragma once

#include "Platform/Types.h"

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace OvPlatform
{

/// Kernel handles and registry keys that are open in this process.
OVPLATFORM_API unsigned OpenHandles();

/// COM objects of the stand-in (DOM nodes, error objects, class objects) that are alive in this process.
OVPLATFORM_API unsigned LiveComObjects();

/// BSTRs that are allocated in this process.
OVPLATFORM_API unsigned LiveBstrs();

/// Threads that have ended in an apartment which they had entered and not left. Nothing takes one back.
OVPLATFORM_API unsigned AbandonedApartments();

/// Divides every Sleep and every time-out of a wait; 1 is real time. With 1000 a ten-second wait takes ten
/// milliseconds. Waits that have begun are not changed. The tick counts run as much faster. 0 counts as 1.
OVPLATFORM_API void SetTimeScale(unsigned nDivisor);

/// Keeps the registry in a database file from now on, which is made when first written to. Keys that are open stay keys
/// of the registry that they were opened in. Without a call it is the file that the environment variable
/// OVPLATFORM_REGISTRY names, else pyx-patch-adapter/registry.db in $XDG_STATE_HOME or in ~/.local/state.
/// @param szPath  copied; missing folders are made with the file. Null: as without a call.
OVPLATFORM_API void SetRegistryFile(const char* szPath);

/// Gives the process a new, empty registry in memory, as OVPLATFORM_REGISTRY=:memory: does.
OVPLATFORM_API void SetRegistryInMemory();

/// Makes a class of the platform's own (a DOM document class) creatable or not; at first each one is.
OVPLATFORM_API void SetClassAvailable(REFCLSID rclsid, bool bAvailable);

/// The host system's path, in UTF-8, of a file as the platform writes its name (see Files.h); empty where it has none.
OVPLATFORM_API std::string HostPath(std::wstring_view name);

/// The code page behind CP_ACP and CP_THREAD_ACP; 1252 at first. FALSE, and nothing changes, for one that is not known.
OVPLATFORM_API bool SetAnsiCodePage(UINT nCodePage);

/// A text that was sent to the debugger.
struct CDebuggerText
{
    DWORD nThreadId;
    std::wstring text;
};

/// Begins, or ends, to keep what is sent to the debugger. What was kept before is dropped.
OVPLATFORM_API void CaptureDebuggerTexts(bool bCapture);

/// What was kept since the last call, oldest first. From any thread.
OVPLATFORM_API std::vector<CDebuggerText> TakeDebuggerTexts();

/// The system that the stand-in pretends to be. As it stands: a current 64-bit Windows 10, seen by a 64-bit process.
struct CSystemRecord
{
    /// What GetVersionExW tells the process; compatibility rules can make it lower than the true version.
    DWORD nReportedMajor = 10;
    DWORD nReportedMinor = 0;
    DWORD nReportedBuild = 19045;
    DWORD nPlatformId = 2; ///< VER_PLATFORM_*
    std::wstring servicePack;
    WORD nServicePackMajor = 0;
    WORD nServicePackMinor = 0;
    WORD nSuiteMask = 0x0100;     ///< VER_SUITE_*
    BYTE nProductType = 1;        ///< VER_NT_*
    bool bHasExtendedInfo = true; ///< false: GetVersionExW knows the plain structure only
    bool bHasVersionInfo = true;  ///< false: GetVersionExW fails

    /// What RtlGetVersion tells.
    DWORD nTrueMajor = 10;
    DWORD nTrueMinor = 0;
    DWORD nTrueBuild = 19045;

    WORD nNativeProcessor = 9;  ///< PROCESSOR_ARCHITECTURE_* of the machine
    WORD nProcessProcessor = 9; ///< the one that the process sees
    bool bWow64 = false;
    DWORD nProductInfo = 48; ///< what GetProductInfo tells; 48: Professional
    bool bTabletPc = false;
    bool bMediaCenter = false;
    bool bStarter = false;
    int nServerR2 = 0; ///< the metric SM_SERVERR2: the R2 build, 0 for none

    /// Functions that GetProcAddress does not find in the system's own libraries, as on systems that lack them.
    std::set<std::string> missingFunctions;
};

/// From now on the stand-in pretends to be this system; CSystemRecord() is the one at first.
OVPLATFORM_API void SetSystemRecord(const CSystemRecord& record);

} // namespace OvPlatform
