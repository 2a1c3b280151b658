// Waits on kernel objects. A wait with time-out 0 tests the state and never blocks. Time-outs are milliseconds, divided
// by Control's time scale; INFINITE stays.
#pragma once

#include "Platform/Types.h"

constexpr DWORD WAIT_OBJECT_0 = 0;
constexpr DWORD WAIT_TIMEOUT = 258;
constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;
constexpr DWORD MAXIMUM_WAIT_OBJECTS = 64;

extern "C"
{
    /// @return WAIT_OBJECT_0, WAIT_TIMEOUT, or WAIT_FAILED with ERROR_INVALID_HANDLE for what is not a handle that can
    /// be
    ///         waited on, ERROR_ACCESS_DENIED for one without SYNCHRONIZE. An auto-reset event is clear again after
    ///         success.
    OVPLATFORM_API DWORD WINAPI WaitForSingleObject(HANDLE hObject, DWORD dwMilliseconds);

    /// Waits for any one of the objects, or for all of them at the same time.
    /// @param nCount  1 to 64, else ERROR_INVALID_PARAMETER; with bWaitAll no handle may stand there twice.
    /// @return WAIT_OBJECT_0 + the lowest index of a signalled object (0 for all), WAIT_TIMEOUT or WAIT_FAILED as
    /// above.
    OVPLATFORM_API DWORD WINAPI WaitForMultipleObjects(DWORD nCount, const HANDLE* phObjects, BOOL bWaitAll,
                                                       DWORD dwMilliseconds);
}
