#include "ovCore/OvThreadMgr.h"

#include "ovCore/OvSingleLock.h"
#include "ovCore/OvStackTrace.h"
#include "ovCore/OvThread.h"

namespace
{

const wchar_t s_szSource[] = L"ovCore\\OvThreadMgr";

} // namespace

COvThreadMgr::COvThreadMgr() = default;
COvThreadMgr::~COvThreadMgr() = default;

COvThreadMgr* COvThreadMgr::Get()
{
    OV_SCOPE(L"COvThreadMgr::Get");
    static COvThreadMgr s_instance;
    return &s_instance;
}

COvEvidence COvThreadMgr::GetEvidence(const wchar_t*) const
{
    COvSingleLock lock(&m_cs, true);
    return COvEvidence(L"Managed thread count", static_cast<LONG>(m_mapThreads.size()));
}

void COvThreadMgr::Register(COvThread* pThread)
{
    OV_SCOPE(L"COvThreadMgr::Register");
    COvSingleLock lock(&m_cs, true);
    const COvHandle hThread = pThread->GetThreadHandle();
    const DWORD nThreadId = pThread->GetThreadId();
    if (m_mapThreads.count(nThreadId) == 0)
        m_mapThreads.emplace(nThreadId, CRecord{ pThread, hThread });
}

void COvThreadMgr::Unregister(DWORD nThreadId)
{
    OV_SCOPE(L"COvThreadMgr::Unregister");
    COvSingleLock lock(&m_cs, true);
    m_mapThreads.erase(nThreadId != 0 ? nThreadId : ::GetCurrentThreadId());
}
