// In place of the language's operators; what peers take from the C library directly is not counted.
#include "Heap.h"

#include <cstdlib>
#include <malloc.h>
#include <new>

void* operator new(size_t nBytes)
{
    void* const p = std::malloc(nBytes != 0 ? nBytes : 1);
    if (p == nullptr)
        throw std::bad_alloc();
    if (IsHeapWatched())
        NoteTaken(_msize(p));
    return p;
}

void operator delete(void* p) noexcept
{
    if (p != nullptr && IsHeapWatched())
        NoteGiven(_msize(p));
    std::free(p);
}

void operator delete(void* p, size_t) noexcept
{
    operator delete(p);
}
