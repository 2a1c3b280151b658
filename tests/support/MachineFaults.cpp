#include "MachineFaults.h"

#include <atomic>

namespace
{

// What an optimizer must not know, so that it leaves the fault in place.
volatile int s_nZero = 0;
volatile bool s_bDeeper = true;
volatile char* volatile s_pNowhere = reinterpret_cast<volatile char*>(8);
volatile char* volatile s_pNull = nullptr;
void (*volatile s_pfnNowhere)() = nullptr;

std::atomic<unsigned> s_nCleanUps{ 0 };

/// Counts, and puts back how floating-point faults are told.
class CCleanUp
{
public:
    CCleanUp() { asm volatile("fnstcw %0" : "=m"(m_nControl)); }
    ~CCleanUp()
    {
        asm volatile("fldcw %0" : : "m"(m_nControl));
        ++s_nCleanUps;
    }
    CCleanUp(const CCleanUp&) = delete;
    CCleanUp& operator=(const CCleanUp&) = delete;

private:
    unsigned short m_nControl;
};

// The fault itself lies in a function without a handler: what a compiler takes for a statement that cannot throw is not
// in the tables of the function that holds it.
#define FAULTING __attribute__((noinline, no_sanitize("undefined")))

FAULTING void ReadNull()
{
    static_cast<void>(*s_pNull);
}

FAULTING void Write()
{
    *s_pNowhere = 'w';
}

FAULTING void Call()
{
    s_pfnNowhere();
    asm volatile(""); // no tail call
}

FAULTING void Divide()
{
    s_nZero = 7 / s_nZero;
}

FAULTING void DivideFloating()
{
    const unsigned short nDivisionTold = 0x037B;
    asm volatile("fldcw %0; fld1; fldz; fdivrp; fwait; fstp %%st(0)" : : "m"(nDivisionTold));
}

FAULTING void Undefined()
{
    asm volatile("ud2");
}

FAULTING void Break()
{
    asm volatile("int3");
}

FAULTING void Halt()
{
    asm volatile("hlt");
}

template <int nFrame>
FAULTING int RunAway(int n)
{
    const CCleanUp cleanUp;
    volatile char frame[nFrame];
    frame[n % nFrame] = 1;
    return s_bDeeper ? RunAway<nFrame>(n + 1) + frame[0] : 0;
}

template <int nFrame>
FAULTING void RunAwayFromHere()
{
    RunAway<nFrame>(0);
}

template <void (*pfnFault)()>
void Meet()
{
    const CCleanUp cleanUp;
    pfnFault();
}

} // namespace

FAULTING void ReadNowhere()
{
    static_cast<void>(*s_pNowhere);
}

const std::vector<CMachineFault>& MachineFaults()
{
    static const std::vector<CMachineFault> s_faults = {
        { "read", EXCEPTION_ACCESS_VIOLATION, Meet<ReadNowhere> },
        { "write", EXCEPTION_ACCESS_VIOLATION, Meet<Write> },
        { "read of null", EXCEPTION_ACCESS_VIOLATION, Meet<ReadNull> },
        { "call", EXCEPTION_ACCESS_VIOLATION, Meet<Call> },
        { "integer division", EXCEPTION_INT_DIVIDE_BY_ZERO, Meet<Divide> },
        { "floating division", EXCEPTION_FLT_DIVIDE_BY_ZERO, Meet<DivideFloating> },
        { "undefined instruction", EXCEPTION_ILLEGAL_INSTRUCTION, Meet<Undefined> },
        { "privileged instruction", EXCEPTION_PRIV_INSTRUCTION, Meet<Halt> },
        { "breakpoint", EXCEPTION_BREAKPOINT, Meet<Break> },
        { "recursion", EXCEPTION_STACK_OVERFLOW, Meet<RunAwayFromHere<200>>, 1000 },
        { "recursion in frames of a page", EXCEPTION_STACK_OVERFLOW, Meet<RunAwayFromHere<4'000>>, 100 },
        { "recursion in larger frames", EXCEPTION_STACK_OVERFLOW, Meet<RunAwayFromHere<20'000>>, 20 },
        { "recursion in huge frames", EXCEPTION_STACK_OVERFLOW, Meet<RunAwayFromHere<200'000>>, 4 },
    };
    return s_faults;
}

unsigned FaultCleanUps()
{
    return s_nCleanUps;
}
