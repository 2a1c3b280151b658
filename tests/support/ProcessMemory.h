// The process's memory, as the system deals it out.
#pragma once

#include <cstddef>

constexpr size_t PAGE_BYTES = 4096;

/// Whole pages that may be written, and behind them one that nobody may read. They stay until the process ends.
char* PagesBeforeAWall(size_t nPages);

/// The most memory that the process has held at once, in MB.
unsigned PeakMemoryMb();
