#include "OvWipe.h"

#include <cstring>

void OvWipe(void* p, size_t nBytes) noexcept
{
    static void* (*const volatile s_pfnSet)(void*, int, size_t) = std::memset; // a call that cannot be left out
    s_pfnSet(p, 0, nBytes);
}
