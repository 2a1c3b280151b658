// The signal that stands behind each machine fault.
#pragma once

#include "Platform/Faults.h"

#include <csignal>

inline int SignalFor(DWORD dwCode)
{
    switch (dwCode)
    {
    case EXCEPTION_INT_DIVIDE_BY_ZERO:
    case EXCEPTION_FLT_DIVIDE_BY_ZERO:
        return SIGFPE;
    case EXCEPTION_ILLEGAL_INSTRUCTION:
        return SIGILL;
    case EXCEPTION_BREAKPOINT:
        return SIGTRAP;
    default:
        return SIGSEGV;
    }
}
