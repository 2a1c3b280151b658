#include "PatchAdapter/MonitorThread.h"

#include "ovCore/OvCallOut.h"
#include "ovCore/OvSingleLock.h"
#include "ovCore/OvStringUtil.h"
#include "PatchAdapter/AdapterEvidence.h"
#include "PatchAdapter/PatchAdapter.h"
#include "PatchAdapter/PatchApi.h"

namespace
{

const wchar_t s_szSource[] = L"PatchAdapter\\MonitorThread";

constexpr DWORD s_dwPauseMs = 10000;       // between two looks at the event
constexpr DWORD s_dwWatchIntervalMs = 500; // of no effect with a total of 0: one attempt

} // namespace

CMonitorThread::CMonitorThread() : COvThread(L"Patch PYX Adapter Monitor Thread", true)
{
    if (m_pStopEvent->GetHandle() == nullptr) // a thread that cannot be stopped would be waited for without end
        throw COvException(E_FAIL, s_szSource, __LINE__,
                           InfoMsg(L"Unable to create the stop event of the monitor thread") +
                               FunctionName(L"CMonitorThread::CMonitorThread"));
    SetFlag(FLG_COM_MTA);
}

void CMonitorThread::SetAdapter(CPatchAdapter* pAdapter)
{
    m_pAdapter = pAdapter;
    m_pTrace = pAdapter->GetTrace();
}

DWORD CMonitorThread::DoWork()
{
    const CPatchTraceScope scope(m_pTrace, L"CMonitorThread::DoWork");
    try
    {
        OvCallIn([&] { RunLoop(); });
    }
    catch (const COvBaseException& e)
    {
        Error(e);
    }
    catch (...)
    {
        m_pTrace->Detail(L"Info Msg", L"\"Monitor Thread unknown exception caught!\"");
    }
    m_pTrace->Detail(L"Info Msg", L"\"Monitor Thread exiting\"");
    return 0;
}

void CMonitorThread::Error(const COvBaseException& e)
{
    m_pTrace->Exception(COvException(E_FAIL, s_szSource, __LINE__,
                                     COvEvidence(L"Exception Info", e) +
                                         InfoMsg(L"A Monitor Thread exception was encountered") +
                                         FunctionName(L"CMonitorThread::Error")));
}

void CMonitorThread::RunLoop()
{
    MonitorState state = WaitingForService;
    while (!(state == WaitingForService ? WaitForServiceEvent() : WatchServiceEvent()))
    {
        state = state == WaitingForService ? WatchingService : WaitingForService;
        SetServicePresent(state == WatchingService);
    }
}

bool CMonitorThread::IsStopping() const
{
    return m_pStopEvent->Lock(0);
}

// Both states: true when the stop event was seen, false when it is time for the other state.

bool CMonitorThread::WaitForServiceEvent()
{
    while (!IsStopping())
    {
        const COvEvent serviceEvent = OpenServiceEvent(s_dwPauseMs, s_dwPauseMs);
        if (!serviceEvent.Exists())
            continue; // the pause lies behind us
        const HANDLE handles[] = { m_pStopEvent->GetHandle(), serviceEvent.GetHandle() };
        const DWORD dwResult = ::WaitForMultipleObjects(2, handles, FALSE, 0);
        if (dwResult == WAIT_OBJECT_0)
            return true;
        if (dwResult == WAIT_OBJECT_0 + 1)
            return false;
    }
    return true;
}

bool CMonitorThread::WatchServiceEvent()
{
    while (!IsStopping())
    {
        const COvEvent serviceEvent = OpenServiceEvent(0, s_dwWatchIntervalMs);
        if (!serviceEvent.Exists())
            return false;
        ::Sleep(s_dwPauseMs); // with the event open
    }
    return true;
}

void CMonitorThread::SetServicePresent(bool bPresent)
{
    if (m_bServicePresent == bPresent)
        return;
    m_bServicePresent = bPresent;
    NotifyObservers(STATE_CHANGED);
}

void CMonitorThread::NotifyObservers(LONG nValue)
{
    const CPatchTraceScope scope(m_pTrace, L"CMonitorThread::NotifyObservers");
    std::wstring wzStatus;
    m_pAdapter->BuildStatusXml(wzStatus); // before the lock, so that a slow service does not hold registration up
    const COvSingleLock lock(m_pAdapter->GetObserverCS(), true);
    m_pAdapter->GetStateObservers()->ForEach([&](IStateObserver* pObserver) {
        m_pTrace->Info(L"Notifying state observer of status change");
        const std::string status = COvStringUtil::WideToNarrow(wzStatus);
        OvCallOut([&] { pObserver->OnStateChange(nValue, status.c_str()); });
    });
}
