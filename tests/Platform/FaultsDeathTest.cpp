// Faults and signals that nobody takes, and what a process finds at its end.
#include "Platform/Faults.h"

#include "FaultSignals.h"
#include "MachineFaults.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <thread>
#include <unistd.h>

namespace
{

void Throw(unsigned uCode, EXCEPTION_POINTERS*)
{
    throw uCode;
}

/// Runs the work on this thread, which has a translator no more, while another one has.
template <class Work>
void RunBesideATranslator(Work&& work)
{
    ::_set_se_translator(Throw);
    ::_set_se_translator(nullptr);
    std::thread([&work] {
        ::_set_se_translator(Throw);
        std::thread(work).join();
    }).join();
    work();
}

/// Exits with 0 when each signal has its default handling.
void CheckHandlers()
{
    for (const int nSignal : { SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP })
    {
        struct sigaction now = {};
        if (::sigaction(nSignal, nullptr, &now) != 0 || now.sa_handler != SIG_DFL)
            ::_exit(nSignal);
    }
    ::_exit(0);
}

void ReturnFromTranslator(unsigned, EXCEPTION_POINTERS*) {}

} // namespace

TEST(FaultsDeathTest, EndTheProcessAsIfNothingWereThere)
{
    for (const CMachineFault& fault : MachineFaults())
        EXPECT_EXIT(RunBesideATranslator(fault.pfnFault), testing::KilledBySignal(SignalFor(fault.dwCode)), "")
            << fault.szName;
}

TEST(FaultsDeathTest, ThatSomeoneSentAreDeadlyToo)
{
    for (const int nSignal : { SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP })
        EXPECT_EXIT((::_set_se_translator(Throw), ::raise(nSignal)), testing::KilledBySignal(nSignal), "");
}

TEST(FaultsDeathTest, FindNoHandlerOfOursAtTheProcessesEnd)
{
    const auto end = [] {
        std::atexit(CheckHandlers); // before the handlers are there, so it runs when they are gone
        ::_set_se_translator(Throw);
        std::exit(1);
    };
    EXPECT_EXIT(end(), testing::ExitedWithCode(0), "");
}

TEST(FaultsDeathTest, ATranslatorHasToThrow)
{
    const auto fault = [] {
        ::_set_se_translator(ReturnFromTranslator);
        ReadNowhere();
    };
    EXPECT_EXIT(fault(), testing::KilledBySignal(SIGABRT), "");
}
