// Memory that is given back with nothing left in it.
#pragma once

#include <cstddef>

/// Overwrites nBytes with zeros, though nobody reads them any more. The platform's own call does so byte by byte in the
/// 32-bit headers that this is built with.
void OvWipe(void* p, size_t nBytes) noexcept;
