// The stand-in's time, which runs faster than real time by Control's scale.
#pragma once

#include "Platform/Types.h"

#include <ctime>

namespace OvPlatform
{

/// When so many milliseconds of the platform's time from now will have passed, by CLOCK_MONOTONIC.
timespec DeadlineAfter(DWORD dwMilliseconds);

/// Milliseconds of the platform's time since the system started.
ULONGLONG TickCount();

} // namespace OvPlatform
