#include "FaultFrame.h"

#include <array>
#include <unwind.h>

namespace
{

/// Each register's place in the context, by the unwinder's number; the stack pointer goes its own way.
using CRegister = DWORD CONTEXT::*;
const std::array<CRegister, 8> s_registers = { &CONTEXT::Eax, &CONTEXT::Ecx, &CONTEXT::Edx, &CONTEXT::Ebx,
                                               nullptr,       &CONTEXT::Ebp, &CONTEXT::Esi, &CONTEXT::Edi };

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
    // and has nothing to clean up yet; at a call it has.
    const bool bOverflow = pFrame->record.ExceptionCode == EXCEPTION_STACK_OVERFLOW;
    if (bOverflow && !IsCall(reinterpret_cast<const BYTE*>(pFrame->context.Eip)))
        StepOut(&pFrame->context);
}

bool OvIsUnwindable(DWORD nInstruction)
{
    void* const pBehind = reinterpret_cast<void*>(nInstruction + 1); // as a return address is looked up
    return _Unwind_FindEnclosingFunction(pBehind) != nullptr;
}
