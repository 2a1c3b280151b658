// Workers: their steps, options, errors and ends.
#include "ovCore/OvThread.h"
#include "ovCore/OvThreadMgr.h"

#include "DebuggerTexts.h"
#include "Raised.h"
#include "TestWorker.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace
{

const DWORD s_dwExitCode = 0xC0DE;

DWORD Nothing(CTestWorker&)
{
    return s_dwExitCode;
}

DWORD UntilStopped(CTestWorker& worker)
{
    worker.WaitForStop();
    return s_dwExitCode;
}

/// What a thread's function returned; to be asked while its handle is open.
DWORD ExitCode(HANDLE hThread)
{
    DWORD dwCode = 0;
    EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(hThread, INFINITE));
    EXPECT_TRUE(::GetExitCodeThread(hThread, &dwCode));
    return dwCode;
}

std::wstring ManagedThreads()
{
    return COvThreadMgr::Get()->GetEvidence().ToString(nullptr);
}

const std::wstring s_strNoneManaged = L"Managed thread count: 0";
const std::wstring s_strOneManaged = L"Managed thread count: 1";

} // namespace

TEST(OvThread, RunsItsStepsInOrder)
{
    for (const bool bAsync : { true, false })
    {
        bool bRunning = false;
        CTestWorker worker([&](CTestWorker& w) {
            bRunning = w.IsRunning();
            return s_dwExitCode;
        });
        const DWORD dwThreadId = worker.Start(bAsync);
        EXPECT_EQ(bAsync, dwThreadId != ::GetCurrentThreadId());
        EXPECT_EQ(dwThreadId, worker.GetThreadId());
        if (bAsync)
        {
            EXPECT_EQ(s_dwExitCode, ExitCode(worker.GetThreadHandle().Get()));
        }
        worker.WaitForComplete(false);
        EXPECT_EQ("before work after ", worker.m_strCalls);
        EXPECT_EQ(dwThreadId, worker.m_dwCalledOn);
        EXPECT_EQ(bAsync, bRunning);
        EXPECT_FALSE(worker.IsRunning());
        EXPECT_EQ(::GetCurrentThreadId(), worker.GetThreadId());
        EXPECT_EQ(::GetCurrentThread(), worker.GetThreadHandle().Get());
    }
}

TEST(OvThread, IsStoppedThroughItsEvent)
{
    CTestWorker worker(UntilStopped);
    worker.Stop(true, false); // not started: nothing happens
    EXPECT_FALSE(worker.WaitForStop(0));
    worker.Start(true);
    EXPECT_TRUE(worker.IsRunning());
    worker.Stop(false, false);
    EXPECT_NE(nullptr, worker.OwnHandle());
    worker.Stop(true, false);
    EXPECT_FALSE(worker.IsRunning());
    EXPECT_EQ(nullptr, worker.OwnHandle());
    worker.Start(true); // the event is never reset
    worker.WaitForComplete(false);
    EXPECT_EQ("before work after before work after ", worker.m_strCalls);
}

TEST(OvThread, MayBeForgottenWhileItRuns)
{
    CTestWorker worker(UntilStopped);
    worker.Start(true);
    const COvHandle hThread = worker.GetThreadHandle();
    worker.CleanUp();
    worker.Stop(true, false); // knows nothing of it any more
    EXPECT_FALSE(worker.WaitForStop(0));
    worker.Start(true);
    worker.Stop(true, false); // one event stops them both
    EXPECT_EQ(s_dwExitCode, ExitCode(hThread.Get()));
}

TEST(OvThread, HasSixFlags)
{
    CTestWorker worker(Nothing);
    for (unsigned nBit = 0; nBit < 8; ++nBit)
    {
        EXPECT_FALSE(worker.TestFlag(nBit)) << nBit;
        worker.SetFlag(nBit);
        EXPECT_EQ(nBit < 6, worker.TestFlag(nBit)) << nBit;
    }
    EXPECT_FALSE(worker.TestFlag(0xFFFFFFFF));
    EXPECT_TRUE(worker.IsRunning());
}

TEST(OvThread, SaysWhyItDoesNotRun)
{
    CTestWorker running(UntilStopped, L"first");
    running.Start(true);
    CTestWorker unstoppable(Nothing, L"second", false);
    CTestWorker deleting(Nothing, nullptr);
    deleting.SetFlag(FLG_DEL_ON_STOP);
    const std::wstring strPrefix = L"0x80004005 OvThread | Info Msg: ";
    EXPECT_EQ(strPrefix + L"This instance is already running | m_szDesc: first", Raised([&] { running.Start(true); }));
    EXPECT_EQ(strPrefix + L"This instance is already running | m_szDesc: first", Raised([&] { running.Start(false); }));
    EXPECT_EQ(strPrefix + L"No Stop event was requested in the ctor. This is required to use the Start() method | "
                          L"m_szDesc: second",
              Raised([&] { unstoppable.Start(true); }));
    EXPECT_EQ(strPrefix + L"NULL class specified on RunSync call.", Raised([] { COvThread::RunSync(nullptr); }));
    EXPECT_EQ(strPrefix + L"NULL class specified on RunAsync call.",
              Raised([] { COvThread::RunAsync(nullptr, nullptr); }));
    EXPECT_EQ(strPrefix + L"This function cannot be called with FLG_DEL_ON_STOP option",
              Raised([&] { deleting.WaitForComplete(false); }));
    EXPECT_EQ(L"", unstoppable.m_strError);
    EXPECT_EQ("", unstoppable.m_strCalls);
    unstoppable.Start(false); // needs no event
    EXPECT_EQ("before work after ", unstoppable.m_strCalls);
    running.Stop(true, false);
}

TEST(OvThread, TakesWhateverItsBodyThrows)
{
    const COvException own(E_ACCESSDENIED, L"..\\folder\\Source", 7, COvEvidence(L"Info Msg", L"own"));
    const std::wstring strBlock =
        L"Exception Info: \r{\rCode: STL EXCEPTION\rDescription:\rstandard\r}\rStack Dump: \r";
    const struct
    {
        const char* szName;
        std::function<void()> fail;
        HRESULT hr;
        const wchar_t* szFile;
        std::wstring strEvidence;
    } rows[] = {
        { "standard", [] { throw std::runtime_error("standard"); }, E_FAIL, L"OvThread", strBlock },
        { "own", [&] { throw own; }, E_ACCESSDENIED, L"Source", L"Info Msg: own" },
        { "other", [] { throw 1; }, E_FAIL, L"OvThread", L"Msg: Unknown exception caught.\rStack Dump: \r" },
    };
    const struct
    {
        const char* szStep;
        const char* szCalls;
        DWORD dwExitCode;
    } steps[] = {
        { "before", "before error ", 0 },
        { "work", "before work error ", 0 },
        { "after", "before work after error ", s_dwExitCode },
    };
    for (const auto& row : rows)
        for (const auto& step : steps)
            for (const bool bAsync : { true, false })
            {
                CTestWorker worker(Nothing);
                worker.m_strFailAt = step.szStep;
                worker.m_fail = row.fail;
                const DWORD dwThreadId = worker.Start(bAsync);
                if (bAsync)
                {
                    EXPECT_EQ(step.dwExitCode, ExitCode(worker.GetThreadHandle().Get())) << row.szName << step.szStep;
                }
                worker.WaitForComplete(false);
                EXPECT_EQ(step.szCalls, worker.m_strCalls) << row.szName << step.szStep << bAsync;
                EXPECT_EQ(dwThreadId, worker.m_dwCalledOn) << row.szName << step.szStep << bAsync;
                EXPECT_EQ(row.hr, worker.m_hrError) << row.szName << step.szStep << bAsync;
                EXPECT_EQ(row.szFile, worker.m_strErrorFile) << row.szName << step.szStep << bAsync;
                EXPECT_EQ(row.strEvidence, worker.m_strError) << row.szName << step.szStep << bAsync;
                EXPECT_EQ(worker.m_strError, worker.LastError()->GetEvidence(nullptr)) << row.szName << step.szStep;
                EXPECT_FALSE(worker.IsRunning()) << row.szName << step.szStep << bAsync;
            }
}

TEST(OvThread, LetsAnErrorsErrorOutOfASynchronousRunAlone)
{
    CTestWorker worker([](CTestWorker&) -> DWORD { throw COvStdException("the first"); });
    worker.m_onError = [] { throw std::runtime_error("the second"); };
    worker.Start(true);
    worker.WaitForComplete(false);
    EXPECT_EQ("before work error ", worker.m_strCalls);
    EXPECT_FALSE(worker.IsRunning());
    EXPECT_THROW(worker.Start(false), std::runtime_error);
    EXPECT_EQ("before work error before work error ", worker.m_strCalls);
    EXPECT_NE(nullptr, worker.LastError());
}

TEST(OvThread, FindsItselfInTheRegistry)
{
    const int nRounds = 200; // the worker may come before Start has the id and the handle
    for (int i = 0; i < nRounds; ++i)
    {
        bool bHandle = false;
        DWORD dwOwnId = 0;
        std::wstring strManaged;
        CTestWorker worker([&](CTestWorker& w) {
            bHandle = ::WaitForSingleObject(w.OwnHandle(), 0) == WAIT_TIMEOUT;
            dwOwnId = w.GetThreadId();
            strManaged = ManagedThreads();
            COvThreadMgr::Get()->Register(&w); // a second time changes nothing
            return s_dwExitCode;
        });
        worker.SetFlag(FLG_MANAGED);
        worker.Start(true);
        worker.WaitForComplete(false);
        ASSERT_TRUE(bHandle);
        ASSERT_EQ(worker.m_dwCalledOn, dwOwnId);
        ASSERT_EQ(s_strOneManaged, strManaged);
        ASSERT_EQ(s_strNoneManaged, ManagedThreads());
    }
}

TEST(OvThread, LeavesTheRegistryAfterAnError)
{
    CTestWorker worker([](CTestWorker&) -> DWORD { throw 1; });
    worker.SetFlag(FLG_MANAGED);
    worker.Start(true);
    worker.WaitForComplete(false);
    EXPECT_EQ("before work error ", worker.m_strCalls);
    EXPECT_EQ(s_strNoneManaged, ManagedThreads());
}

TEST(OvThreadMgr, KeepsAHandleOfItsOwn)
{
    CTestWorker worker(UntilStopped);
    const DWORD dwThreadId = worker.Start(true);
    COvThreadMgr* const pManager = COvThreadMgr::Get();
    pManager->Register(&worker);
    pManager->Register(&worker);
    EXPECT_EQ(s_strOneManaged, ManagedThreads());
    worker.Stop(true, false);
    EXPECT_EQ(s_strOneManaged, ManagedThreads());
    pManager->Unregister(0); // this thread has no record
    EXPECT_EQ(s_strOneManaged, ManagedThreads());
    pManager->Unregister(dwThreadId);
    pManager->Unregister(dwThreadId);
    EXPECT_EQ(s_strNoneManaged, ManagedThreads());
    pManager->Register(&worker); // not started: the calling thread
    EXPECT_EQ(s_strOneManaged, ManagedThreads());
    pManager->Unregister(0);
    EXPECT_EQ(s_strNoneManaged, ManagedThreads());
}

TEST(OvThread, IsRunWithoutStart)
{
    const struct
    {
        bool bCloseHandle;
        bool bManaged;
    } rows[] = { { false, false }, { true, false }, { false, true }, { true, true } };
    for (const auto& row : rows)
    {
        COvEvent done(false, true, nullptr, nullptr);
        COvHandle hWorker;
        std::wstring strManaged;
        CTestWorker worker([&](CTestWorker& w) {
            const COvHandle hPseudo = w.GetThreadHandle();
            hWorker = hPseudo; // makes it a real one
            strManaged = ManagedThreads();
            done.SetEvent();
            return s_dwExitCode;
        });
        if (row.bCloseHandle)
            worker.SetFlag(FLG_CLOSE_HANDLE);
        if (row.bManaged)
            worker.SetFlag(FLG_MANAGED);
        DWORD dwThreadId = 0;
        const HANDLE h = COvThread::RunAsync(&worker, row.bCloseHandle ? nullptr : &dwThreadId);
        EXPECT_EQ(row.bCloseHandle, h == INVALID_HANDLE_VALUE);
        EXPECT_TRUE(done.Lock(INFINITE));
        EXPECT_EQ(s_dwExitCode, ExitCode(hWorker.Get()));
        EXPECT_EQ(row.bManaged ? s_strOneManaged : s_strNoneManaged, strManaged);
        EXPECT_EQ(row.bCloseHandle ? 0 : worker.m_dwCalledOn, dwThreadId);
        EXPECT_EQ(row.bCloseHandle, worker.TestFlag(FLG_CLOSE_HANDLE));
        if (!row.bCloseHandle)
            ::CloseHandle(h);
    }
}

TEST(OvThread, KeepsItsHandleWhenStarted)
{
    CTestWorker worker(UntilStopped);
    worker.SetFlag(FLG_CLOSE_HANDLE);
    worker.Start(true);
    EXPECT_FALSE(worker.TestFlag(FLG_CLOSE_HANDLE));
    EXPECT_EQ(WAIT_TIMEOUT, ::WaitForSingleObject(worker.OwnHandle(), 0));
    worker.Stop(true, false);
}

TEST(OvThread, DeletesItselfWhileItIsBeingStarted)
{
    const int nRounds = 200;
    for (int i = 0; i < nRounds; ++i)
    {
        COvEvent done(false, true, nullptr, nullptr);
        COvHandle hWorker;
        auto* const pWorker = new CTestWorker([&](CTestWorker& w) -> DWORD {
            hWorker = w.GetThreadHandle();
            done.SetEvent();
            if (i % 2 != 0)
                throw i; // goes on to the deletion as well
            return s_dwExitCode;
        });
        pWorker->SetFlag(FLG_DEL_ON_STOP);
        pWorker->SetFlag(FLG_MANAGED);
        EXPECT_NE(::GetCurrentThreadId(), pWorker->Start(true));
        ASSERT_TRUE(done.Lock(INFINITE));
        ::WaitForSingleObject(hWorker.Get(), INFINITE);
        ASSERT_EQ(s_strNoneManaged, ManagedThreads());
    }
}

TEST(OvThread, DoesNothingElseInASynchronousRun)
{
    std::wstring strManaged;
    CTestWorker worker([&](CTestWorker&) {
        strManaged = ManagedThreads();
        return s_dwExitCode;
    });
    for (const unsigned nBit : { FLG_MANAGED, FLG_DEL_ON_STOP, FLG_COM_MTA })
        worker.SetFlag(nBit);
    EXPECT_EQ(::GetCurrentThreadId(), worker.Start(false));
    EXPECT_EQ(s_strNoneManaged, strManaged);
    EXPECT_EQ("before work after ", worker.m_strCalls); // it is still there
    EXPECT_EQ(S_OK, ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    ::CoUninitialize();
}

TEST(OvThread, LivesInTheApartmentThatItAskedFor)
{
    const CLSID clsidNone = { 0x3B1F6A0D, 0x52C4, 0x4E6B, { 0x9A, 0x61, 0x0C, 0x7D, 0x2E, 0x4F, 0x85, 0x13 } };
    const struct
    {
        std::vector<unsigned> bits;
        HRESULT hrEnterMta; // on the worker: S_FALSE when it is there
        HRESULT hrCreate;   // here meanwhile: without an apartment only while the worker is in the multithreaded one
    } rows[] = {
        { {}, S_OK, CO_E_NOTINITIALIZED },
        { { FLG_COM_STA }, RPC_E_CHANGED_MODE, CO_E_NOTINITIALIZED },
        { { FLG_COM_MTA }, S_FALSE, REGDB_E_CLASSNOTREG },
        { { FLG_COM_STA, FLG_COM_MTA }, S_FALSE, REGDB_E_CLASSNOTREG },
    };
    const auto create = [&clsidNone] {
        void* p = nullptr;
        return ::CoCreateInstance(clsidNone, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &p);
    };
    for (const auto& row : rows)
    {
        HRESULT hrEnterMta = E_FAIL;
        COvEvent entered(false, true, nullptr, nullptr);
        CTestWorker worker([&](CTestWorker& w) {
            hrEnterMta = ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
            if (SUCCEEDED(hrEnterMta))
                ::CoUninitialize();
            entered.SetEvent();
            return UntilStopped(w);
        });
        for (const unsigned nBit : row.bits)
            worker.SetFlag(nBit);
        worker.Start(true);
        EXPECT_TRUE(entered.Lock(INFINITE));
        EXPECT_EQ(row.hrCreate, create());
        worker.Stop(true, false);
        EXPECT_EQ(row.hrEnterMta, hrEnterMta);
        EXPECT_EQ(CO_E_NOTINITIALIZED, create()); // the worker has left it
    }
}

TEST(OvThread, DescribesItself)
{
    CTestWorker named(UntilStopped, L"name");
    CTestWorker nameless(UntilStopped, nullptr);
    EXPECT_STREQ(L"\rm_szDesc: name", named.GetEvidence(L"ignored").ToString(nullptr));
    EXPECT_STREQ(L"\r_T(\"No Description\"): No Description", nameless.GetEvidence().ToString(nullptr));
    EXPECT_EQ("", named.Describe());
    const DWORD dwThreadId = named.Start(true);
    const ULONG_PTR nHandle = reinterpret_cast<ULONG_PTR>(named.OwnHandle());
    EXPECT_EQ(L"\rm_szDesc: name\rm_pThread->nThreadId: " + std::to_wstring(dwThreadId) +
                  L"\r(DWORD)(HANDLE)m_pThread->hThread: " + std::to_wstring(nHandle),
              named.GetEvidence().ToString(nullptr));
    named.Stop(true, false);
}

TEST(OvThread, TellsTheDebuggerOfItsEnd)
{
    CDebuggerTexts texts;
    {
        const CTestWorker named(Nothing, L"name");
        const CTestWorker nameless(Nothing, nullptr);
    }
    const std::wstring strThread = L"TID:" + std::to_wstring(::GetCurrentThreadId());
    const std::vector<std::wstring> seen = texts.Take();
    ASSERT_EQ(2u, seen.size());
    EXPECT_EQ(strThread + L"  Thread Destroyed\r\n", seen[0]);
    EXPECT_EQ(strThread + L" name Thread Destroyed\r\n", seen[1]);
}
