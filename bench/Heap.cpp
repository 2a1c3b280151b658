#include "Heap.h"

#include <algorithm>
#include <atomic>
#include <malloc.h>

extern "C"
{
    void* __libc_malloc(size_t nBytes);
    void* __libc_calloc(size_t nCount, size_t nBytes);
    void* __libc_realloc(void* p, size_t nBytes);
    void __libc_free(void* p);
}

namespace
{

std::atomic<bool> s_bWatching{ false };
thread_local bool s_bWatched = false; // the thread whose work it is
CHeapUse s_use;
ptrdiff_t s_nHeld = 0;

bool IsWatched()
{
    return s_bWatching.load(std::memory_order_relaxed) && s_bWatched;
}

void* Took(void* p)
{
    if (IsWatched())
    {
        s_nHeld += static_cast<ptrdiff_t>(malloc_usable_size(p));
        ++s_use.nAllocations;
        s_use.nPeakBytes = std::max(s_use.nPeakBytes, static_cast<size_t>(std::max<ptrdiff_t>(s_nHeld, 0)));
    }
    return p;
}

void Gives(void* p)
{
    if (IsWatched())
        s_nHeld -= static_cast<ptrdiff_t>(malloc_usable_size(p));
}

} // namespace

// In place of the C library's, so that libxml2's memory and BSTRs are counted too.
extern "C"
{
    void* malloc(size_t nBytes)
    {
        return Took(__libc_malloc(nBytes));
    }

    void* calloc(size_t nCount, size_t nBytes)
    {
        return Took(__libc_calloc(nCount, nBytes));
    }

    void* realloc(void* p, size_t nBytes)
    {
        Gives(p);
        return Took(__libc_realloc(p, nBytes));
    }

    void free(void* p)
    {
        Gives(p);
        __libc_free(p);
    }
}

void StartHeapWatch()
{
    s_use = CHeapUse();
    s_nHeld = 0;
    s_bWatching = s_bWatched = true;
}

CHeapUse EndHeapWatch()
{
    s_bWatching = s_bWatched = false;
    return s_use;
}
