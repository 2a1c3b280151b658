// The kernel object of a process. For the stand-in's own files only.
#pragma once

#include "KernelObject.h"

namespace OvPlatform
{

/// What the current process's pseudo-handle stands for.
const CHandleEntry& CurrentProcessEntry();

} // namespace OvPlatform
