// The kernel object of a thread.
#pragma once

#include "Platform/Kernel/KernelObject.h"

namespace OvPlatform
{

/// What the current thread's pseudo-handle stands for; good until the thread ends. Throws std::bad_alloc.
const CHandleEntry& CurrentThreadEntry();

} // namespace OvPlatform
