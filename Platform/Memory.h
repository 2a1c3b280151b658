// Memory blocks of the platform.
#pragma once

#include "Platform/Types.h"

constexpr UINT LMEM_FIXED = 0x0000;
constexpr UINT LMEM_ZEROINIT = 0x0040;
constexpr UINT LPTR = LMEM_FIXED | LMEM_ZEROINIT;
constexpr DWORD HEAP_ZERO_MEMORY = 0x00000008;

extern "C"
{
    /// @param nFlags  LMEM_FIXED or LPTR; others are refused with ERROR_INVALID_PARAMETER.
    /// @return a block to free with LocalFree, or null with ERROR_NOT_ENOUGH_MEMORY. A block of 0 bytes is one.
    OVPLATFORM_API HLOCAL WINAPI LocalAlloc(UINT nFlags, SIZE_T nBytes);

    /// Always null, which means freed. A null block is accepted.
    OVPLATFORM_API HLOCAL WINAPI LocalFree(HLOCAL hBlock);

    /// The one heap there is.
    OVPLATFORM_API HANDLE WINAPI GetProcessHeap();

    /// @param dwFlags  0 or HEAP_ZERO_MEMORY; others give null.
    /// @return a block to free with HeapFree, or null; the last error stays as it was.
    OVPLATFORM_API LPVOID WINAPI HeapAlloc(HANDLE hHeap, DWORD dwFlags, SIZE_T nBytes);

    /// A null block is accepted.
    OVPLATFORM_API BOOL WINAPI HeapFree(HANDLE hHeap, DWORD dwFlags, LPVOID pBlock);
}
