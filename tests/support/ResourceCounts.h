// What must be back where it was when a test ends.
#pragma once

#include <string>

struct CResourceCounts
{
    unsigned nHandles; ///< open kernel handles and registry keys
    unsigned nObjects; ///< COM objects
    unsigned nStrings; ///< BSTRs
};

/// What is open now. Always zeros where the platform does not count (see ResourceCountsWindows.cpp).
CResourceCounts CountResources();

/// An empty text when nothing was added, else what was left open, in words.
std::string DescribeLeak(const CResourceCounts& before, const CResourceCounts& after);
