// Makes calls that the loaded library makes of the platform fail, through its import table.
#pragma once

#include "OvPlatform.h"

#include <limits>
#include <string>
#include <vector>

/// Which calls fail: the n-th and the following ones of a thread, of all functions or of one.
struct CCallFailure
{
    unsigned nFirst = 0; ///< counted from 1; 0: none
    unsigned nCount = 1; ///< how many in a row
    std::string function = {};
    bool bOtherThreads = false;     ///< the calls of the threads that the library makes, not those of the arming thread
    unsigned nSecond = 0;           ///< one more call that fails, counted as nFirst; 0: none
    unsigned nEvery = 0;            ///< every so many calls one fails; 0: none
    void (*pfnInstead)() = nullptr; ///< called before the call fails

    static constexpr unsigned ONWARDS = std::numeric_limits<unsigned>::max();
};

/// Makes the library's calls pass through the counters. Goes with the library's import table.
void WatchCalls(HMODULE hLibrary);

/// Counts from now on, for calls that this thread makes (or others, see CCallFailure), and fails those chosen.
void ArmFailure(const CCallFailure& failure);

/// Ends it. @return the functions that failed, in order, one space between, at least the first ones; empty when the
/// call was not reached.
std::string DisarmFailure();

/// The functions that can fail.
std::vector<std::string> WatchedFunctions();

/// How many calls counted since ArmFailure.
unsigned CountedCalls();
