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

/// Keeps the registry in a database file from now on, which is made when first written to. Keys that are open stay keys of
/// the registry that they were opened in. Without a call it is the file that the environment variable
/// OVPLATFORM_REGISTRY names, else pyx-patch-adapter/registry.db in $XDG_STATE_HOME or in ~/.local/state.
/// @param szPath  its folder must exist; copied.
OVPLATFORM_API void SetRegistryFile(const char* szPath);

/// Gives the process a new, empty registry in memory, as OVPLATFORM_REGISTRY=:memory: does.
OVPLATFORM_API void SetRegistryInMemory();

/// Makes a class of the platform's own (a DOM document class) creatable or not; at first each one is.
OVPLATFORM_API void SetClassAvailable(REFCLSID rclsid, bool bAvailable);

} // namespace OvPlatform
