// Counts what a piece of work takes from the heap, whoever asks for it.
#pragma once

#include <cstddef>

struct CHeapUse
{
    size_t nAllocations = 0;
    size_t nPeakBytes = 0; ///< the most that was held at once, beyond what was held at the start
};

// For those who replace the functions that give memory.
bool IsHeapWatched();
void NoteTaken(size_t nBytes);
void NoteGiven(size_t nBytes);

void StartHeapWatch();
CHeapUse EndHeapWatch();

template <class Work>
CHeapUse WatchHeap(Work&& work)
{
    StartHeapWatch();
    work();
    return EndHeapWatch();
}
