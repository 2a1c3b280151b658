// What the benchmarks share. A row is one piece of work; each contender does that work in its own way.
#pragma once

#include "Heap.h"

#include <benchmark/benchmark.h>

#include <string>

inline constexpr char OURS[] = "ours";

/// Runs the work until its time is known, and once before with the heap watched.
/// @param nUnits  what one run is made of (elements, characters, calls); times are given per unit.
template <class Work>
void Run(benchmark::State& state, double nUnits, Work&& work)
{
    const CHeapUse heap = WatchHeap(work);
    for (auto _ : state)
        work();
    state.counters["units"] = nUnits;
    state.counters["allocations"] = static_cast<double>(heap.nAllocations);
    state.counters["peak"] = static_cast<double>(heap.nPeakBytes);
}

/// Adds a contender to a row. The name "limit" in front says that it is no peer but what the machine allows.
template <class Work>
void Add(const std::string& row, const std::string& contender, double nUnits, Work work)
{
    benchmark::RegisterBenchmark((row + "|" + contender).c_str(),
                                 [=](benchmark::State& state) { Run(state, nUnits, work); });
}

// One a file.
void AddDocuments();
void AddElements();
void AddEscaping();
void AddConversions();
void AddAdapter();
void AddCalls();
void AddLoading();
