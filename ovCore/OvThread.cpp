#include "ovCore/OvThread.h"

#include "ovCore/OvCallOut.h"
#include "ovCore/OvSehExceptionHandler.h"
#include "ovCore/OvSingleLock.h"
#include "ovCore/OvStackTrace.h"
#include "ovCore/OvThreadMgr.h"

namespace
{

const wchar_t s_szSource[] = L"ovCore\\OvThread";

COvException WithStackDump(LONG nLine, const COvEvidence& evidence)
{
    return COvException(E_FAIL, s_szSource, nLine, evidence + OvStackDump());
}

bool IsSignalled(HANDLE h)
{
    return ::WaitForSingleObject(h, 0) == WAIT_OBJECT_0;
}

/// Takes one message from the queue, in the form that its window expects, and dispatches it.
void DispatchOne(HWND hWnd)
{
    MSG msg;
    const bool bUnicode = ::IsWindowUnicode(hWnd) != FALSE;
    if ((bUnicode ? ::GetMessageW(&msg, nullptr, 0, 0) : ::GetMessageA(&msg, nullptr, 0, 0)) <= 0)
        return;
    ::TranslateMessage(&msg);
    if (bUnicode)
        ::DispatchMessageW(&msg);
    else
        ::DispatchMessageA(&msg);
}

/// Dispatches what waits in the queue. @return true, and at once, when the handle is signalled.
bool DispatchUntilSignalled(HANDLE h)
{
    MSG msg;
    while (::PeekMessageW(&msg, nullptr, 0, 0, PM_NOREMOVE))
    {
        DispatchOne(msg.hwnd);
        if (IsSignalled(h))
            return true;
    }
    return false;
}

void WaitWithMessages(HANDLE h)
{
    const DWORD dwInputArrived = WAIT_OBJECT_0 + 1;
    while (::MsgWaitForMultipleObjects(1, &h, FALSE, INFINITE, QS_ALLINPUT) == dwInputArrived)
    {
        if (DispatchUntilSignalled(h))
            return;
    }
}

/// Objects of other makers may go with the apartment: what they throw is dropped.
void LeaveApartment() noexcept
{
    try
    {
        OvCallOut([] { ::CoUninitialize(); });
    }
    catch (...)
    {
        // nobody is left to hear of it
    }
}

/// @return false when no apartment was asked for. A failure to enter one is not told.
bool EnterApartment(bool bMultithreaded, bool bSingleThreaded)
{
    if (bMultithreaded)
        static_cast<void>(::CoInitializeEx(nullptr, COINIT_MULTITHREADED));
    else if (bSingleThreaded)
        static_cast<void>(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    return bMultithreaded || bSingleThreaded;
}

} // namespace

COvThread::COvThread(const wchar_t* szDesc, bool bCreateStopEvent) : m_pStarting(std::make_shared<COvCriticalSection>())
{
    if (szDesc != nullptr)
        m_szDesc = szDesc;
    if (bCreateStopEvent)
        m_pStopEvent = std::make_unique<COvEvent>(false, true, nullptr, nullptr);
}

COvThread::~COvThread()
{
    CleanUp();
    WriteDestructionLine();
}

COvEvidence COvThread::GetEvidence(const wchar_t*) const
{
    COvEvidence evidence;
    if (m_szDesc.empty())
        evidence += COvEvidence(L"_T(\"No Description\")", L"No Description");
    else
        evidence += COvEvidence(L"m_szDesc", m_szDesc);
    if (m_pThread)
    {
        const ULONG_PTR nHandle = reinterpret_cast<ULONG_PTR>(m_pThread->hThread.Get());
        evidence += COvEvidence(L"m_pThread->nThreadId", m_pThread->nThreadId);
        evidence += COvEvidence(L"(DWORD)(HANDLE)m_pThread->hThread", static_cast<DWORD>(nHandle));
    }
    return evidence;
}

void COvThread::SetFlag(unsigned nBit)
{
    COvSingleLock lock(&m_cs, true);
    if (nBit < m_Flags.size())
        m_Flags.set(nBit);
}

bool COvThread::TestFlag(unsigned nBit) const
{
    COvSingleLock lock(&m_cs, true);
    return nBit < m_Flags.size() && m_Flags.test(nBit);
}

bool COvThread::IsRunning() const
{
    return TestFlag(FLG_RUNNING);
}

DWORD COvThread::Start(bool bAsync)
{
    OV_SCOPE(L"COvThread::Start");
    if (m_pThread)
        OvRaise(E_FAIL, s_szSource, __LINE__,
                COvEvidence(L"Info Msg", L"This instance is already running") + COvEvidence(L"m_szDesc", m_szDesc));
    if (bAsync)
        return StartAsync();
    RunSync(this);
    return ::GetCurrentThreadId();
}

void COvThread::Stop(bool bWait, bool bPumpMessages)
{
    OV_SCOPE(L"COvThread::Stop");
    if (!m_pThread)
        return;
    m_pThread->pStopEvent->SetEvent();
    if (bWait)
        WaitForComplete(bPumpMessages);
}

void COvThread::WaitForComplete(bool bPumpMessages)
{
    OV_SCOPE(L"COvThread::WaitForComplete");
    if (TestFlag(FLG_DEL_ON_STOP))
        OvRaise(E_FAIL, s_szSource, __LINE__,
                COvEvidence(L"Info Msg", L"This function cannot be called with FLG_DEL_ON_STOP option"));
    if (!m_pThread)
        return;
    if (bPumpMessages)
        WaitWithMessages(m_pThread->hThread.Get());
    else
        ::WaitForSingleObject(m_pThread->hThread.Get(), INFINITE);
    CleanUp();
}

void COvThread::CleanUp()
{
    OV_SCOPE(L"COvThread::CleanUp");
    m_pThread.reset();
}

DWORD COvThread::GetThreadId() const
{
    OV_SCOPE(L"COvThread::GetThreadId");
    return m_pThread ? m_pThread->nThreadId : ::GetCurrentThreadId();
}

COvHandle COvThread::GetThreadHandle() const
{
    OV_SCOPE(L"COvThread::GetThreadHandle");
    return m_pThread ? COvHandle(m_pThread->hThread) : COvHandle(::GetCurrentThread());
}

void COvThread::RunSync(COvThread* pThdCls)
{
    OV_SCOPE(L"COvThread::RunSync");
    if (pThdCls == nullptr)
        OvRaise(E_FAIL, s_szSource, __LINE__, COvEvidence(L"Info Msg", L"NULL class specified on RunSync call."));
    pThdCls->ClearFlag(FLG_RUNNING);
    ThreadProc(pThdCls);
}

HANDLE COvThread::RunAsync(COvThread* pThdCls, DWORD* pThreadId)
{
    OV_SCOPE(L"COvThread::RunAsync");
    if (pThdCls == nullptr)
        OvRaise(E_FAIL, s_szSource, __LINE__, COvEvidence(L"Info Msg", L"NULL class specified on RunAsync call."));
    pThdCls->SetFlag(FLG_RUNNING);
    const bool bCloseHandle = pThdCls->TestFlag(FLG_CLOSE_HANDLE); // asked now: once it runs, the object may be gone
    unsigned nThreadId = 0;
    const uintptr_t nThread = ::_beginthreadex(nullptr, 0, ThreadProc, pThdCls, 0, &nThreadId);
    if (nThread == 0)
        OvRaise(E_FAIL, s_szSource, __LINE__,
                COvEvidence(L"Method", L"_beginthreadex") +
                    COvEvidence(L"Info Msg", L"Failed to create a worker thread") +
                    COvEvidence(L"pThdCls->m_szDesc", pThdCls->m_szDesc));
    if (pThreadId != nullptr)
        *pThreadId = nThreadId;
    const HANDLE hThread = reinterpret_cast<HANDLE>(nThread);
    if (!bCloseHandle)
        return hThread;
    ::CloseHandle(hThread);
    return INVALID_HANDLE_VALUE;
}

unsigned __stdcall COvThread::ThreadProc(void* pThdCls)
{
    ::_set_se_translator(SEHtoExceptionTranslation);
    OV_SCOPE(L"COvThread::ThreadProc");
    COvThread* const pThread = static_cast<COvThread*>(pThdCls);
    CRun run;
    try
    {
        OvCallIn([&] { pThread->Run(run); });
    }
    catch (const std::exception& e)
    {
        HandleError(pThread, WithStackDump(__LINE__, COvEvidence(L"Exception Info", e)));
    }
    catch (const COvException& e)
    {
        HandleError(pThread, e);
    }
    catch (...)
    {
        HandleError(pThread, WithStackDump(__LINE__, COvEvidence(L"Msg", L"Unknown exception caught.")));
    }
    pThread->EndRun(run);
    return run.dwExitCode;
}

void COvThread::HandleError(COvThread* pThdCls, const COvException& e)
{
    if (pThdCls == nullptr)
        return;
    try
    {
        ::_set_se_translator(SEHtoExceptionTranslation); // gives a stack that was used up its guard back
        pThdCls->m_pLastError = std::make_unique<COvException>(e);
        OvCallIn([&] { pThdCls->Error(e); });
    }
    catch (...)
    {
        if (!pThdCls->IsRunning())
            throw;
    }
}

void COvThread::ClearFlag(unsigned nBit)
{
    COvSingleLock lock(&m_cs, true);
    m_Flags.reset(nBit);
}

DWORD COvThread::StartAsync()
{
    if (!m_pStopEvent)
        OvRaise(E_FAIL, s_szSource, __LINE__,
                COvEvidence(L"Info Msg",
                            L"No Stop event was requested in the ctor. This is required to use the Start() method") +
                    COvEvidence(L"m_szDesc", m_szDesc));
    ClearFlag(FLG_CLOSE_HANDLE);
    m_pThread = std::make_unique<COvThreadInfo>();
    m_pThread->pStopEvent = m_pStopEvent.get();

    // The worker may read the id and the handle, and may delete this object: it goes on only when all is stored. The
    // lock that it waits for belongs to both sides, so that it outlives the object.
    const std::shared_ptr<COvCriticalSection> pStarting = m_pStarting;
    COvSingleLock starting(pStarting.get(), true);
    m_pThread->hThread = COvHandle(RunAsync(this, &m_pThread->nThreadId));
    return m_pThread->nThreadId;
}

void COvThread::WaitUntilStarted()
{
    const std::shared_ptr<COvCriticalSection> pStarting = m_pStarting;
    COvSingleLock started(pStarting.get(), true);
}

void COvThread::Run(CRun& run)
{
    run.bAsync = IsRunning();
    if (run.bAsync)
    {
        WaitUntilStarted();
        if (TestFlag(FLG_MANAGED))
            COvThreadMgr::Get()->Register(this);
        run.bInApartment = EnterApartment(TestFlag(FLG_COM_MTA), TestFlag(FLG_COM_STA));
    }
    BeforeWork();
    run.dwExitCode = DoWork();
    AfterWork();
}

void COvThread::EndRun(const CRun& run)
{
    const bool bManaged = run.bAsync && TestFlag(FLG_MANAGED);
    const bool bDelete = run.bAsync && TestFlag(FLG_DEL_ON_STOP);
    ClearFlag(FLG_RUNNING); // an owner that sees this may take the object away
    if (bManaged)
        COvThreadMgr::Get()->Unregister(0);
    if (bDelete)
        delete this;
    if (run.bInApartment)
        LeaveApartment();
}

void COvThread::WriteDestructionLine() const noexcept
{
    try
    {
        const std::wstring strLine =
            L"TID:" + std::to_wstring(::GetCurrentThreadId()) + L" " + m_szDesc + L" Thread Destroyed\r\n";
        ::OutputDebugStringW(strLine.c_str());
    }
    catch (const std::exception&) // no memory for the line: it is not worth the process
    {
    }
}
