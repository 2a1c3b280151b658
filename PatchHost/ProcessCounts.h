// What this process holds at the moment.
#pragma once

#include <string>

struct CProcessCounts
{
    unsigned nThreads = 0;
    unsigned nHandles = 0; ///< 0 where the system does not count them
};

CProcessCounts CountProcess();
