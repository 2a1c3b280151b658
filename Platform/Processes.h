// The current process.
#pragma once

#include "Types.h"

extern "C"
{
    /// A pseudo-handle of this process; it needs no closing.
    OVPLATFORM_API HANDLE WINAPI GetCurrentProcess();

    OVPLATFORM_API DWORD WINAPI GetCurrentProcessId();
}
