// Events: flags that threads wait on. A named event is one object for the whole process and lives while a handle to it
// is open; other processes do not see it.
#pragma once

#include "Platform/Types.h"

constexpr DWORD EVENT_MODIFY_STATE = 0x0002;
constexpr DWORD EVENT_ALL_ACCESS = 0x001F0003;

extern "C"
{
    /// A new event, or the existing one of that name (then bManualReset and bInitialState are not used).
    /// @param pAttributes  null or without a security descriptor; one with is refused with ERROR_NOT_SUPPORTED.
    /// @param szName  null or empty: unnamed. Letter case counts; "Local\" in front means the same as nothing,
    /// "Global\"
    ///                names of their own; another backslash is refused with ERROR_PATH_NOT_FOUND.
    /// @return a handle with all access, which the caller closes; null when it fails. On success the last error is
    ///         ERROR_ALREADY_EXISTS for an event that was there before, else 0.
    OVPLATFORM_API HANDLE WINAPI CreateEventW(LPSECURITY_ATTRIBUTES pAttributes, BOOL bManualReset, BOOL bInitialState,
                                              LPCWSTR szName);

    /// A handle to the existing event of that name, with the access asked for; null with ERROR_FILE_NOT_FOUND when
    /// there is none. A handle without SYNCHRONIZE cannot be waited on, one without EVENT_MODIFY_STATE neither set nor
    /// reset.
    OVPLATFORM_API HANDLE WINAPI OpenEventW(DWORD dwAccess, BOOL bInherit, LPCWSTR szName);

    /// Signals the event: all who wait for a manual-reset one go on, the longest waiting one for an auto-reset one.
    OVPLATFORM_API BOOL WINAPI SetEvent(HANDLE hEvent);

    OVPLATFORM_API BOOL WINAPI ResetEvent(HANDLE hEvent);
}
