// A registry for one test: empty, and seen by this process alone.
#pragma once

#include "OvPlatform.h"

/// While it lives, HKEY_LOCAL_MACHINE and HKEY_CURRENT_USER of this process are empty, and what is written there is
/// gone afterwards. One at a time; keys that are open keep their place.
class CScratchRegistry
{
public:
    CScratchRegistry();
    ~CScratchRegistry();
    CScratchRegistry(const CScratchRegistry&) = delete;
    CScratchRegistry& operator=(const CScratchRegistry&) = delete;
};
