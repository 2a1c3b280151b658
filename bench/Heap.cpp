#include "Heap.h"

#include <algorithm>
#include <atomic>

namespace
{

std::atomic<bool> s_bWatching{ false };
thread_local bool s_bWatched = false; // the thread whose work it is
CHeapUse s_use;
ptrdiff_t s_nHeld = 0;

} // namespace

bool IsHeapWatched()
{
    return s_bWatching.load(std::memory_order_relaxed) && s_bWatched;
}

void NoteTaken(size_t nBytes)
{
    s_nHeld += static_cast<ptrdiff_t>(nBytes);
    ++s_use.nAllocations;
    s_use.nPeakBytes = std::max(s_use.nPeakBytes, static_cast<size_t>(std::max<ptrdiff_t>(s_nHeld, 0)));
}

void NoteGiven(size_t nBytes)
{
    s_nHeld -= static_cast<ptrdiff_t>(nBytes);
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
