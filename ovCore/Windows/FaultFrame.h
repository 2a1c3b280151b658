// What the exception handler leaves for the trampoline that it makes the faulting thread go on in. For GCC's 32-bit
// code only, whose frames are unwound by tables.
#pragma once

#include "OvPlatform.h"

#include <cstddef>

/// A fault: the interrupted registers, which the trampoline's unwind tables find by their offsets, and its record.
struct alignas(16) CFaultFrame
{
    CONTEXT context;
    EXCEPTION_RECORD record;
};

static_assert(sizeof(CFaultFrame) == 800 && offsetof(CONTEXT, Edi) == 0x9C && offsetof(CONTEXT, Eip) == 0xB8 &&
                  offsetof(CONTEXT, Esp) == 0xC4,
              "FaultTrampoline.S counts on these");

extern "C"
{
    /// Where a faulting thread goes on, with the address of a CFaultFrame in esi and room for a copy of it at the stack
    /// pointer: makes the copy and calls OvRunTranslator. For the unwinder it is a signal's frame, whose caller is the
    /// interrupted code.
    void OvFaultTrampoline();

    /// Calls the thread's translator. Leaves by the translator's throw.
    [[noreturn]] void OvRunTranslator(CFaultFrame* pFrame);
}

/// Makes the interrupted registers of a fault fit to unwind from. On the faulting thread's own stack only.
void OvPrepareUnwinding(CFaultFrame* pFrame);

/// Moves the registers of a stack overflow out of the compiler's stack probe, which has no unwind tables, back to the
/// call of it. Does nothing when the fault lies elsewhere.
void OvLeaveStackProbe(CONTEXT* pContext);

/// Whether the instruction belongs to a function of this module that can be unwound.
bool OvIsUnwindable(DWORD nInstruction);
