// What tests, and the native host tool, may turn and read of the stand-in. The product never includes this.
#pragma once

#include "Types.h"

namespace OvPlatform
{

/// Kernel handles and registry keys that are open in this process.
OVPLATFORM_API unsigned OpenHandles();

/// COM objects of the stand-in (DOM nodes, error objects, class objects) that are alive in this process.
OVPLATFORM_API unsigned LiveComObjects();

/// BSTRs that are allocated in this process.
OVPLATFORM_API unsigned LiveBstrs();

/// Divides every Sleep and every time-out of a wait; 1 is real time. With 1000 a ten-second wait takes ten
/// milliseconds.
OVPLATFORM_API void SetTimeScale(unsigned nDivisor);

} // namespace OvPlatform
