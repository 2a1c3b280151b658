// Handles: numbers that stand for counted kernel objects of this process. A handle is a small multiple of 4, never 0
// and never INVALID_HANDLE_VALUE; it carries the access that it was opened with. What is not an open handle answers
// ERROR_INVALID_HANDLE. Every call may come from any thread.
#pragma once

#include "Platform/Types.h"

#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1)))

constexpr DWORD READ_CONTROL = 0x00020000;
constexpr DWORD SYNCHRONIZE = 0x00100000;
constexpr DWORD STANDARD_RIGHTS_REQUIRED = 0x000F0000;
constexpr DWORD MAXIMUM_ALLOWED = 0x02000000;
constexpr DWORD GENERIC_READ = 0x80000000;
constexpr DWORD GENERIC_WRITE = 0x40000000;
constexpr DWORD GENERIC_EXECUTE = 0x20000000;
constexpr DWORD GENERIC_ALL = 0x10000000;

constexpr DWORD DUPLICATE_CLOSE_SOURCE = 1;
constexpr DWORD DUPLICATE_SAME_ACCESS = 2;

extern "C"
{
    /// Closes the handle; the object goes with its last handle, unless a wait still holds it. A pseudo-handle is
    /// accepted and nothing happens.
    OVPLATFORM_API BOOL WINAPI CloseHandle(HANDLE hObject);

    /// A new handle to the same object, which the caller closes. Pseudo-handles give real ones.
    /// @param hSourceProcess, hTargetProcess  the current process; another is refused with ERROR_INVALID_HANDLE.
    /// @param phTarget  receives the handle, null when it fails; null with DUPLICATE_CLOSE_SOURCE only closes.
    /// @param dwAccess  what the new handle may do; not used with DUPLICATE_SAME_ACCESS.
    /// @param bInherit  no effect: no process is ever started from here.
    OVPLATFORM_API BOOL WINAPI DuplicateHandle(HANDLE hSourceProcess, HANDLE hSource, HANDLE hTargetProcess,
                                               PHANDLE phTarget, DWORD dwAccess, BOOL bInherit, DWORD dwOptions);
}
