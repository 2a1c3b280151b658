// Result codes with the values that the platform documents.
#pragma once

#include "Platform/Types.h"

constexpr LONG ERROR_SUCCESS = 0;
constexpr LONG NO_ERROR = 0;
constexpr LONG ERROR_INVALID_FUNCTION = 1;
constexpr LONG ERROR_FILE_NOT_FOUND = 2;
constexpr LONG ERROR_PATH_NOT_FOUND = 3;
constexpr LONG ERROR_TOO_MANY_OPEN_FILES = 4;
constexpr LONG ERROR_ACCESS_DENIED = 5;
constexpr LONG ERROR_INVALID_HANDLE = 6;
constexpr LONG ERROR_NOT_ENOUGH_MEMORY = 8;
constexpr LONG ERROR_INVALID_DATA = 13;
constexpr LONG ERROR_OUTOFMEMORY = 14;
constexpr LONG ERROR_NO_MORE_FILES = 18;
constexpr LONG ERROR_GEN_FAILURE = 31;
constexpr LONG ERROR_SHARING_VIOLATION = 32;
constexpr LONG ERROR_NOT_SUPPORTED = 50;
constexpr LONG ERROR_BAD_NETPATH = 53;
constexpr LONG ERROR_INVALID_PARAMETER = 87;
constexpr LONG ERROR_DISK_FULL = 112;
constexpr LONG ERROR_INSUFFICIENT_BUFFER = 122;
constexpr LONG ERROR_INVALID_NAME = 123;
constexpr LONG ERROR_MOD_NOT_FOUND = 126;
constexpr LONG ERROR_PROC_NOT_FOUND = 127;
constexpr LONG ERROR_BAD_PATHNAME = 161;
constexpr LONG ERROR_BUSY = 170;
constexpr LONG ERROR_ALREADY_EXISTS = 183;
constexpr LONG ERROR_BAD_EXE_FORMAT = 193;
constexpr LONG ERROR_FILENAME_EXCED_RANGE = 206;
constexpr LONG ERROR_MORE_DATA = 234;
constexpr LONG ERROR_NO_MORE_ITEMS = 259;
constexpr LONG ERROR_NOT_OWNER = 288;
constexpr LONG ERROR_PARTIAL_COPY = 299;
constexpr LONG ERROR_MR_MID_NOT_FOUND = 317;
constexpr LONG ERROR_INVALID_FLAGS = 1004;
constexpr LONG ERROR_NOACCESS = 998;
constexpr LONG ERROR_REGISTRY_CORRUPT = 1015;
constexpr LONG ERROR_REGISTRY_IO_FAILED = 1016;
constexpr LONG ERROR_KEY_DELETED = 1018;
constexpr LONG ERROR_CHILD_MUST_BE_VOLATILE = 1021;
constexpr LONG ERROR_NO_UNICODE_TRANSLATION = 1113;
constexpr LONG ERROR_DLL_INIT_FAILED = 1114;
constexpr LONG ERROR_NOT_FOUND = 1168;
constexpr LONG ERROR_NOT_ALL_ASSIGNED = 1300;
constexpr LONG ERROR_NO_SUCH_PRIVILEGE = 1313;
constexpr LONG ERROR_INVALID_WINDOW_HANDLE = 1400;
constexpr LONG ERROR_INVALID_THREAD_ID = 1444;
constexpr LONG ERROR_RESOURCE_DATA_NOT_FOUND = 1812;
constexpr LONG ERROR_RESOURCE_TYPE_NOT_FOUND = 1813;
constexpr LONG ERROR_RESOURCE_LANG_NOT_FOUND = 1815;

constexpr HRESULT OvHresult(uint32_t value)
{
    return static_cast<HRESULT>(value);
}

constexpr HRESULT S_OK = 0;
constexpr HRESULT S_FALSE = 1;
constexpr HRESULT E_NOTIMPL = OvHresult(0x80004001u);
constexpr HRESULT E_NOINTERFACE = OvHresult(0x80004002u);
constexpr HRESULT E_POINTER = OvHresult(0x80004003u);
constexpr HRESULT E_ABORT = OvHresult(0x80004004u);
constexpr HRESULT E_FAIL = OvHresult(0x80004005u);
constexpr HRESULT E_UNEXPECTED = OvHresult(0x8000FFFFu);
constexpr HRESULT E_ACCESSDENIED = OvHresult(0x80070005u);
constexpr HRESULT E_OUTOFMEMORY = OvHresult(0x8007000Eu);
constexpr HRESULT E_INVALIDARG = OvHresult(0x80070057u);
constexpr HRESULT DISP_E_PARAMNOTFOUND = OvHresult(0x80020004u);
constexpr HRESULT DISP_E_TYPEMISMATCH = OvHresult(0x80020005u);
constexpr HRESULT DISP_E_BADVARTYPE = OvHresult(0x80020008u);
constexpr HRESULT DISP_E_OVERFLOW = OvHresult(0x8002000Au);
constexpr HRESULT CLASS_E_NOAGGREGATION = OvHresult(0x80040110u);
constexpr HRESULT CLASS_E_CLASSNOTAVAILABLE = OvHresult(0x80040111u);
constexpr HRESULT REGDB_E_CLASSNOTREG = OvHresult(0x80040154u);
constexpr HRESULT CO_E_NOTINITIALIZED = OvHresult(0x800401F0u);
constexpr HRESULT CO_E_OBJNOTREG = OvHresult(0x800401FBu);
constexpr HRESULT RPC_E_CHANGED_MODE = OvHresult(0x80010106u);
constexpr HRESULT RPC_E_WRONG_THREAD = OvHresult(0x8001010Eu);

constexpr bool SUCCEEDED(HRESULT hr)
{
    return hr >= 0;
}
constexpr bool FAILED(HRESULT hr)
{
    return hr < 0;
}

/// The HRESULT of a Win32 code: facility 7; 0 stays S_OK and a value that is an HRESULT already stays as it is.
constexpr HRESULT HRESULT_FROM_WIN32(DWORD code)
{
    return static_cast<HRESULT>(code) <= 0 ? static_cast<HRESULT>(code)
                                           : OvHresult((code & 0xFFFFu) | (7u << 16) | 0x80000000u);
}

extern "C"
{
    OVPLATFORM_API DWORD WINAPI GetLastError();
    OVPLATFORM_API void WINAPI SetLastError(DWORD dwCode);
}
