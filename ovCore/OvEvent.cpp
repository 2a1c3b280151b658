#include "ovCore/OvEvent.h"

#include "ovCore/OvStackTrace.h"
#include "OvHandleT.h"

#include <algorithm>

namespace
{

const wchar_t s_szSource[] = L"ovCore\\OvEvent";

/// How OpenWithWait spends its time.
struct CRetryPlan
{
    CRetryPlan(DWORD dwTotalMs, DWORD dwIntervalMs)
    {
        if (dwIntervalMs == 0)
        {
            nAttempts = 1;
        }
        else
        {
            nAttempts = dwTotalMs / dwIntervalMs;
            dwPauseMs = std::min(dwTotalMs, dwIntervalMs);
        }
        if (nAttempts * dwIntervalMs != dwTotalMs)
            ++nAttempts;
    }

    DWORD nAttempts = 0;
    DWORD dwPauseMs = 0;
};

} // namespace

COvEvent::COvEvent(bool bInitialState, bool bManualReset, const wchar_t* szName, LPSECURITY_ATTRIBUTES psa)
    : m_bExisted(false)
{
    OV_SCOPE(L"COvEvent::COvEvent");
    m_hObject = ::CreateEventW(psa, bManualReset ? TRUE : FALSE, bInitialState ? TRUE : FALSE, szName);
    m_bExisted = ::GetLastError() == ERROR_ALREADY_EXISTS;
}

COvEvent::COvEvent(const wchar_t*, HANDLE h) : COvSyncObject(h), m_bExisted(h != nullptr)
{
    OV_SCOPE(L"COvEvent::COvEvent");
}

COvEvent::~COvEvent() = default;

bool COvEvent::Unlock(DWORD)
{
    return false;
}

bool COvEvent::SetEvent()
{
    OV_SCOPE(L"COvEvent::SetEvent");
    return ::SetEvent(m_hObject) != FALSE;
}

COvEvent COvEvent::Open(const wchar_t* szName, DWORD dwTotalMs, DWORD dwIntervalMs, DWORD dwDesiredAccess,
                        bool bInheritHandle)
{
    OV_SCOPE(L"COvEvent::OpenWithWait");
    const CRetryPlan plan(dwTotalMs, dwIntervalMs);
    for (DWORD nLeft = std::max<DWORD>(plan.nAttempts, 1); nLeft > 0; --nLeft)
    {
        COvHandle hEvent(::OpenEventW(dwDesiredAccess, bInheritHandle ? TRUE : FALSE, szName));
        if (hEvent.Get() != nullptr)
            return COvEvent(szName, hEvent.Release());
        ::Sleep(plan.dwPauseMs);
    }
    return COvEvent(szName, nullptr);
}

COvEvent* COvEvent::OpenWithWait(const wchar_t* szName, DWORD dwTotalMs, DWORD dwIntervalMs, DWORD dwDesiredAccess,
                                 bool bInheritHandle)
{
    return new COvEvent(Open(szName, dwTotalMs, dwIntervalMs, dwDesiredAccess, bInheritHandle));
}
