// Workers: their steps, options, errors and ends.
#include "ovCore/OvThread.h"
#include "ovCore/OvThreadMgr.h"

#include "Raised.h"
#include "TestPlatform.h"
#include "TestWorker.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <tuple>

namespace
{

const DWORD s_dwExitCode = 0xC0DE;

const auto Nothing = [](CTestWorker&) { return s_dwExitCode; };
const auto UntilStopped = [](CTestWorker& worker) { return worker.WaitForStop() ? s_dwExitCode : 0; };
const auto Managed = [] { return std::wstring(COvThreadMgr::Get()->GetEvidence().ToString(nullptr)); };
const std::wstring s_strNoneManaged = L"Managed thread count: 0";
const std::wstring s_strOneManaged = L"Managed thread count: 1";

/// What a thread's function returned; to be asked while its handle is open.
DWORD ExitCode(HANDLE hThread)
{
    DWORD dwCode = 0;
    ::WaitForSingleObject(hThread, INFINITE);
    ::GetExitCodeThread(hThread, &dwCode);
    return dwCode;
}

} // namespace

TEST(OvThread, DescribesItselfAndTellsTheDebuggerOfItsEnd)
{
    CDebuggerTexts texts;
    EXPECT_STREQ(L"\r_T(\"No Description\"): No Description",
                 CTestWorker(Nothing, nullptr).GetEvidence().ToString(nullptr));
    CTestWorker(Nothing, L"name").RunToItsEnd();
    const std::wstring strThread = L"TID:" + std::to_wstring(::GetCurrentThreadId());
    EXPECT_EQ(
        std::vector<std::wstring>({ strThread + L"  Thread Destroyed\r\n", strThread + L" name Thread Destroyed\r\n" }),
        texts.Take());
}

TEST(OvThread, IsStoppedThroughItsEvent)
{
    CTestWorker worker(UntilStopped, L"name");
    worker.SetFlag(FLG_CLOSE_HANDLE);
    worker.Stop(true, false); // not started: nothing happens
    EXPECT_FALSE(worker.WaitForStop(0));
    const DWORD dwThreadId = worker.Start(true);
    EXPECT_TRUE(worker.IsRunning() && !worker.TestFlag(FLG_CLOSE_HANDLE));
    COvThreadMgr::Get()->Register(&worker);
    const COvHandle hThread = worker.GetThreadHandle();
    EXPECT_EQ(L"\rm_szDesc: name\rm_pThread->nThreadId: " + std::to_wstring(dwThreadId) +
                  L"\r(DWORD)(HANDLE)m_pThread->hThread: " +
                  std::to_wstring(reinterpret_cast<ULONG_PTR>(worker.OwnHandle())),
              worker.GetEvidence(L"ignored").ToString(nullptr));
    worker.CleanUp();
    worker.Stop(true, false); // knows nothing of it any more
    EXPECT_EQ(WAIT_TIMEOUT, ::WaitForSingleObject(hThread.Get(), 0));
    worker.Start(true);
    worker.Stop(true, false); // one event stops them both, and is never reset
    EXPECT_EQ(s_dwExitCode, ExitCode(hThread.Get()));
    EXPECT_TRUE(!worker.IsRunning() && worker.OwnHandle() == nullptr);
    COvThreadMgr::Get()->Unregister(0); // this thread has no record
    EXPECT_EQ(s_strOneManaged, Managed());
    COvThreadMgr::Get()->Unregister(dwThreadId);
    EXPECT_EQ(s_strNoneManaged, Managed());
}

TEST(OvThread, SaysWhyItDoesNotRunAndHasSixFlags)
{
    CTestWorker running(UntilStopped, L"first");
    running.Start(true);
    CTestWorker unstoppable(Nothing, L"second", false);
    const std::pair<std::function<void()>, const wchar_t*> rows[] = {
        { [&] { running.Start(false); }, L"This instance is already running | m_szDesc: first" },
        { [&] { unstoppable.Start(true); }, L"No Stop event was requested in the ctor. This is required to use the "
                                            L"Start() method | m_szDesc: second" },
        { [&] { COvThread::RunSync(nullptr); }, L"NULL class specified on RunSync call." },
        { [&] { COvThread::RunAsync(nullptr, nullptr); }, L"NULL class specified on RunAsync call." },
        { [&] { unstoppable.WaitForComplete(false); },
          L"This function cannot be called with FLG_DEL_ON_STOP option" }
    };
    for (unsigned nBit = 0; nBit < 8; ++nBit)
    {
        EXPECT_FALSE(unstoppable.TestFlag(nBit)) << nBit;
        unstoppable.SetFlag(nBit);
        EXPECT_EQ(nBit < 6, unstoppable.TestFlag(nBit)) << nBit;
    }
    for (const auto& [run, szMessage] : rows)
        EXPECT_EQ(L"0x80004005 OvThread | Info Msg: " + std::wstring(szMessage), Raised(run));
    running.Stop(true, false);
}

TEST(OvThread, TakesWhateverItsBodyThrowsButNotWhatASynchronousErrorDoes)
{
    const COvException own(E_ACCESSDENIED, L"..\\folder\\Source", 7, COvEvidence(L"Info Msg", L"own"));
    const std::tuple<std::function<void()>, const char*, const char*, DWORD, std::wstring> rows[] = {
        { nullptr, "", "before work after ", s_dwExitCode, L"" },
        { [] { throw std::runtime_error("standard"); }, "before", "before error ", 0,
          L"OvThread Exception Info: \r{\rCode: STL EXCEPTION\rDescription:\rstandard\r}\rStack Dump: \r" },
        { [] { throw 1; }, "work", "before work error ", 0,
          L"OvThread Msg: Unknown exception caught.\rStack Dump: \r" },
        { [&] { throw own; }, "after", "before work after error ", s_dwExitCode, L"Source Info Msg: own" },
    };
    for (const auto& [fail, szStep, szCalls, dwExitCode, strError] : rows)
        for (const bool bAsync : { true, false })
        {
            bool bRunning = bAsync;
            CTestWorker worker([&](CTestWorker& w) { return bRunning = w.IsRunning(), s_dwExitCode; });
            worker.m_strFailAt = szStep;
            worker.m_fail = fail;
            const DWORD dwThreadId = worker.Start(bAsync);
            EXPECT_EQ(bAsync, dwThreadId != ::GetCurrentThreadId());
            EXPECT_EQ(bAsync ? dwExitCode : 0, ExitCode(worker.OwnHandle())) << szCalls;
            worker.WaitForComplete(false);
            EXPECT_EQ(szCalls, worker.m_strCalls) << bAsync;
            EXPECT_TRUE(worker.m_dwCalledOn == dwThreadId && bRunning == bAsync && !worker.IsRunning()) << szCalls;
            if (!fail)
                continue;
            EXPECT_EQ(strError, worker.m_strErrorFile + L" " + worker.m_strError);
            EXPECT_EQ(worker.m_strError, worker.LastError()->GetEvidence(nullptr));
            worker.m_onError = [] { throw std::runtime_error("the error's own"); };
            worker.RunToItsEnd(); // keeps it
            EXPECT_THROW(worker.Start(false), std::runtime_error);
        }
}

TEST(OvThread, FindsItselfInTheRegistryAndDeletesItselfWhileItIsBeingStarted)
{
    for (int i = 0; i < 400; ++i) // the worker may come before Start has the id and the handle
    {
        COvEvent done(false, true, nullptr, nullptr);
        COvHandle hWorker;
        std::wstring strSeen;
        auto* const pWorker = new CTestWorker([&](CTestWorker& w) -> DWORD {
            COvThreadMgr::Get()->Register(&w); // a second time changes nothing
            hWorker = w.GetThreadHandle();
            strSeen = Managed() + std::to_wstring(w.GetThreadId());
            done.SetEvent();
            return i % 2 != 0 ? throw i : s_dwExitCode; // both go on to the same end
        });
        for (const unsigned nBit : { FLG_DEL_ON_STOP, FLG_MANAGED })
            pWorker->SetFlag(nBit);
        const DWORD dwThreadId = pWorker->Start(true);
        ASSERT_TRUE(done.Lock(INFINITE) && ExitCode(hWorker.Get()) == (i % 2 != 0 ? 0 : s_dwExitCode));
        ASSERT_EQ(s_strOneManaged + std::to_wstring(dwThreadId), strSeen);
        ASSERT_EQ(s_strNoneManaged, Managed());
    }
}

TEST(OvThread, IsRunWithoutStartOrOnTheCallersThread)
{
    COvEvent done(false, true, nullptr, nullptr);
    COvHandle hWorker;
    std::wstring strManaged;
    CTestWorker worker([&](CTestWorker& w) {
        hWorker.Duplicate(w.GetThreadHandle().Get()); // of the pseudo-handle
        strManaged = Managed();
        return done.SetEvent() ? s_dwExitCode : 0;
    });
    for (const unsigned nBit : { FLG_MANAGED, FLG_CLOSE_HANDLE, FLG_COM_MTA })
        worker.SetFlag(nBit);
    DWORD dwThreadId = 0;
    EXPECT_EQ(INVALID_HANDLE_VALUE, COvThread::RunAsync(&worker, &dwThreadId));
    EXPECT_TRUE(done.Lock(INFINITE) && ExitCode(hWorker.Get()) == s_dwExitCode);
    EXPECT_TRUE(strManaged == s_strOneManaged && dwThreadId == worker.m_dwCalledOn);
    worker.SetFlag(FLG_DEL_ON_STOP);
    worker.Start(false);
    EXPECT_EQ(s_strNoneManaged, strManaged);
    EXPECT_EQ("before work after before work after ", worker.m_strCalls); // it is still there
    EXPECT_EQ(S_OK, ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    ::CoUninitialize();
}

TEST(OvThread, LivesInTheApartmentThatItAskedFor)
{
    for (const bool bSta : { false, true })
        for (const bool bMta : { false, true })
        {
            CTestWorker worker([&](CTestWorker&) {
                const HRESULT hr = ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
                EXPECT_EQ(bMta ? S_FALSE : bSta ? RPC_E_CHANGED_MODE : S_OK, hr);
                return SUCCEEDED(hr) ? ::CoUninitialize(), s_dwExitCode : 0;
            });
            if (bSta)
                worker.SetFlag(FLG_COM_STA);
            if (bMta)
                worker.SetFlag(FLG_COM_MTA);
            worker.RunToItsEnd();
            void* p = nullptr; // nobody is in the multithreaded apartment any more
            EXPECT_EQ(CO_E_NOTINITIALIZED, ::CoCreateInstance(GUID(), nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &p));
        }
}
