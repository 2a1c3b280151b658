// The border between the stand-in's C++ and the platform's calls, which throw nothing.
#pragma once

#include "Platform/Errors.h"

#include <new>

namespace OvPlatform
{

/// Sets the last error and gives the failure value, in one expression.
template <class T>
T Fail(DWORD dwCode, T failure)
{
    SetLastError(dwCode);
    return failure;
}

/// The work's result; where memory runs out, ERROR_NOT_ENOUGH_MEMORY and the failure value.
template <class T, class Work>
T OrNoMemory(T failure, Work&& work)
{
    try
    {
        return work();
    }
    catch (const std::bad_alloc&)
    {
        return Fail(ERROR_NOT_ENOUGH_MEMORY, failure);
    }
}

} // namespace OvPlatform
