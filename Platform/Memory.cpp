#include "Platform/Memory.h"

#include "Platform/Kernel/LastError.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace
{

char s_heap; // its address is the heap's handle

/// A block, zeroed or not; null when there is no memory. A block of 0 bytes has an address too.
void* Allocate(bool bZero, SIZE_T nBytes)
{
    const SIZE_T nSize = std::max<SIZE_T>(nBytes, 1);
    return bZero ? std::calloc(nSize, 1) : std::malloc(nSize);
}

} // namespace

using namespace OvPlatform;

HLOCAL LocalAlloc(UINT nFlags, SIZE_T nBytes)
{
    if ((nFlags & ~LPTR) != 0)
        return Fail<HLOCAL>(ERROR_INVALID_PARAMETER, nullptr);
    void* p = Allocate((nFlags & LMEM_ZEROINIT) != 0, nBytes);
    return p ? p : Fail<HLOCAL>(ERROR_NOT_ENOUGH_MEMORY, nullptr);
}

HLOCAL LocalFree(HLOCAL hBlock)
{
    std::free(hBlock);
    return nullptr;
}

HANDLE GetProcessHeap()
{
    return &s_heap;
}

LPVOID HeapAlloc(HANDLE hHeap, DWORD dwFlags, SIZE_T nBytes)
{
    if (hHeap != &s_heap || (dwFlags & ~HEAP_ZERO_MEMORY) != 0)
        return nullptr;
    return Allocate((dwFlags & HEAP_ZERO_MEMORY) != 0, nBytes);
}

BOOL HeapFree(HANDLE hHeap, DWORD, LPVOID pBlock)
{
    if (hHeap != &s_heap)
        return Fail(ERROR_INVALID_HANDLE, FALSE);
    std::free(pBlock);
    return TRUE;
}
