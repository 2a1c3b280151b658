// What the signal handler leaves on the interrupted thread's stack for the trampoline that it makes the thread go on
// in.
#pragma once

#include "Platform/Faults.h"

#include <cstddef>
#include <sys/ucontext.h>

namespace OvPlatform
{

/// The interrupted registers come first: the trampoline's unwind tables find them by their offsets.
struct alignas(16) CFaultFrame
{
    greg_t registers[REG_RIP + 1];
    _se_translator_function pfnTranslator;
    EXCEPTION_RECORD record;
    EXCEPTION_POINTERS pointers;
};

static_assert(REG_R8 == 0 && REG_RDI == 8 && REG_RIP == 16, "FaultTrampoline.S counts on this order");

} // namespace OvPlatform

extern "C"
{
    /// Where an interrupted thread goes on, with the stack pointer at its CFaultFrame: calls OvRunTranslator. For the
    /// unwinder it is a signal's frame, whose caller is the interrupted code.
    void OvFaultTrampoline();

    /// Calls the translator. Leaves by the translator's throw.
    [[noreturn]] void OvRunTranslator(OvPlatform::CFaultFrame* pFrame);
}
