// Machine faults on purpose.
#pragma once

#include "OvPlatform.h"

#include <vector>

struct CMachineFault
{
    const char* szName;
    DWORD dwCode;           ///< as the platform numbers the fault
    void (*pfnFault)();     ///< meets the fault; returns if nothing comes of it
    unsigned nCleanUps = 1; ///< it leaves at least so many
};

/// Every fault that code can meet on purpose, the stack overflows last. Each is met in a function that holds something
/// to clean up, which counts in FaultCleanUps; an overflow's holds it in each of its frames.
const std::vector<CMachineFault>& MachineFaults();

/// The clean-ups so far; not counted by thread.
unsigned FaultCleanUps();

/// Reads an address that nobody may read.
void ReadNowhere();
