// The registry: keys and typed values in a database file (see Control.h for where it lives), shared by all processes
// that use the same file. Names are compared without regard to letter case and kept as they were first written.
//
// Every call returns its Win32 code and leaves the last error alone. What a call has reported as written is in the
// file: a process that is killed at any moment leaves each value old or new. Keys may be used from several threads at
// once. Besides the codes named below, a call can answer ERROR_INVALID_HANDLE for a key that is not open,
// ERROR_KEY_DELETED for a key that someone has deleted, ERROR_ACCESS_DENIED when the file cannot be opened or written,
// ERROR_REGISTRY_CORRUPT when it is not a registry, ERROR_REGISTRY_IO_FAILED, ERROR_DISK_FULL, ERROR_BUSY when another
// process has not let go of it in ten seconds, and ERROR_OUTOFMEMORY.
//
// This process is a 64-bit one: without a flag it sees the 64-bit view of HKEY_LOCAL_MACHINE\SOFTWARE; the 32-bit view
// of it is the key Wow6432Node below. No other key is redirected.
#pragma once

#include "Platform/Errors.h"
#include "Platform/Types.h"

using HKEY = struct HKEY__*;
using PHKEY = HKEY*;
using REGSAM = DWORD;
using LSTATUS = LONG;

// Macros, as a pointer made of a number is no constant expression. The values are sign-extended, as the platform's are.
#define OV_PREDEFINED_KEY(value) reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(static_cast<LONG>(value)))
#define HKEY_CLASSES_ROOT OV_PREDEFINED_KEY(0x80000000u) ///< HKEY_LOCAL_MACHINE\SOFTWARE\Classes
#define HKEY_CURRENT_USER OV_PREDEFINED_KEY(0x80000001u) ///< the effective user's key below HKEY_USERS
#define HKEY_LOCAL_MACHINE OV_PREDEFINED_KEY(0x80000002u)
#define HKEY_USERS OV_PREDEFINED_KEY(0x80000003u)
#define HKEY_CURRENT_CONFIG OV_PREDEFINED_KEY(0x80000005u)
#define HKEY_DYN_DATA OV_PREDEFINED_KEY(0x80000006u) ///< named, but not there: ERROR_INVALID_HANDLE

constexpr REGSAM KEY_QUERY_VALUE = 0x0001;
constexpr REGSAM KEY_SET_VALUE = 0x0002;
constexpr REGSAM KEY_CREATE_SUB_KEY = 0x0004;
constexpr REGSAM KEY_ENUMERATE_SUB_KEYS = 0x0008;
constexpr REGSAM KEY_NOTIFY = 0x0010;
constexpr REGSAM KEY_CREATE_LINK = 0x0020;
constexpr REGSAM KEY_WOW64_64KEY = 0x0100;
constexpr REGSAM KEY_WOW64_32KEY = 0x0200;
constexpr REGSAM KEY_READ = 0x20019;
constexpr REGSAM KEY_WRITE = 0x20006;
constexpr REGSAM KEY_ALL_ACCESS = 0xF003F;

constexpr DWORD REG_OPTION_NON_VOLATILE = 0;
constexpr DWORD REG_OPTION_VOLATILE = 1;
constexpr DWORD REG_CREATED_NEW_KEY = 1;
constexpr DWORD REG_OPENED_EXISTING_KEY = 2;

constexpr DWORD REG_NONE = 0;
constexpr DWORD REG_SZ = 1;
constexpr DWORD REG_EXPAND_SZ = 2;
constexpr DWORD REG_BINARY = 3;
constexpr DWORD REG_DWORD = 4;
constexpr DWORD REG_DWORD_BIG_ENDIAN = 5;
constexpr DWORD REG_LINK = 6;
constexpr DWORD REG_MULTI_SZ = 7;
constexpr DWORD REG_RESOURCE_LIST = 8;
constexpr DWORD REG_FULL_RESOURCE_DESCRIPTOR = 9;
constexpr DWORD REG_RESOURCE_REQUIREMENTS_LIST = 10;
constexpr DWORD REG_QWORD = 11;

extern "C"
{
    /// Opens a key, creating it and what is missing on the way to it.
    /// @param lpSubKey      names joined by backslashes.
    /// @param dwOptions     REG_OPTION_VOLATILE: a key that is created lives as long as this process, for it alone.
    /// @param samDesired    the rights that the handle will have, and at most one of the two view flags.
    /// @param phkResult     receives the key, which the caller closes with RegCloseKey.
    /// @param lpdwDisposition  may be null; REG_CREATED_NEW_KEY or REG_OPENED_EXISTING_KEY.
    /// @return ERROR_INVALID_PARAMETER for both view flags at once; ERROR_CHILD_MUST_BE_VOLATILE.
    OVPLATFORM_API LSTATUS APIENTRY RegCreateKeyExW(HKEY hKey, LPCWSTR lpSubKey, DWORD Reserved, LPWSTR lpClass,
                                                    DWORD dwOptions, REGSAM samDesired,
                                                    LPSECURITY_ATTRIBUTES lpSecurityAttributes, PHKEY phkResult,
                                                    LPDWORD lpdwDisposition);

    /// Opens a key that exists. @return ERROR_FILE_NOT_FOUND when it does not.
    OVPLATFORM_API LSTATUS APIENTRY RegOpenKeyExW(HKEY hKey, LPCWSTR lpSubKey, DWORD ulOptions, REGSAM samDesired,
                                                  PHKEY phkResult);

    /// Closes a key; a predefined key is left as it is.
    OVPLATFORM_API LSTATUS APIENTRY RegCloseKey(HKEY hKey);

    /// Reads a value's type, size and data, each where its pointer is given.
    /// @param lpValueName  null or empty: the key's default value.
    /// @param lpData       bytes; texts are UTF-16, little-endian, and not ended by a NUL unless written so.
    /// @param lpcbData     in: room in bytes; out: the data's size in bytes.
    /// @return ERROR_FILE_NOT_FOUND; ERROR_MORE_DATA when the room is too small, then *lpcbData has the size;
    ///         ERROR_ACCESS_DENIED through a key without KEY_QUERY_VALUE.
    OVPLATFORM_API LSTATUS APIENTRY RegQueryValueExW(HKEY hKey, LPCWSTR lpValueName, LPDWORD lpReserved, LPDWORD lpType,
                                                     LPBYTE lpData, LPDWORD lpcbData);

    /// Writes a value, exactly cbData bytes, in place of one with the same name.
    /// @return ERROR_ACCESS_DENIED through a key without KEY_SET_VALUE.
    OVPLATFORM_API LSTATUS APIENTRY RegSetValueExW(HKEY hKey, LPCWSTR lpValueName, DWORD Reserved, DWORD dwType,
                                                   const BYTE* lpData, DWORD cbData);

    /// Deletes a value. @return ERROR_FILE_NOT_FOUND; ERROR_ACCESS_DENIED through a key without KEY_SET_VALUE.
    OVPLATFORM_API LSTATUS APIENTRY RegDeleteValueW(HKEY hKey, LPCWSTR lpValueName);

    /// Deletes a key with its values. @param samDesired  a view flag or 0.
    /// @return ERROR_FILE_NOT_FOUND; ERROR_ACCESS_DENIED when it has keys below it.
    OVPLATFORM_API LSTATUS APIENTRY RegDeleteKeyExW(HKEY hKey, LPCWSTR lpSubKey, REGSAM samDesired, DWORD Reserved);

    /// Deletes a key with all that is below it; a null or empty name empties hKey itself.
    OVPLATFORM_API LSTATUS APIENTRY RegDeleteTreeW(HKEY hKey, LPCWSTR lpSubKey);
}
