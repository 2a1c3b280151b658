// Pauses that take a thousandth of their time: the adapter's ten seconds become ten milliseconds.
#pragma once

#include "OvPlatform.h"

/// For the pauses of one module, by default those of the program's own code. To be made before the adapter whose pauses
/// it shortens and destroyed after it, while the module is still loaded. One at a time.
class CFastPauses
{
public:
    explicit CFastPauses(HMODULE hModule = ::GetModuleHandleW(nullptr));
    ~CFastPauses();
    CFastPauses(const CFastPauses&) = delete;
    CFastPauses& operator=(const CFastPauses&) = delete;

private:
    HMODULE m_hModule;
};
