// Exceptions of the host's own compiler, in calls into the host and in a worker. Windows only.
#include "ovCore/OvHostCall.h"
#include "ovCore/OvSingleLock.h"

#include "MachineFaults.h"
#include "TestWorker.h"

#include <gtest/gtest.h>

#include <thread>

namespace
{

const DWORD s_dwMsCppException = 0xE06D7363;
const DWORD s_dwSoftware = 0xE0001234;

const void* NewestHandler()
{
    const void* p;
    asm volatile("movl %%fs:0, %0" : "=r"(p));
    return p;
}

__attribute__((noinline)) void Raise(DWORD dwCode, DWORD dwFlags = 0)
{
    ::RaiseException(dwCode, dwFlags, 0, nullptr);
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

/// Raises under such a handler, which an exception takes out of the list as it goes.
__attribute__((noinline)) void RaiseInForeignCode(DWORD dwCode)
{
    volatile CForeignHandler handler = { NewestHandler(), CountPasses };
    asm volatile("movl %0, %%fs:0" : : "r"(&handler) : "memory");
    Raise(dwCode);
    asm volatile("movl %0, %%fs:0" : : "r"(handler.pNext) : "memory");
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

class CLastHandler
{
public:
    CLastHandler() { s_nLeftAlone = 0; }
    ~CLastHandler() { ::RemoveVectoredExceptionHandler(m_hHandler); }

private:
    void* m_hHandler = ::AddVectoredExceptionHandler(0, TakeWhatIsLeft);
};

} // namespace

TEST(OvHostException, ArrivesAsOneOfOurs)
{
    for (int i = 0; i < 100; ++i)
    {
        COvCriticalSection section;
        const void* const pBefore = NewestHandler();
        volatile int nKept = i; // what the caller holds in its registers must survive
        s_nSearched = s_nUnwound = 0;
        const auto call = [&] {
            COvSingleLock lock(&section, true);
            OvCallHost([] { RaiseInForeignCode(s_dwMsCppException); });
        };
        ASSERT_THROW(call(), COvHostException);
        ASSERT_EQ(i, nKept);
        ASSERT_EQ(pBefore, NewestHandler());
        ASSERT_EQ(1u, s_nSearched);
        ASSERT_EQ(1u, s_nUnwound); // the host's own frames had their turn
        std::thread([&] { COvSingleLock lock(&section, true); }).join();
    }
}

TEST(OvHostException, IsTakenByTheInnermostCall)
{
    bool bInner = false;
    OvCallHost([&] {
        try
        {
            OvCallHost([] { Raise(s_dwMsCppException, EXCEPTION_NONCONTINUABLE); });
        }
        catch (const COvHostException&)
        {
            bInner = true;
        }
    });
    EXPECT_TRUE(bInner);
    EXPECT_THROW(OvCallHost([] { OvCallHost([] { Raise(s_dwMsCppException); }); }), COvHostException);
}

TEST(OvHostException, EndsInAWorkersError)
{
    const struct
    {
        DWORD dwCode;
        const wchar_t* szEvidence;
    } rows[] = {
        { s_dwMsCppException, L"Msg: Unknown exception caught.\rStack Dump: \r" },
        { s_dwSoftware, L"SEH Information: SEH Exception: 0xe0001234\r \rStack Dump: \r" },
    };
    for (const auto& row : rows)
    {
        CTestWorker worker([&row](CTestWorker&) -> DWORD {
            OvCallHost([&row] { RaiseInForeignCode(row.dwCode); });
            return 1;
        });
        worker.Start(true);
        worker.WaitForComplete(false);
        EXPECT_EQ("before work error ", worker.m_strCalls);
        EXPECT_EQ(row.szEvidence, worker.m_strError);
    }
}

TEST(OvHostException, IsNoMatterOfDebuggersNotes)
{
    CTestWorker worker([](CTestWorker&) -> DWORD {
        OvCallHost([] { ::OutputDebugStringW(L"note\r\n"); });
        ::OutputDebugStringW(L"note\r\n");
        return 1;
    });
    worker.Start(true);
    worker.WaitForComplete(false);
    EXPECT_EQ("before work after ", worker.m_strCalls);
}

TEST(OvHostException, FaultsAreLeftToTheHostWithoutATranslator)
{
    const CLastHandler last;
    std::thread([] {
        ReadNowhere();
        OvCallHost([] { ReadNowhere(); });
    }).join();
    EXPECT_EQ(2u, s_nLeftAlone);
}

TEST(OvHostException, FaultsUnderAForeignHandlerAreLeftToIt)
{
    const CLastHandler last;
    CTestWorker worker([](CTestWorker&) -> DWORD {
        volatile CForeignHandler handler = { NewestHandler(), CountPasses };
        asm volatile("movl %0, %%fs:0" : : "r"(&handler) : "memory");
        ReadNowhere();
        asm volatile("movl %0, %%fs:0" : : "r"(handler.pNext) : "memory");
        return 1;
    });
    worker.Start(true);
    worker.WaitForComplete(false);
    EXPECT_EQ(1u, s_nLeftAlone);
    EXPECT_EQ("before work after ", worker.m_strCalls);
}
