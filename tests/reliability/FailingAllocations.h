// Makes allocations of the loaded library fail.
#pragma once

#include "OvPlatform.h"

/// While it lives, the library's n-th allocation on the thread that made it fails; the others succeed, or those before
/// it alone. One at a time.
class CFailingAllocations
{
public:
    /// @param nFail  1 for the next allocation.
    CFailingAllocations(HMODULE hLibrary, unsigned nFail, bool bOnwards);
    ~CFailingAllocations();
    CFailingAllocations(const CFailingAllocations&) = delete;
    CFailingAllocations& operator=(const CFailingAllocations&) = delete;

    bool Reached() const;

    /// Whether the run-time bears it when every allocation from one on fails.
    static bool MayGoOn();
};
