#include "Platform/Faults/FaultFrame.h"

#include <array>
#include <cstdlib>
#include <unwind.h>

namespace OvPlatform
{

namespace
{

/// The slot of each register in CFaultFrame, by the unwinder's number.
const std::array<size_t, 16> s_slots = { REG_RAX, REG_RDX, REG_RCX, REG_RBX, REG_RSI, REG_RDI, REG_RBP, REG_RSP,
                                         REG_R8,  REG_R9,  REG_R10, REG_R11, REG_R12, REG_R13, REG_R14, REG_R15 };

bool IsCall(const BYTE* pCode)
{
    const int nCallIndirect = 2; // the operation in the byte after 0xFF
    return pCode[0] == 0xE8 || (pCode[0] == 0xFF && ((pCode[1] >> 3) & 7) == nCallIndirect);
}

/// How far StepOut has come.
struct CStep
{
    CFaultFrame* pFrame;
    greg_t nInterrupted;
    bool bAtCaller;
};

_Unwind_Reason_Code Step(_Unwind_Context* pContext, void* pvStep)
{
    CStep& step = *static_cast<CStep*>(pvStep);
    const greg_t pc = static_cast<greg_t>(_Unwind_GetIP(pContext));
    if (!step.bAtCaller)
    {
        step.bAtCaller = pc == step.nInterrupted;
        return _URC_NO_REASON;
    }
    for (size_t i = 0; i < s_slots.size(); ++i)
        if (s_slots[i] != REG_RSP)
            step.pFrame->registers[s_slots[i]] = static_cast<greg_t>(_Unwind_GetGR(pContext, static_cast<int>(i)));
    step.pFrame->registers[REG_RSP] = static_cast<greg_t>(_Unwind_GetCFA(pContext));
    step.pFrame->registers[REG_RIP] = pc - 1;
    return _URC_END_OF_STACK;
}

/// Lets the caller's call take the place of the interrupted instruction.
void StepOut(CFaultFrame* pFrame)
{
    CStep step = { pFrame, pFrame->registers[REG_RIP], false };
    _Unwind_Backtrace(Step, &step);
}

} // namespace

} // namespace OvPlatform

using namespace OvPlatform;

extern "C" void OvRunTranslator(CFaultFrame* pFrame)
{
    // A function that finds no stack while it sets up its frame is in no state that could be unwound by its own tables,
    // and has nothing to clean up yet; at a call it has.
    if (pFrame->record.ExceptionCode == EXCEPTION_STACK_OVERFLOW &&
        !IsCall(reinterpret_cast<const BYTE*>(pFrame->registers[REG_RIP])))
        StepOut(pFrame);
    pFrame->pfnTranslator(pFrame->record.ExceptionCode, &pFrame->pointers);
    std::abort();
}
