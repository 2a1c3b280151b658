#include "HostThrow.h"

#include "OvPlatform.h"

#include <cstdlib>

void ThrowAsHost()
{
    ::RaiseException(0xE06D7363, EXCEPTION_NONCONTINUABLE, 0, nullptr); // the code of that compiler's C++ exceptions
    std::abort();
}
