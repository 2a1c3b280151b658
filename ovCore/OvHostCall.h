// The one way into the host's code.
#pragma once

#include <utility>

/// Makes a call into the host (observer, receiver, log sink): every such call goes through here.
/// @param call  a function object without arguments; what it throws goes on to the caller.
template <class Call>
void OvCallHost(Call&& call)
{
    std::forward<Call>(call)();
}
