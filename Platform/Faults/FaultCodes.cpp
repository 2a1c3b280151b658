#include "Platform/Faults/FaultCodes.h"

namespace OvPlatform
{

namespace
{

const greg_t s_nErrWrite = 2;
const greg_t s_nErrFetch = 16;

/// Whether the first byte is that of an instruction that is kept for the system (hlt, cli, sti, in and out).
bool IsPrivileged(BYTE nOpcode)
{
    return nOpcode == 0xF4 || nOpcode == 0xFA || nOpcode == 0xFB || (nOpcode >= 0x6C && nOpcode <= 0x6F) ||
           (nOpcode >= 0xE4 && nOpcode <= 0xE7) || (nOpcode >= 0xEC && nOpcode <= 0xEF);
}

DWORD SegmentationCode(const siginfo_t& info, const mcontext_t& context)
{
    if (info.si_code != SI_KERNEL)
        return EXCEPTION_ACCESS_VIOLATION;
    const BYTE* const pCode = reinterpret_cast<const BYTE*>(context.gregs[REG_RIP]);
    return IsPrivileged(*pCode) ? EXCEPTION_PRIV_INSTRUCTION : EXCEPTION_ACCESS_VIOLATION;
}

DWORD ArithmeticCode(int nCode)
{
    switch (nCode)
    {
    case FPE_INTDIV:
        return EXCEPTION_INT_DIVIDE_BY_ZERO;
    case FPE_INTOVF:
        return EXCEPTION_INT_OVERFLOW;
    case FPE_FLTDIV:
        return EXCEPTION_FLT_DIVIDE_BY_ZERO;
    case FPE_FLTOVF:
        return EXCEPTION_FLT_OVERFLOW;
    case FPE_FLTUND:
        return EXCEPTION_FLT_UNDERFLOW;
    case FPE_FLTRES:
        return EXCEPTION_FLT_INEXACT_RESULT;
    case FPE_FLTSUB:
        return EXCEPTION_ARRAY_BOUNDS_EXCEEDED;
    default:
        return EXCEPTION_FLT_INVALID_OPERATION;
    }
}

DWORD FaultCode(int nSignal, const siginfo_t& info, const mcontext_t& context)
{
    switch (nSignal)
    {
    case SIGSEGV:
        return SegmentationCode(info, context);
    case SIGBUS:
        return info.si_code == BUS_ADRALN ? EXCEPTION_DATATYPE_MISALIGNMENT : EXCEPTION_IN_PAGE_ERROR;
    case SIGFPE:
        return ArithmeticCode(info.si_code);
    case SIGILL:
        return info.si_code == ILL_PRVOPC || info.si_code == ILL_PRVREG ? EXCEPTION_PRIV_INSTRUCTION
                                                                        : EXCEPTION_ILLEGAL_INSTRUCTION;
    default:
        return info.si_code == TRAP_TRACE || info.si_code == TRAP_HWBKPT ? EXCEPTION_SINGLE_STEP : EXCEPTION_BREAKPOINT;
    }
}

/// How the faulting address was used, as the platform numbers it: 0 read, 1 written, 8 executed.
ULONG_PTR AccessKind(greg_t nError)
{
    if ((nError & s_nErrFetch) != 0)
        return 8;
    return (nError & s_nErrWrite) != 0 ? 1 : 0;
}

} // namespace

EXCEPTION_RECORD DescribeFault(int nSignal, const siginfo_t& info, const mcontext_t& context)
{
    EXCEPTION_RECORD record = {};
    record.ExceptionCode = FaultCode(nSignal, info, context);
    record.ExceptionAddress = reinterpret_cast<void*>(context.gregs[REG_RIP]);
    if (record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION || record.ExceptionCode == EXCEPTION_IN_PAGE_ERROR)
    {
        record.NumberParameters = 2;
        record.ExceptionInformation[0] = AccessKind(context.gregs[REG_ERR]);
        record.ExceptionInformation[1] = reinterpret_cast<ULONG_PTR>(info.si_addr);
    }
    return record;
}

} // namespace OvPlatform
