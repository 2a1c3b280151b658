#include "HostThrow.h"

#include "OvPlatform.h"

#include <cstdlib>
#include <iterator>

void ThrowAsHost()
{
    static int s_nThrown = 5;
    static ULONG_PTR s_type[4] = {}; // how to destroy and to catch it: nobody of that compiler is there to look
    const ULONG_PTR parameters[] = { 0x19930520, reinterpret_cast<ULONG_PTR>(&s_nThrown),
                                     reinterpret_cast<ULONG_PTR>(s_type) };
    const DWORD nParameters = static_cast<DWORD>(std::size(parameters));
    ::RaiseException(0xE06D7363, EXCEPTION_NONCONTINUABLE, nParameters, parameters); // that compiler's code
    std::abort();
}
