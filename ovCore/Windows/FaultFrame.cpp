#include "ovCore/Windows/FaultFrame.h"

#include <array>
#include <cstring>
#include <unwind.h>

/// What the compiler calls before it makes a large frame: touches each of its pages, its size in eax.
extern "C" void __chkstk_ms();

namespace
{

/// Each register's place in the context, by the unwinder's number; the stack pointer goes its own way.
using CRegister = DWORD CONTEXT::*;
const std::array<CRegister, 8> s_registers = { &CONTEXT::Eax, &CONTEXT::Ecx, &CONTEXT::Edx, &CONTEXT::Ebx,
                                               nullptr,       &CONTEXT::Ebp, &CONTEXT::Esi, &CONTEXT::Edi };

DWORD StackProbe()
{
    return reinterpret_cast<DWORD>(&__chkstk_ms);
}

const DWORD s_nProbeCallSize = 5; // 0xE8 and the distance

bool IsStackProbeCall(DWORD nInstruction)
{
    const BYTE* const pCode = reinterpret_cast<const BYTE*>(nInstruction);
    DWORD nDistance;
    std::memcpy(&nDistance, pCode + 1, sizeof(nDistance));
    return pCode[0] == 0xE8 && nInstruction + s_nProbeCallSize + nDistance == StackProbe();
}

bool IsCall(const BYTE* pCode)
{
    const int nCallIndirect = 2; // the operation in the byte after 0xFF
    return pCode[0] == 0xE8 || (pCode[0] == 0xFF && ((pCode[1] >> 3) & 7) == nCallIndirect);
}

/// How far StepOut has come.
struct CStep
{
    CONTEXT* pContext;
    DWORD nInterrupted;
    bool bAtCaller;
};

_Unwind_Reason_Code Step(_Unwind_Context* pContext, void* pvStep)
{
    CStep& step = *static_cast<CStep*>(pvStep);
    const DWORD nInstruction = _Unwind_GetIP(pContext);
    if (!step.bAtCaller)
    {
        step.bAtCaller = nInstruction == step.nInterrupted;
        return _URC_NO_REASON;
    }
    for (size_t i = 0; i < s_registers.size(); ++i)
        if (s_registers[i] != nullptr)
            step.pContext->*s_registers[i] = _Unwind_GetGR(pContext, static_cast<int>(i));
    step.pContext->Esp = _Unwind_GetCFA(pContext);
    step.pContext->Eip = nInstruction - 1;
    return _URC_END_OF_STACK;
}

/// Lets the caller's call take the place of the interrupted instruction.
void StepOut(CONTEXT* pContext)
{
    CStep step = { pContext, pContext->Eip, false };
    _Unwind_Backtrace(Step, &step);
}

} // namespace

void OvPrepareUnwinding(CFaultFrame* pFrame)
{
    // A function that finds no stack while it sets up its frame is in no state that could be unwound by its own tables,
    // and has nothing to clean up yet; at a call it has, unless that is the one which makes its frame.
    const DWORD nInstruction = pFrame->context.Eip;
    const bool bOverflow = pFrame->record.ExceptionCode == EXCEPTION_STACK_OVERFLOW;
    if (bOverflow && (!IsCall(reinterpret_cast<const BYTE*>(nInstruction)) || IsStackProbeCall(nInstruction)))
        StepOut(&pFrame->context);
}

// The probe begins with one-byte instructions that save ecx and then eax.
void OvLeaveStackProbe(CONTEXT* pContext)
{
    const DWORD nSize = 0x2A;
    const DWORD nOffset = pContext->Eip - StackProbe();
    if (nOffset >= nSize)
        return;
    const DWORD nPushed = nOffset < 2 ? nOffset : 2;
    const DWORD* const pStack = reinterpret_cast<const DWORD*>(pContext->Esp);
    const DWORD nCall = pStack[nPushed] - s_nProbeCallSize;
    if (!IsStackProbeCall(nCall))
        return;
    if (nPushed == 2)
        pContext->Eax = pStack[0];
    if (nPushed > 0)
        pContext->Ecx = pStack[nPushed - 1];
    pContext->Esp += (nPushed + 1) * sizeof(DWORD);
    pContext->Eip = nCall;
}

bool OvIsUnwindable(DWORD nInstruction)
{
    void* const pBehind = reinterpret_cast<void*>(nInstruction + 1); // as a return address is looked up
    return _Unwind_FindEnclosingFunction(pBehind) != nullptr;
}
