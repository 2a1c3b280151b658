// Faults on threads that never ran a worker's body, as a host of the platform's own compiler meets them. On Windows
// alone: the native handlers from before are in the stand-in's own tests.
#include "MachineFaults.h"
#include "tests/ovCore/TestWorker.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>

namespace
{

constexpr int s_nHostsHandler = 7; // the exit code of a process that a handler of the host ends

/// Meets the fault on a thread of its own, while another one runs a worker's body.
void FaultBesideAWorker(void (*pfnFault)())
{
    std::promise<void> running;
    CTestWorker worker([&](CTestWorker& me) -> DWORD {
        running.set_value();
        me.WaitForStop();
        return 0;
    });
    worker.Start(true);
    running.get_future().wait();
    std::thread(pfnFault).join();
    worker.Stop(true, false);
}

/// The process's end with the fault's code, without a debugger.
LONG WINAPI EndAsSystem(EXCEPTION_POINTERS*)
{
    return EXCEPTION_EXECUTE_HANDLER;
}

LONG WINAPI EndAsHost(EXCEPTION_POINTERS*)
{
    ::TerminateProcess(::GetCurrentProcess(), s_nHostsHandler);
    return EXCEPTION_CONTINUE_SEARCH;
}

EXCEPTION_DISPOSITION __cdecl EndInFrame(EXCEPTION_RECORD*, void*, CONTEXT*, void*)
{
    EndAsHost(nullptr);
    return ExceptionContinueSearch;
}

/// Reads nowhere under a structured handler, as the host's compiler sets one up.
void FaultUnderAFrameHandler()
{
    volatile struct
    {
        const void* pNext;
        EXCEPTION_DISPOSITION(__cdecl* pfnHandler)(EXCEPTION_RECORD*, void*, CONTEXT*, void*);
    } handler = { nullptr, EndInFrame };
    asm volatile("movl %%fs:0, %0" : "=r"(handler.pNext));
    asm volatile("movl %0, %%fs:0" : : "r"(&handler) : "memory");
    ReadNowhere();
    asm volatile("movl %0, %%fs:0" : : "r"(handler.pNext) : "memory");
}

} // namespace

TEST(UntranslatedFaultsDeathTest, EndTheProcessWithTheirOwnCode)
{
    ::SetUnhandledExceptionFilter(EndAsSystem);
    for (const CMachineFault& fault : MachineFaults())
        EXPECT_EXIT(FaultBesideAWorker(fault.pfnFault), testing::ExitedWithCode(static_cast<int>(fault.dwCode)), "")
            << fault.szName;
}

TEST(UntranslatedFaultsDeathTest, GoToTheHandlersOfTheHost)
{
    const auto lastHandler = [] {
        ::SetUnhandledExceptionFilter(EndAsHost);
        FaultBesideAWorker(ReadNowhere);
    };
    EXPECT_EXIT(lastHandler(), testing::ExitedWithCode(s_nHostsHandler), "");
    EXPECT_EXIT(FaultBesideAWorker(FaultUnderAFrameHandler), testing::ExitedWithCode(s_nHostsHandler), "");
}
