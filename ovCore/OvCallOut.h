// The one way into the host's code.
#pragma once

#include <memory>
#include <type_traits>

/// Stands for an exception of the host that this library cannot take as what it is.
struct COvForeignException
{
};

/// Makes the call pfnCall(pContext) for OvCallOut.
void OvCallGuarded(void (*pfnCall)(void*), void* pContext);

/// Makes a call into the host (observer, receiver, log sink): every such call but that of
/// GetConfiguration, which catches nothing, goes through here.
/// @param call  a function object without arguments.
/// What the host throws goes on to the caller. Where the host is built by another compiler than this library, its C++
/// exceptions arrive as COvForeignException, its own frames unwound by its own rules. A machine fault in the host's code
/// is translated as any other on a thread with a translator, and left to the host's handlers on every other thread.
template <class Call>
void OvCallOut(Call&& call)
{
    using CFunction = std::remove_reference_t<Call>;
    OvCallGuarded([](void* pCall) { (*static_cast<CFunction*>(pCall))(); },
                  const_cast<std::remove_const_t<CFunction>*>(std::addressof(call)));
}
