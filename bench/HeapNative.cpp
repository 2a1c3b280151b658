// In place of the C library's functions, so that libxml2's memory and BSTRs are counted too.
#include "Heap.h"

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

void* Took(void* p)
{
    if (IsHeapWatched())
        NoteTaken(malloc_usable_size(p));
    return p;
}

void Gives(void* p)
{
    if (IsHeapWatched())
        NoteGiven(malloc_usable_size(p));
}

} // namespace

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
