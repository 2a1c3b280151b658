#include "Platform/Faults.h"

#include "Platform/Faults/FaultCodes.h"
#include "Platform/Faults/FaultFrame.h"
#include "Platform/Faults/StackReserve.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <sys/mman.h>

namespace OvPlatform
{

namespace
{

const std::array<int, 5> s_signals = { SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP };

const size_t s_nAlternateStack = 64 * 1024;
const greg_t s_nRedZone = 128; // what a function may use below the stack pointer
const greg_t s_nStackAlignment = 16;
const greg_t s_nErrFetch = 16;
const greg_t s_nBadFlags = 0x40500; // alignment check, direction, trap: none may be on in the trampoline

/// The stack on which the calling thread's signals are handled; one that the thread has already is kept. One object
/// per thread, made and destroyed on it.
class CAlternateStack
{
public:
    CAlternateStack()
    {
        stack_t now = {};
        if (::sigaltstack(nullptr, &now) != 0 || (now.ss_flags & SS_DISABLE) == 0)
            return;
        void* const p = ::mmap(nullptr, s_nAlternateStack, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (p == MAP_FAILED)
            return;
        m_pStack = p;
        const stack_t mine = { p, 0, s_nAlternateStack };
        ::sigaltstack(&mine, nullptr);
    }

    CAlternateStack(const CAlternateStack&) = delete;
    CAlternateStack& operator=(const CAlternateStack&) = delete;

    ~CAlternateStack()
    {
        if (m_pStack == nullptr)
            return;
        stack_t now = {};
        const stack_t none = { nullptr, SS_DISABLE, 0 };
        if (::sigaltstack(nullptr, &now) == 0 && now.ss_sp == m_pStack)
            ::sigaltstack(&none, nullptr);
        ::munmap(m_pStack, s_nAlternateStack);
    }

private:
    void* m_pStack = nullptr;
};

/// What a thread has from its first translator to its end.
struct CThreadFaults
{
    CThreadFaults();
    ~CThreadFaults();

    _se_translator_function pfnTranslator = nullptr;
    CAlternateStack alternateStack;
    CStackReserve reserve;
};

// A signal handler may not make a thread's variables on first use, so what it reads is there from the thread's start.
thread_local CThreadFaults* t_pFaults __attribute__((tls_model("initial-exec"))) = nullptr;

CThreadFaults::CThreadFaults()
{
    t_pFaults = this;
}

CThreadFaults::~CThreadFaults()
{
    t_pFaults = nullptr;
}

void OnSignal(int nSignal, siginfo_t* pInfo, void* pContext);

/// The handlers of the process: ours, and those that were there before.
class CHandlers
{
public:
    CHandlers()
    {
        struct sigaction mine = {};
        mine.sa_sigaction = OnSignal;
        mine.sa_flags = SA_SIGINFO | SA_ONSTACK;
        for (size_t i = 0; i < s_signals.size(); ++i)
            ::sigaction(s_signals[i], &mine, &m_before[i]);
    }

    CHandlers(const CHandlers&) = delete;
    CHandlers& operator=(const CHandlers&) = delete;

    /// Puts back what was there, but where someone else has taken the signal since.
    ~CHandlers()
    {
        for (size_t i = 0; i < s_signals.size(); ++i)
        {
            struct sigaction now = {};
            if (::sigaction(s_signals[i], nullptr, &now) == 0 && now.sa_sigaction == OnSignal)
                ::sigaction(s_signals[i], &m_before[i], nullptr);
        }
    }

    const struct sigaction& Before(int nSignal) const
    {
        size_t i = 0;
        while (s_signals[i] != nSignal)
            ++i;
        return m_before[i];
    }

private:
    std::array<struct sigaction, s_signals.size()> m_before = {};
};

CHandlers& Handlers()
{
    static CHandlers s_handlers;
    return s_handlers;
}

/// Whether the processor caused the signal, and nobody sent it.
bool IsFault(const siginfo_t& info)
{
    return info.si_code > 0;
}

/// Dies of the signal, as a process without a handler does: a fault comes again when its instruction is repeated.
void TakeDefault(int nSignal, const siginfo_t& info)
{
    struct sigaction standard = {};
    standard.sa_handler = SIG_DFL;
    ::sigaction(nSignal, &standard, nullptr);
    if (!IsFault(info) || nSignal == SIGTRAP)
        ::raise(nSignal);
}

void PassOn(int nSignal, siginfo_t* pInfo, void* pContext)
{
    const struct sigaction& before = Handlers().Before(nSignal);
    if ((before.sa_flags & SA_SIGINFO) != 0)
        before.sa_sigaction(nSignal, pInfo, pContext);
    else if (before.sa_handler == SIG_DFL || (before.sa_handler == SIG_IGN && IsFault(*pInfo)))
        TakeDefault(nSignal, *pInfo);
    else if (before.sa_handler != SIG_IGN)
        before.sa_handler(nSignal);
}

/// Moves the registers back to the instruction that is to blame.
void GoToFaultingInstruction(const EXCEPTION_RECORD& record, mcontext_t& context)
{
    greg_t& pc = context.gregs[REG_RIP];
    if (record.ExceptionCode == EXCEPTION_BREAKPOINT)
    {
        --pc; // a trap: the instruction is behind
    }
    else if (record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION && (context.gregs[REG_ERR] & s_nErrFetch) != 0)
    {
        greg_t& sp = context.gregs[REG_RSP]; // a call into nowhere: back into the calling instruction
        pc = *reinterpret_cast<const greg_t*>(sp) - 1;
        sp += static_cast<greg_t>(sizeof(greg_t));
    }
}

CFaultFrame* FrameBelow(greg_t nStackPointer)
{
    const greg_t nFrame = (nStackPointer - s_nRedZone - static_cast<greg_t>(sizeof(CFaultFrame))) & -s_nStackAlignment;
    return reinterpret_cast<CFaultFrame*>(nFrame);
}

/// Makes the thread go on in the trampoline. The frame that it finds there lies on its own stack.
void Redirect(CFaultFrame* pFrame, _se_translator_function pfnTranslator, const EXCEPTION_RECORD& record,
              mcontext_t& context)
{
    GoToFaultingInstruction(record, context);
    for (size_t i = 0; i <= REG_RIP; ++i)
        pFrame->registers[i] = context.gregs[i];
    pFrame->pfnTranslator = pfnTranslator;
    pFrame->record = record;
    pFrame->pointers = { &pFrame->record, nullptr };
    context.gregs[REG_EFL] &= ~s_nBadFlags;
    context.gregs[REG_RSP] = reinterpret_cast<greg_t>(pFrame);
    context.gregs[REG_RIP] = reinterpret_cast<greg_t>(&OvFaultTrampoline);
}

/// @return false when the fault is not for the translator.
bool Translate(CThreadFaults& faults, int nSignal, const siginfo_t& info, mcontext_t& context)
{
    EXCEPTION_RECORD record = DescribeFault(nSignal, info, context);
    CFaultFrame* const pFrame = FrameBelow(context.gregs[REG_RSP]);
    const bool bOverflow = nSignal == SIGSEGV && faults.reserve.Guards(info.si_addr);
    if ((bOverflow || faults.reserve.Guards(pFrame)) && !faults.reserve.Spend())
        return false;
    if (bOverflow)
        record.ExceptionCode = EXCEPTION_STACK_OVERFLOW;
    Redirect(pFrame, faults.pfnTranslator, record, context);
    return true;
}

void OnSignal(int nSignal, siginfo_t* pInfo, void* pContext)
{
    const int nError = errno;
    CThreadFaults* const pFaults = t_pFaults;
    const bool bOurs = pFaults != nullptr && pFaults->pfnTranslator != nullptr && IsFault(*pInfo);
    if (!bOurs || !Translate(*pFaults, nSignal, *pInfo, static_cast<ucontext_t*>(pContext)->uc_mcontext))
        PassOn(nSignal, pInfo, pContext);
    errno = nError;
}

} // namespace

} // namespace OvPlatform

using namespace OvPlatform;

_se_translator_function _set_se_translator(_se_translator_function pNew)
{
    thread_local CThreadFaults s_faults;
    if (pNew != nullptr)
    {
        Handlers();
        s_faults.reserve.Arm();
    }
    const _se_translator_function pOld = s_faults.pfnTranslator;
    s_faults.pfnTranslator = pNew;
    return pOld;
}
