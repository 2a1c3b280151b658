// Signals as the platform's fault codes.
#pragma once

#include "Platform/Faults.h"

#include <csignal>
#include <sys/ucontext.h>

namespace OvPlatform
{

/// Fills a record from a signal that the processor caused. May be called in a signal handler.
/// Left as the processor reports it: the quotient that is too large counts as a division by zero, and a denormal
/// operand as an underflow.
EXCEPTION_RECORD DescribeFault(int nSignal, const siginfo_t& info, const mcontext_t& context);

} // namespace OvPlatform
