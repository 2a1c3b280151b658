#include "ovCore/Windows/SeTranslator.h"

#include "ovCore/Windows/FaultFrame.h"

#include <atomic>
#include <cstdlib>
#include <malloc.h>
#include <utility>

namespace
{

const DWORD s_dwGccException = 0x00474343;  // with a number in the first byte
const ULONG s_nOverflowReserve = 64 * 1024; // what a stack overflow leaves to throw on
const DWORD s_dwBadFlags = 0x40500;         // alignment check, direction, trap: none may be on in the trampoline

/// What a thread has from its first translator to its end.
struct CThreadFaults
{
    CThreadFaults();
    ~CThreadFaults();
    CThreadFaults(const CThreadFaults&) = delete;
    CThreadFaults& operator=(const CThreadFaults&) = delete;

    _se_translator_function pfnTranslator = nullptr;
    const void* pLimit = nullptr; // the structured handler under which our own code runs; newer ones are others'
    CFaultFrame fault = {};       // on its way to the trampoline
};

LONG CALLBACK OnException(EXCEPTION_POINTERS* pPointers);

/// The module's exception handler, and its slot in each thread.
class CFaultHandler
{
public:
    CFaultHandler();
    ~CFaultHandler();
    CFaultHandler(const CFaultHandler&) = delete;
    CFaultHandler& operator=(const CFaultHandler&) = delete;

    void SetThread(CThreadFaults* pFaults) const { ::TlsSetValue(m_nSlot, pFaults); }

    /// Null for a thread that never set a translator. Changes no last error.
    CThreadFaults* GetThread() const
    {
        const DWORD dwError = ::GetLastError();
        void* const pFaults = ::TlsGetValue(m_nSlot);
        ::SetLastError(dwError);
        return static_cast<CThreadFaults*>(pFaults);
    }

private:
    const DWORD m_nSlot;
    void* const m_hHandler;
};

std::atomic<const CFaultHandler*> s_pHandler{ nullptr }; // from the first translator until the module unloads

CFaultHandler::CFaultHandler() : m_nSlot(::TlsAlloc()), m_hHandler(::AddVectoredExceptionHandler(TRUE, OnException))
{
    s_pHandler = this;
}

CFaultHandler::~CFaultHandler()
{
    s_pHandler = nullptr;
    ::RemoveVectoredExceptionHandler(m_hHandler);
    ::TlsFree(m_nSlot);
}

CThreadFaults::CThreadFaults()
{
    ULONG nReserve = s_nOverflowReserve;
    ::SetThreadStackGuarantee(&nReserve);
    s_pHandler.load()->SetThread(this);
}

CThreadFaults::~CThreadFaults()
{
    if (const CFaultHandler* const pHandler = s_pHandler)
        pHandler->SetThread(nullptr);
}

CThreadFaults* ThisThread()
{
    const CFaultHandler* const pHandler = s_pHandler;
    return pHandler != nullptr ? pHandler->GetThread() : nullptr;
}

/// Faults and software exceptions; no compiler's C++ exceptions, and no notes for a debugger.
bool IsTranslated(DWORD dwCode)
{
    const DWORD dwInformational = 4;
    return dwCode != OvMsCppException && (dwCode & 0x00FFFFFF) != s_dwGccException && dwCode >> 28 != dwInformational;
}

/// The calling thread's newest structured handler.
const void* NewestHandler()
{
    const void* pNewest;
    asm volatile("movl %%fs:0, %0" : "=r"(pNewest));
    return pNewest;
}

struct CHandlerRecord
{
    const CHandlerRecord* pNext;
    const void* pfnHandler;
};

/// Whether code that our own has called has a structured handler. Records below the interrupted stack pointer are the
/// dispatcher's.
bool HasInnerHandler(const CThreadFaults& faults, const CONTEXT& context)
{
    const CHandlerRecord* pRecord = static_cast<const CHandlerRecord*>(NewestHandler());
    while (reinterpret_cast<DWORD>(pRecord) < context.Esp)
        pRecord = pRecord->pNext;
    return pRecord < faults.pLimit;
}

/// Moves the registers from a place that holds no code back into the instruction that called it.
void ReturnToCaller(CONTEXT& context)
{
    context.Eip = *reinterpret_cast<const DWORD*>(context.Esp) - 1;
    context.Esp += sizeof(DWORD);
}

/// Moves the registers back to the instruction of this module that is to blame. @return false when there is none.
bool GoToFaultingInstruction(const EXCEPTION_RECORD& record, CONTEXT& context)
{
    const bool bAccess = record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION && record.NumberParameters >= 2;
    if (bAccess && record.ExceptionInformation[1] == context.Eip)
        ReturnToCaller(context);
    else if (record.ExceptionCode == EXCEPTION_STACK_OVERFLOW)
        OvLeaveStackProbe(&context);
    return OvIsUnwindable(context.Eip);
}

/// Makes the thread go on in the trampoline, on its own stack.
void Redirect(CFaultFrame& fault, CONTEXT& context)
{
    const DWORD nFrame = (fault.context.Esp - sizeof(CFaultFrame)) & ~(alignof(CFaultFrame) - 1);
    context.EFlags &= ~s_dwBadFlags;
    context.Esi = reinterpret_cast<DWORD>(&fault);
    context.Esp = nFrame;
    context.Eip = reinterpret_cast<DWORD>(&OvFaultTrampoline);
}

_se_translator_function TranslatorFor(const CThreadFaults& faults, DWORD dwCode)
{
    return IsTranslated(dwCode) ? faults.pfnTranslator : nullptr;
}

/// Takes the fault over from where it came. @return false when it is not for the translator.
bool Take(CThreadFaults& faults, const EXCEPTION_RECORD& record, CONTEXT& context)
{
    if (HasInnerHandler(faults, context) || TranslatorFor(faults, record.ExceptionCode) == nullptr)
        return false;
    faults.fault.record = record;
    faults.fault.context = context;
    if (!GoToFaultingInstruction(record, faults.fault.context))
        return false;
    Redirect(faults.fault, context);
    return true;
}

LONG CALLBACK OnException(EXCEPTION_POINTERS* pPointers)
{
    CThreadFaults* const pFaults = ThisThread();
    if (pFaults != nullptr && Take(*pFaults, *pPointers->ExceptionRecord, *pPointers->ContextRecord))
        return EXCEPTION_CONTINUE_EXECUTION;
    return EXCEPTION_CONTINUE_SEARCH;
}

} // namespace

extern "C" void OvRunTranslator(CFaultFrame* pFrame)
{
    OvPrepareUnwinding(pFrame);
    EXCEPTION_POINTERS pointers = { &pFrame->record, &pFrame->context };
    ThisThread()->pfnTranslator(pFrame->record.ExceptionCode, &pointers);
    std::abort();
}

_se_translator_function OvTranslatorFor(DWORD dwCode) noexcept
{
    const CThreadFaults* const pFaults = ThisThread();
    return pFaults != nullptr ? TranslatorFor(*pFaults, dwCode) : nullptr;
}

const void* OvLimitOwnCode() noexcept
{
    CThreadFaults* const pFaults = ThisThread();
    return pFaults != nullptr ? std::exchange(pFaults->pLimit, NewestHandler()) : nullptr;
}

void OvRestoreOwnCode(const void* pLimit) noexcept
{
    ThisThread()->pLimit = pLimit;
}

_se_translator_function __cdecl _set_se_translator(_se_translator_function pNew)
{
    static const CFaultHandler s_handler;
    thread_local CThreadFaults s_faults;
    ::_resetstkoflw(); // puts the guard where it leaves the reserve; it may be spent, or not yet know of the reserve
    s_faults.pLimit = NewestHandler();
    const _se_translator_function pOld = s_faults.pfnTranslator;
    s_faults.pfnTranslator = pNew;
    return pOld;
}
