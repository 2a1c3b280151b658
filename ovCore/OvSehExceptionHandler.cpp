#include "ovCore/OvSehExceptionHandler.h"

#include "ovCore/OvException.h"
#include "ovCore/OvStackTrace.h"

#include <map>
#include <string>

namespace
{

const wchar_t s_szSource[] = L"ovCore\\OvSehExceptionHandler";
const HRESULT s_hrFault = static_cast<HRESULT>(0xC000B02Fu);

/// What each fault means. The break marks stand where a reader of the reports expects them, odd as that is.
std::map<DWORD, const wchar_t*> FaultDescriptions()
{
    return {
        { EXCEPTION_ACCESS_VIOLATION, L"The thread tried to read from or write \r to a virtual address for which it "
                                      L"does \r not have the appropriate access." },
        { EXCEPTION_ARRAY_BOUNDS_EXCEEDED, L"The thread tried to access an array ele\r ment that is out of bounds and "
                                           L"the unde\r rlying hardware supports bounds checking." },
        { EXCEPTION_BREAKPOINT, L"A breakpoint was encountered." },
        { EXCEPTION_DATATYPE_MISALIGNMENT,
          L"The thread tried to read or write data \r that is misaligned on hardware that doe\r s not provide "
          L"alignment. For example, 16-bit values must be aligned on 2-byte boundaries; 32-bit values on 4-byte "
          L"boundaries, and so on." },
        { EXCEPTION_FLT_DENORMAL_OPERAND,
          L"One of the operands in a floating-point\r  operation is denormal. A denormal valu\r e is one that is too "
          L"small to represent as a standard floating-point value." },
        { EXCEPTION_FLT_DIVIDE_BY_ZERO,
          L"The thread tried to divide a floating-p\r oint value by a floating-point divisor \r of zero." },
        { EXCEPTION_FLT_INEXACT_RESULT,
          L"The result of a floating-point operatio\r n cannot be represented exactly as a de\r cimal fraction." },
        { EXCEPTION_FLT_INVALID_OPERATION,
          L"This exception represents any floating-\r point exception not included in this li\r st." },
        { EXCEPTION_FLT_OVERFLOW, L"The exponent of a floating-point operat\r ion is greater than the magnitude "
                                  L"allow\r ed by the corresponding type." },
        { EXCEPTION_FLT_STACK_CHECK,
          L"The stack overflowed or underflowed as \r the result of a floating-point operatio\r n." },
        { EXCEPTION_FLT_UNDERFLOW, L"The exponent of a floating-point operat\r ion is less than the magnitude allowed "
                                   L"\r by the corresponding type." },
        { EXCEPTION_ILLEGAL_INSTRUCTION, L"The thread tried to execute an invalid \r instruction." },
        { EXCEPTION_IN_PAGE_ERROR, L"The thread tried to access a page that \r was not present, and the system was "
                                   L"una\r ble to load the page. For example, this exception might occur if a network "
                                   L"connection is lost while running a program over the network." },
        { EXCEPTION_INT_DIVIDE_BY_ZERO,
          L"The thread tried to divide an integer v\r alue by an integer divisor of zero." },
        { EXCEPTION_INT_OVERFLOW,
          L"The result of an integer operation caus\r ed a carry out of the most significant \r bit of the result." },
        { EXCEPTION_INVALID_DISPOSITION,
          L"An exception handler returned an invali\r d disposition to the exception dispatch\r er. Programmers using "
          L"a high-level language such as C should never encounter this exception." },
        { EXCEPTION_NONCONTINUABLE_EXCEPTION,
          L"The thread tried to continue execution \r after a noncontinuable exception occurr\r ed." },
        { EXCEPTION_PRIV_INSTRUCTION, L"The thread tried to execute an instruct\r ion whose operation is not allowed "
                                      L"in t\r he current machine mode." },
        { EXCEPTION_SINGLE_STEP, L"A trace trap or other single-instructio\r n mechanism signaled that one instructi\r "
                                 L"on has been executed." },
        { EXCEPTION_STACK_OVERFLOW, L"The thread used up its stack." },
    };
}

std::wstring DescribeRecords(const EXCEPTION_RECORD* pRecord)
{
    const std::map<DWORD, const wchar_t*> descriptions = FaultDescriptions();
    std::wstring strText;
    for (; pRecord != nullptr; pRecord = pRecord->ExceptionRecord)
    {
        COvEvidence code(L"SEH Exception", static_cast<LONG>(pRecord->ExceptionCode), true);
        strText.append(code.ToString(nullptr)).append(L"\r ");
        const auto found = descriptions.find(pRecord->ExceptionCode);
        if (found != descriptions.end())
            strText.append(found->second);
    }
    return strText;
}

[[noreturn]] void RaiseCode(unsigned int uSEH, LONG nLine)
{
    OvRaise(s_hrFault, s_szSource, nLine, COvEvidence(L"(unsigned long)uSEH", static_cast<DWORD>(uSEH)));
}

[[noreturn]] void RaiseTranslated(unsigned int uSEH, const EXCEPTION_POINTERS* pExceptionPointers)
{
    const std::wstring strLine = L"SEH Exception trapped! TID:" + std::to_wstring(::GetCurrentThreadId()) + L"\r\n";
    ::OutputDebugStringW(strLine.c_str());
    if (pExceptionPointers == nullptr)
        RaiseCode(uSEH, __LINE__);
    OvRaise(s_hrFault, s_szSource, __LINE__,
            COvEvidence(L"SEH Information", DescribeRecords(pExceptionPointers->ExceptionRecord)));
}

} // namespace

void SEHtoExceptionTranslation(unsigned int uSEH, EXCEPTION_POINTERS* pExceptionPointers)
{
    OV_SCOPE(L"SEHtoExceptionTranslation");
    try
    {
        RaiseTranslated(uSEH, pExceptionPointers);
    }
    catch (const COvBaseException&)
    {
        throw;
    }
    catch (...)
    {
        RaiseCode(uSEH, __LINE__);
    }
}
