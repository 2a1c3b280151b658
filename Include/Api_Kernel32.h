// Functions of the kernel that older systems may lack. The sources are in ovCore/.
#pragma once

#include "OvPlatform.h"

#include <memory>

class COvDynamicLib;

/// The kernel's library from the system's folder; each call looks its function up by name. Any threads may share one.
class CApi_Kernel32
{
public:
    /// Raises COvException E_FAIL when the library can't be loaded.
    CApi_Kernel32();

    CApi_Kernel32(const CApi_Kernel32&) = delete;
    CApi_Kernel32& operator=(const CApi_Kernel32&) = delete;
    ~CApi_Kernel32();

    /// The kernel's function of that name. Raises COvException E_FAIL where it does not exist.
    BOOL IsWow64Process(HANDLE hProcess, BOOL* pbWow64) const;

private:
    std::unique_ptr<COvDynamicLib> m_pLibrary;
};
