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
    ::WaitForSingleObject(hThread, INFINITE);
    ::GetExitCodeThread(hThread, &dwCode);
    return dwCode;
}

std::wstring Managed()
{
    return COvThreadMgr::Get()->GetEvidence().ToString(nullptr);
}

const wchar_t s_szNoneManaged[] = L"Managed thread count: 0";
const wchar_t s_szOneManaged[] = L"Managed thread count: 1";

} // namespace

TEST(OvThread, IsStoppedThroughItsEvent)
{
    CTestWorker worker(UntilStopped, L"name");
    worker.SetFlag(FLG_CLOSE_HANDLE);
    worker.Stop(true, false); // not started: nothing happens
    EXPECT_FALSE(worker.WaitForStop(0));
    const DWORD dwThreadId = worker.Start(true);
    EXPECT_TRUE(worker.IsRunning());
    EXPECT_FALSE(worker.TestFlag(FLG_CLOSE_HANDLE));
    EXPECT_EQ(dwThreadId, worker.GetThreadId());
    const COvHandle hThread = worker.GetThreadHandle();
    EXPECT_EQ(L"\rm_szDesc: name\rm_pThread->nThreadId: " + std::to_wstring(dwThreadId) +
                  L"\r(DWORD)(HANDLE)m_pThread->hThread: " +
                  std::to_wstring(reinterpret_cast<ULONG_PTR>(worker.OwnHandle())),
              worker.GetEvidence(L"ignored").ToString(nullptr));
    worker.CleanUp();
    worker.Stop(true, false); // knows nothing of it any more
    EXPECT_EQ(WAIT_TIMEOUT, ::WaitForSingleObject(hThread.Get(), 0));
    worker.Start(true);
    worker.Stop(false, false); // one event stops them both, and is never reset
    EXPECT_EQ(s_dwExitCode, ExitCode(hThread.Get()));
    EXPECT_NE(nullptr, worker.OwnHandle());
    worker.Stop(true, false);
    EXPECT_FALSE(worker.IsRunning());
    EXPECT_EQ(::GetCurrentThreadId(), worker.GetThreadId());
    EXPECT_EQ(::GetCurrentThread(), worker.GetThreadHandle().Get());
}

TEST(OvThread, SaysWhyItDoesNotRunAndHasSixFlags)
{
    CTestWorker running(UntilStopped, L"first");
    running.Start(true);
    CTestWorker unstoppable(Nothing, L"second", false);
    CTestWorker deleting(Nothing, nullptr);
    deleting.SetFlag(FLG_DEL_ON_STOP);
    const std::pair<std::function<void()>, const wchar_t*> rows[] = {
        { [&] { running.Start(true); }, L"This instance is already running | m_szDesc: first" },
        { [&] { running.Start(false); }, L"This instance is already running | m_szDesc: first" },
        { [&] { unstoppable.Start(true); }, L"No Stop event was requested in the ctor. This is required to use the "
                                            L"Start() method | m_szDesc: second" },
        { [&] { COvThread::RunSync(nullptr); }, L"NULL class specified on RunSync call." },
        { [&] { COvThread::RunAsync(nullptr, nullptr); }, L"NULL class specified on RunAsync call." },
        { [&] { deleting.WaitForComplete(false); }, L"This function cannot be called with FLG_DEL_ON_STOP option" }
    };
    for (const auto& [run, szMessage] : rows)
        EXPECT_EQ(L"0x80004005 OvThread | Info Msg: " + std::wstring(szMessage), Raised(run));
    running.Stop(true, false);
    EXPECT_EQ("", unstoppable.m_strCalls);
    for (unsigned nBit = 0; nBit < 8; ++nBit)
    {
        unstoppable.SetFlag(nBit);
        EXPECT_EQ(nBit < 6, unstoppable.TestFlag(nBit)) << nBit;
    }
}

TEST(OvThread, TakesWhateverItsBodyThrows)
{
    const COvException own(E_ACCESSDENIED, L"..\\folder\\Source", 7, COvEvidence(L"Info Msg", L"own"));
    const std::tuple<std::function<void()>, HRESULT, const wchar_t*, const wchar_t*> rows[] = {
        { [] { throw std::runtime_error("standard"); }, E_FAIL, L"OvThread",
          L"Exception Info: \r{\rCode: STL EXCEPTION\rDescription:\rstandard\r}\rStack Dump: \r" },
        { [&] { throw own; }, E_ACCESSDENIED, L"Source", L"Info Msg: own" },
        { [] { throw 1; }, E_FAIL, L"OvThread", L"Msg: Unknown exception caught.\rStack Dump: \r" },
        { nullptr, S_OK, L"", L"" }
    };
    const std::tuple<const char*, const char*, DWORD> steps[] = {
        { "before", "before error ", 0 },
        { "work", "before work error ", 0 },
        { "after", "before work after error ", s_dwExitCode },
    };
    for (const auto& [fail, hr, szFile, szEvidence] : rows)
        for (const auto& [szStep, szCalls, dwExitCode] : steps)
            for (const bool bAsync : { true, false })
            {
                bool bRunning = !bAsync;
                CTestWorker worker([&](CTestWorker& w) { return bRunning = w.IsRunning(), s_dwExitCode; });
                worker.m_strFailAt = fail ? szStep : "";
                worker.m_fail = fail;
                const DWORD dwThreadId = worker.Start(bAsync);
                EXPECT_EQ(bAsync, dwThreadId != ::GetCurrentThreadId());
                if (bAsync)
                {
                    EXPECT_EQ(fail ? dwExitCode : s_dwExitCode, ExitCode(worker.OwnHandle())) << szStep;
                }
                worker.WaitForComplete(false);
                EXPECT_EQ(fail ? szCalls : "before work after ", worker.m_strCalls) << bAsync;
                EXPECT_EQ(dwThreadId, worker.m_dwCalledOn) << szStep << bAsync;
                EXPECT_TRUE(bRunning == bAsync || fail) << szStep << bAsync;
                EXPECT_TRUE(hr == worker.m_hrError && szFile == worker.m_strErrorFile) << szStep << bAsync;
                EXPECT_EQ(szEvidence, worker.m_strError) << szStep << bAsync;
                EXPECT_STREQ(szEvidence, fail ? worker.LastError()->GetEvidence(nullptr) : L"") << szStep << bAsync;
                EXPECT_FALSE(worker.IsRunning()) << szStep << bAsync;
            }
}

TEST(OvThread, LetsAnErrorsErrorOutOfASynchronousRunAlone)
{
    CTestWorker worker([](CTestWorker&) -> DWORD { throw 1; });
    worker.m_onError = [] { throw std::runtime_error("the second"); };
    worker.RunToItsEnd();
    EXPECT_THROW(worker.Start(false), std::runtime_error);
    EXPECT_EQ("before work error before work error ", worker.m_strCalls);
}

TEST(OvThread, FindsItselfInTheRegistryAndDeletesItselfWhileItIsBeingStarted)
{
    for (int i = 0; i < 400; ++i) // the worker may come before Start has the id and the handle
    {
        COvEvent done(false, true, nullptr, nullptr);
        COvHandle hWorker;
        DWORD dwOwnId = 0;
        std::wstring strManaged;
        auto* const pWorker = new CTestWorker([&](CTestWorker& w) -> DWORD {
            hWorker = w.GetThreadHandle();
            dwOwnId = w.GetThreadId();
            strManaged = Managed();
            COvThreadMgr::Get()->Register(&w); // a second time changes nothing
            done.SetEvent();
            if (i % 2 != 0)
                throw i; // goes on to the same end
            return s_dwExitCode;
        });
        pWorker->SetFlag(FLG_DEL_ON_STOP);
        pWorker->SetFlag(FLG_MANAGED);
        const DWORD dwThreadId = pWorker->Start(true);
        ASSERT_TRUE(done.Lock(INFINITE));
        ASSERT_EQ(i % 2 != 0 ? 0 : s_dwExitCode, ExitCode(hWorker.Get()));
        ASSERT_EQ(dwThreadId, dwOwnId);
        ASSERT_TRUE(strManaged == s_szOneManaged && Managed() == s_szNoneManaged);
    }
}

TEST(OvThreadMgr, KeepsARecordUntilItIsTakenOut)
{
    CTestWorker worker(UntilStopped);
    COvThreadMgr* const pManager = COvThreadMgr::Get();
    const DWORD dwThreadId = worker.Start(true);
    pManager->Register(&worker);
    worker.Stop(true, false);
    pManager->Unregister(0); // this thread has no record
    EXPECT_EQ(s_szOneManaged, Managed());
    pManager->Unregister(dwThreadId);
    EXPECT_EQ(s_szNoneManaged, Managed());
    pManager->Register(&worker); // not started: the calling thread
    EXPECT_EQ(s_szOneManaged, Managed());
    pManager->Unregister(0);
    EXPECT_EQ(s_szNoneManaged, Managed());
}

TEST(OvThread, IsRunWithoutStartOrOnTheCallersThread)
{
    COvEvent done(false, true, nullptr, nullptr);
    COvHandle hWorker;
    std::wstring strManaged;
    CTestWorker worker([&](CTestWorker& w) {
        const COvHandle hPseudo = w.GetThreadHandle();
        hWorker = hPseudo; // makes it a real one
        strManaged = Managed();
        done.SetEvent();
        return s_dwExitCode;
    });
    for (const unsigned nBit : { FLG_MANAGED, FLG_CLOSE_HANDLE, FLG_COM_MTA })
        worker.SetFlag(nBit);
    DWORD dwThreadId = 0;
    EXPECT_EQ(INVALID_HANDLE_VALUE, COvThread::RunAsync(&worker, &dwThreadId));
    EXPECT_TRUE(done.Lock(INFINITE));
    EXPECT_EQ(s_dwExitCode, ExitCode(hWorker.Get()));
    EXPECT_EQ(s_szOneManaged, strManaged);
    EXPECT_EQ(worker.m_dwCalledOn, dwThreadId);
    worker.SetFlag(FLG_DEL_ON_STOP);
    worker.Start(false);
    EXPECT_EQ(s_szNoneManaged, strManaged);
    EXPECT_EQ("before work after before work after ", worker.m_strCalls); // it is still there
    EXPECT_EQ(S_OK, ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    ::CoUninitialize();
}

TEST(OvThread, LivesInTheApartmentThatItAskedFor)
{
    const auto create = [] { // outside an apartment: another failure while a thread is in the multithreaded one
        const CLSID clsidNone = { 0x3B1F6A0D, 0x52C4, 0x4E6B, { 0x9A, 0x61, 0x0C, 0x7D, 0x2E, 0x4F, 0x85, 0x13 } };
        void* p = nullptr;
        return ::CoCreateInstance(clsidNone, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &p);
    };
    for (const bool bSta : { false, true })
        for (const bool bMta : { false, true })
        {
            COvEvent entered(false, true, nullptr, nullptr);
            CTestWorker worker([&](CTestWorker& w) {
                const HRESULT hr = ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
                EXPECT_EQ(bMta ? S_FALSE : bSta ? RPC_E_CHANGED_MODE : S_OK, hr);
                if (SUCCEEDED(hr))
                    ::CoUninitialize();
                entered.SetEvent();
                return UntilStopped(w);
            });
            if (bSta)
                worker.SetFlag(FLG_COM_STA);
            if (bMta)
                worker.SetFlag(FLG_COM_MTA);
            worker.Start(true);
            EXPECT_TRUE(entered.Lock(INFINITE));
            EXPECT_EQ(bMta ? REGDB_E_CLASSNOTREG : CO_E_NOTINITIALIZED, create());
            worker.Stop(true, false);
            EXPECT_EQ(CO_E_NOTINITIALIZED, create()); // the worker has left it
        }
}

TEST(OvThread, TellsTheDebuggerOfItsEnd)
{
    CDebuggerTexts texts;
    {
        const CTestWorker named(Nothing, L"name");
        const CTestWorker nameless(Nothing, nullptr);
        EXPECT_STREQ(L"\r_T(\"No Description\"): No Description", nameless.GetEvidence().ToString(nullptr));
    }
    const std::wstring strThread = L"TID:" + std::to_wstring(::GetCurrentThreadId());
    const std::vector<std::wstring> expected = { strThread + L"  Thread Destroyed\r\n",
                                                 strThread + L" name Thread Destroyed\r\n" };
    EXPECT_EQ(expected, texts.Take());
}
