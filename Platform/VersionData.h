// Version data of files: the version block that a library of ours carries in its ELF section .ovversion, laid out as a
// version resource is. It is read from the file, which need not be loaded and may be anything.
#pragma once

#include "Platform/Types.h"

struct VS_FIXEDFILEINFO
{
    DWORD dwSignature; ///< 0xFEEF04BD
    DWORD dwStrucVersion;
    DWORD dwFileVersionMS;
    DWORD dwFileVersionLS;
    DWORD dwProductVersionMS;
    DWORD dwProductVersionLS;
    DWORD dwFileFlagsMask;
    DWORD dwFileFlags;
    DWORD dwFileOS;
    DWORD dwFileType;
    DWORD dwFileSubtype;
    DWORD dwFileDateMS;
    DWORD dwFileDateLS;
};

extern "C"
{
    /// @param pHandle  null, or receives 0.
    /// @return the block's bytes; 0 with ERROR_FILE_NOT_FOUND and its kind (see Files.h), ERROR_RESOURCE_DATA_NOT_FOUND
    /// for
    ///         what is no library, ERROR_RESOURCE_TYPE_NOT_FOUND for one without a version.
    OVPLATFORM_API DWORD WINAPI GetFileVersionInfoSizeW(LPCWSTR szName, LPDWORD pHandle);

    /// Copies the block, or its beginning when nBytes are fewer.
    OVPLATFORM_API BOOL WINAPI GetFileVersionInfoW(LPCWSTR szName, DWORD dwHandle, DWORD nBytes, LPVOID pBlock);

    /// @param pBlock  from GetFileVersionInfoW; *ppValue points into it.
    /// @param szSubBlock  "\", the fixed information; others do not exist (ERROR_RESOURCE_TYPE_NOT_FOUND).
    OVPLATFORM_API BOOL WINAPI VerQueryValueW(LPCVOID pBlock, LPCWSTR szSubBlock, LPVOID* ppValue, UINT* pnLength);
}
