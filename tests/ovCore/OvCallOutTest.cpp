// Exceptions and faults in foreign code, calls into which are plain calls elsewhere than on Windows.
#include "ovCore/OvCallOut.h"
#include "ovCore/OvSingleLock.h"

#include "HostThrow.h"
#include "MachineFaults.h"
#include "TestWorker.h"

#include <gtest/gtest.h>

#include <functional>
#include <future>
#include <memory>
#include <thread>

namespace
{

const DWORD s_dwMsCppException = 0xE06D7363;

const void* NewestHandler()
{
    const void* p;
    asm volatile("movl %%fs:0, %0" : "=r"(p));
    return p;
}

/// A structured handler as another compiler's code has it: it counts, and lets everything pass.
struct CForeignHandler
{
    const void* pNext;
    EXCEPTION_DISPOSITION(__cdecl* pfnHandler)(EXCEPTION_RECORD*, void*, CONTEXT*, void*);
};

unsigned s_nSearched = 0;
unsigned s_nUnwound = 0;

EXCEPTION_DISPOSITION __cdecl CountPasses(EXCEPTION_RECORD* pRecord, void*, CONTEXT*, void*)
{
    const DWORD dwUnwinding = 0x2 | 0x4;
    ++((pRecord->ExceptionFlags & dwUnwinding) != 0 ? s_nUnwound : s_nSearched);
    return ExceptionContinueSearch;
}

/// Calls under such a handler, which an exception takes out of the list as it goes.
template <class Call>
__attribute__((noinline)) void UnderForeignHandler(Call&& call)
{
    volatile CForeignHandler handler = { NewestHandler(), CountPasses };
    asm volatile("movl %0, %%fs:0" : : "r"(&handler) : "memory");
    call();
    asm volatile("movl %0, %%fs:0" : : "r"(handler.pNext) : "memory");
}

void RaiseInForeignCode(DWORD dwCode)
{
    UnderForeignHandler([dwCode] { ::RaiseException(dwCode, 0, 0, nullptr); });
}

/// What a fault that nobody has translated meets at last: the handler gives it a place to read.
char s_readable = 'r';
unsigned s_nLeftAlone = 0;

LONG CALLBACK TakeWhatIsLeft(EXCEPTION_POINTERS* pPointers)
{
    if (pPointers->ExceptionRecord->ExceptionCode != EXCEPTION_ACCESS_VIOLATION)
        return EXCEPTION_CONTINUE_SEARCH;
    ++s_nLeftAlone;
    for (DWORD CONTEXT::*pRegister : { &CONTEXT::Eax, &CONTEXT::Ecx, &CONTEXT::Edx })
        if (pPointers->ContextRecord->*pRegister == pPointers->ExceptionRecord->ExceptionInformation[1])
            pPointers->ContextRecord->*pRegister = reinterpret_cast<DWORD>(&s_readable);
    return EXCEPTION_CONTINUE_EXECUTION;
}

/// Meets the fault on a thread of its own, while another one runs a worker's body.
void FaultBesideAWorker(const std::function<void()>& fault)
{
    std::promise<void> running;
    CTestWorker worker([&](CTestWorker& me) -> DWORD {
        running.set_value();
        me.WaitForStop();
        return 0;
    });
    worker.Start(true);
    running.get_future().wait();
    std::thread(fault).join();
}

/// As a host that wants no debugger: the process ends with the fault's code.
LONG WINAPI EndWithItsCode(EXCEPTION_POINTERS*)
{
    return EXCEPTION_EXECUTE_HANDLER;
}

LONG WINAPI EndWithTheCount(EXCEPTION_POINTERS*)
{
    ::TerminateProcess(::GetCurrentProcess(), s_nSearched);
    return EXCEPTION_CONTINUE_SEARCH;
}

} // namespace

TEST(OvCallOutDeathTest, FaultsWithoutATranslatorEndTheProcessOrGoToTheHostsHandlers)
{
    ::SetUnhandledExceptionFilter(EndWithItsCode);
    for (const CMachineFault& fault : MachineFaults())
        EXPECT_EXIT(FaultBesideAWorker(fault.pfnFault), testing::ExitedWithCode(static_cast<int>(fault.dwCode)), "")
            << fault.szName;
    ::SetUnhandledExceptionFilter(EndWithTheCount);
    const auto inForeignCode = [] { UnderForeignHandler([] { UnderForeignHandler(ReadNowhere); }); };
    EXPECT_EXIT(FaultBesideAWorker(inForeignCode), testing::ExitedWithCode(2), ""); // each handler had its turn
    ::SetUnhandledExceptionFilter(nullptr);
}

TEST(OvCallOut, ArrivesAsOneOfOurs)
{
    for (int i = 0; i < 100; ++i)
    {
        COvCriticalSection section;
        const void* const pBefore = NewestHandler();
        volatile int nKept = i; // what the caller holds in its registers must survive
        s_nSearched = s_nUnwound = 0;
        const auto call = [&] {
            COvSingleLock lock(&section, true);
            OvCallOut([] { OvCallOut([] { RaiseInForeignCode(s_dwMsCppException); }); }); // the innermost takes it
        };
        ASSERT_THROW(call(), COvForeignException);
        ASSERT_EQ(i, nKept);
        ASSERT_EQ(pBefore, NewestHandler());
        ASSERT_TRUE(s_nSearched == 1 && s_nUnwound == 1); // the host's own frames had their turn
        std::thread([&] { COvSingleLock lock(&section, true); }).join();
    }
    EXPECT_THROW(OvCallOut([] { ::RaiseException(s_dwMsCppException, EXCEPTION_NONCONTINUABLE, 0, nullptr); }),
                 COvForeignException);
}

TEST(OvCallOut, WhatForeignCodeThrowsOrMeetsEndsInAWorkersError)
{
    const wchar_t* const pNowhere = reinterpret_cast<const wchar_t*>(8);
    size_t (*volatile pfnLength)(const wchar_t*) = ::wcslen; // or the compiler counts itself
    const std::wstring strUnknown = L"Msg: Unknown exception caught.\rStack Dump: \r";
    const struct
    {
        const char* szWhat;
        std::wstring strError;
        std::function<void()> meet;
    } rows[] = {
        { "thrown", strUnknown, ThrowAsHost },
        { "raised", EvidenceOf(0xE0001234), [] { RaiseInForeignCode(0xE0001234); } },
        { "raised as a fault", EvidenceOf(0xC0000005), [] { RaiseInForeignCode(0xC0000005); } },
        { "OutputDebugStringW", EvidenceOf(0xC0000005), [=] { ::OutputDebugStringW(pNowhere); } },
        { "SysStringLen", EvidenceOf(0xC0000005), [=] { ::SysStringLen(const_cast<BSTR>(pNowhere)); } },
        { "wcslen", EvidenceOf(0xC0000005), [&] { pfnLength(pNowhere); } },
        { "DebugBreak", EvidenceOf(0x80000003), ::DebugBreak },
    };
    COvCriticalSection section;
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.szWhat);
        CTestWorker inBody([&](CTestWorker&) -> DWORD { return row.meet(), 1; });
        CTestWorker inCall([&](CTestWorker&) -> DWORD {
            ::OutputDebugStringW(L"note\r\n"); // an exception too, and no matter of ours
            COvSingleLock lock(&section, true);
            OvCallOut([] { ::OutputDebugStringW(L"note\r\n"); });
            OvCallOut(row.meet);
            return 1;
        });
        CTestWorker inError([](CTestWorker&) -> DWORD { throw 1; });
        inError.m_onError = row.meet; // the error of an error is dropped
        for (CTestWorker* const pWorker : { &inBody, &inCall, &inError })
        {
            pWorker->RunToItsEnd();
            EXPECT_EQ("before work error ", pWorker->m_strCalls);
            EXPECT_EQ(pWorker == &inError ? strUnknown : row.strError, pWorker->m_strError);
        }
        std::thread([&] { COvSingleLock lock(&section, true); }).join(); // it is free
    }
}

TEST(OvCallOut, FaultsOfOurOwnBelowForeignCodeKeepTheirCleanUps)
{
    COvCriticalSection section;
    CTestWorker worker([&](CTestWorker&) -> DWORD {
        OvCallOut([&] {
            UnderForeignHandler([&] { // calls us again
                EXPECT_THROW(OvCallIn([&] {
                                 COvSingleLock lock(&section, true);
                                 ReadNowhere();
                             }),
                             COvException);
            });
        });
        return 1;
    });
    worker.RunToItsEnd();
    EXPECT_EQ("before work after ", worker.m_strCalls);
    std::thread([&] { COvSingleLock lock(&section, true); }).join();
}

TEST(OvCallOut, FaultsAreLeftToTheHostWithoutATranslatorAndUnderItsOwnHandler)
{
    void* const hLast = ::AddVectoredExceptionHandler(0, TakeWhatIsLeft);
    std::thread([] {
        ReadNowhere();
        OvCallOut([] { ReadNowhere(); });
    }).join();
    CTestWorker worker([](CTestWorker&) -> DWORD {
        UnderForeignHandler([] { ReadNowhere(); });
        return 1;
    });
    worker.RunToItsEnd();
    EXPECT_EQ(3u, s_nLeftAlone);
    EXPECT_EQ("before work after ", worker.m_strCalls);
    ::RemoveVectoredExceptionHandler(hLast);
}

TEST(OvCallOut, IsNoMatterOfOurOwnExceptions)
{
    // Something on the heap: lost or copied wrongly it shows.
    const auto pText = std::make_shared<std::wstring>(L"text");
    const auto thrower = [&] {
        const auto pHeld = pText;
        OvCallOut([&] { throw std::make_pair(pHeld, 7); });
    };
    using Thrown = std::pair<std::shared_ptr<std::wstring>, int>;
    EXPECT_THROW(OvCallOut(thrower), Thrown);
    EXPECT_EQ(1, pText.use_count());
}
