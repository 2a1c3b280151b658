// The platform's base types, as its documentation defines them: 32-bit quantities have 32 bits here too, and each
// wchar_t of a wide text holds one 16-bit UTF-16 unit.
#pragma once

#include <cstddef>
#include <cstdint>

// Visible outside the shared library of the stand-in.
#define OVPLATFORM_API __attribute__((visibility("default")))

#define WINAPI
#define APIENTRY
#define CALLBACK
#define STDMETHODCALLTYPE
#define __stdcall
#define __cdecl
#define STDMETHODIMP HRESULT STDMETHODCALLTYPE
#define STDMETHODIMP_(type) type STDMETHODCALLTYPE

using BOOL = int;
using BYTE = uint8_t;
using CHAR = char;
using WCHAR = wchar_t;
using OLECHAR = wchar_t;
using SHORT = int16_t;
using USHORT = uint16_t;
using WORD = uint16_t;
using INT = int;
using UINT = unsigned int;
using LONG = int32_t;
using ULONG = uint32_t;
using DWORD = uint32_t;
using LONGLONG = int64_t;
using ULONGLONG = uint64_t;
using ULONG_PTR = uintptr_t;
using LONG_PTR = intptr_t;
using DWORD_PTR = ULONG_PTR;
using SIZE_T = size_t;
using HRESULT = LONG;
using LCID = DWORD;
using LANGID = WORD;
using PVOID = void*;
using LPVOID = void*;
using LPCVOID = const void*;
using LPSTR = char*;
using LPCSTR = const char*;
using LPWSTR = wchar_t*;
using LPCWSTR = const wchar_t*;
using LPBYTE = BYTE*;
using LPBOOL = BOOL*;
using LPDWORD = DWORD*;
using PDWORD = DWORD*;
using PBOOL = BOOL*;

using HANDLE = void*;
using PHANDLE = HANDLE*;
using HLOCAL = HANDLE;
using HGLOBAL = HANDLE;
using FARPROC = intptr_t (*)();
using HINSTANCE = struct HINSTANCE__*;
using HMODULE = HINSTANCE;

constexpr BOOL FALSE = 0;
constexpr BOOL TRUE = 1;
constexpr DWORD MAX_PATH = 260;
constexpr DWORD INFINITE = 0xFFFFFFFF;

struct GUID
{
    uint32_t Data1;
    uint16_t Data2;
    uint16_t Data3;
    uint8_t Data4[8];
};
using IID = GUID;
using CLSID = GUID;
using REFGUID = const GUID&;
using REFIID = const IID&;
using REFCLSID = const CLSID&;

OVPLATFORM_API bool operator==(const GUID& a, const GUID& b);
inline bool operator!=(const GUID& a, const GUID& b)
{
    return !(a == b);
}
inline BOOL IsEqualGUID(REFGUID a, REFGUID b)
{
    return a == b;
}
inline BOOL IsEqualIID(REFIID a, REFIID b)
{
    return a == b;
}
inline BOOL IsEqualCLSID(REFCLSID a, REFCLSID b)
{
    return a == b;
}

struct FILETIME
{
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

struct SYSTEMTIME
{
    WORD wYear;
    WORD wMonth;
    WORD wDayOfWeek;
    WORD wDay;
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
};

struct LUID
{
    DWORD LowPart;
    LONG HighPart;
};

struct SECURITY_ATTRIBUTES
{
    DWORD nLength;
    LPVOID lpSecurityDescriptor;
    BOOL bInheritHandle;
};
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;

constexpr WORD LOWORD(DWORD value)
{
    return static_cast<WORD>(value & 0xFFFFu);
}
constexpr WORD HIWORD(DWORD value)
{
    return static_cast<WORD>(value >> 16);
}
