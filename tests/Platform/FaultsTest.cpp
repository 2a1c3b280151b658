// What the fault handling leaves to others: the handlers that were there before.
#include "Platform/Faults.h"

#include "FaultSignals.h"
#include "MachineFaults.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csetjmp>
#include <csignal>
#include <cstdio>
#include <sys/mman.h>
#include <thread>
#include <unistd.h>

namespace
{

thread_local sigjmp_buf t_back;
thread_local int t_nSeen = 0; // the last signal of the handler that was there before

void OnSignalBefore(int nSignal)
{
    t_nSeen = nSignal;
    siglongjmp(t_back, 1);
}

int s_nDetails = 0;

void OnDetailsBefore(int nSignal, siginfo_t* pInfo, void* pContext)
{
    s_nDetails += pContext != nullptr && pInfo->si_signo == nSignal ? 1 : 0;
    OnSignalBefore(nSignal);
}

struct CThrown
{
    DWORD dwCode;
};

void Throw(unsigned uCode, EXCEPTION_POINTERS*)
{
    throw CThrown{ uCode };
}

/// Puts the handlers of a host in place before the first translator of the process, as a host does.
class CHostHandlers
{
public:
    CHostHandlers()
    {
        struct sigaction before = {};
        before.sa_handler = OnSignalBefore;
        for (const int nSignal : { SIGSEGV, SIGILL, SIGTRAP })
            ::sigaction(nSignal, &before, nullptr);
        before.sa_sigaction = OnDetailsBefore;
        before.sa_flags = SA_SIGINFO;
        ::sigaction(SIGFPE, &before, nullptr);
        before.sa_handler = SIG_IGN;
        before.sa_flags = 0;
        ::sigaction(SIGBUS, &before, nullptr);
        ::_set_se_translator(Throw);
        ::_set_se_translator(nullptr);
    }
};

const CHostHandlers s_hostHandlers;

/// The signal that the handler from before is given during the work; 0: none.
template <class Work>
int SignalOf(Work&& work)
{
    t_nSeen = 0;
    if (sigsetjmp(t_back, 1) == 0)
        work();
    return t_nSeen;
}

/// The translated code of what the work meets; 0: nothing.
template <class Work>
DWORD FaultOf(Work&& work)
{
    ::_set_se_translator(Throw);
    DWORD dwCode = 0;
    try
    {
        work();
    }
    catch (const CThrown& thrown)
    {
        dwCode = thrown.dwCode;
    }
    ::_set_se_translator(nullptr);
    return dwCode;
}

/// A page of a file that ends before it.
volatile char* PageBehindTheEnd()
{
    std::FILE* const pFile = std::tmpfile();
    void* const p = ::mmap(nullptr, 4096, PROT_READ, MAP_PRIVATE, ::fileno(pFile), 0);
    std::fclose(pFile);
    return static_cast<volatile char*>(p);
}

__attribute__((noinline)) void ReadAt(const volatile char* p)
{
    static_cast<void>(*p);
}

} // namespace

TEST(Faults, WithoutATranslatorGoToTheHandlerFromBefore)
{
    for (const CMachineFault& fault : MachineFaults())
    {
        if (fault.dwCode == EXCEPTION_STACK_OVERFLOW)
            continue; // without an alternate stack nothing can be called
        EXPECT_EQ(SignalFor(fault.dwCode), SignalOf(fault.pfnFault)) << fault.szName;
        EXPECT_EQ(fault.dwCode, FaultOf(fault.pfnFault)) << fault.szName;
        std::thread([&] { EXPECT_EQ(SignalFor(fault.dwCode), SignalOf(fault.pfnFault)) << fault.szName; }).join();
    }
    EXPECT_EQ(4, s_nDetails); // of two faults, on two threads
}

TEST(Faults, ThatSomeoneSentAreNone)
{
    for (const int nSignal : { SIGSEGV, SIGILL, SIGTRAP, SIGFPE })
        EXPECT_EQ(nSignal, SignalOf([nSignal] { FaultOf([nSignal] { ::raise(nSignal); }); }));
    EXPECT_EQ(0u, FaultOf([] { ::raise(SIGBUS); })); // ignored before, and so now
}

TEST(Faults, OfAPageThatCannotBeLoaded)
{
    volatile char* const pPage = PageBehindTheEnd();
    EXPECT_EQ(EXCEPTION_IN_PAGE_ERROR, FaultOf([pPage] { ReadAt(pPage); }));
    ::munmap(const_cast<char*>(pPage), 4096);
}

TEST(Faults, OfTheFirstThreadsStackMayComeAgain)
{
    // In small frames: under the sanitizers an overflow of this stack in huge ones ends the process.
    const auto overflow = std::find_if(MachineFaults().begin(), MachineFaults().end(), [](const CMachineFault& fault) {
        return fault.dwCode == EXCEPTION_STACK_OVERFLOW;
    });
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(EXCEPTION_STACK_OVERFLOW, FaultOf(overflow->pfnFault)) << i;
}

TEST(Faults, LeaveThreadsAsTheyWere)
{
    char stack[64 * 1024];
    std::thread([&stack] {
        stack_t mine = { stack, 0, sizeof(stack) };
        ::sigaltstack(&mine, nullptr);
        EXPECT_EQ(EXCEPTION_ACCESS_VIOLATION, FaultOf(ReadNowhere));
        stack_t now = {};
        ::sigaltstack(nullptr, &now);
        EXPECT_EQ(stack, now.ss_sp); // a thread's own is kept
        mine.ss_flags = SS_DISABLE;
        ::sigaltstack(&mine, nullptr);
    }).join();
}
