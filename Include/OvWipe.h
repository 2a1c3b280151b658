// Memory that is released with nothing left in it.
#pragma once

#include <cstddef>
#include <cstring>

/// Overwrites nBytes with zeros, though nothing reads them afterwards. The platform's own call does so byte by byte in
/// the 32-bit headers that this is built with.
inline void OvWipe(void* p, size_t nBytes) noexcept
{
    static void* (*const volatile s_pfnSet)(void*, int, size_t) = std::memset; // a call that cannot be left out
    s_pfnSet(p, 0, nBytes);
}
