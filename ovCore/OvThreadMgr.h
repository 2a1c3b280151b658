// The registry of the running threads that opted into it.
#pragma once

#include "ovCore/OvCriticalSection.h"
#include "ovCore/OvObject.h"
#include "OvHandleT.h"

#include <map>

class COvThread;

/// Knows, for each managed thread, its object and a handle of its own. May be used from any thread.
class COvThreadMgr : public COvObject
{
public:
    /// The one instance, made by the first call and destroyed at process exit; never null.
    static COvThreadMgr* Get();

    COvThreadMgr(const COvThreadMgr&) = delete;
    COvThreadMgr& operator=(const COvThreadMgr&) = delete;
    ~COvThreadMgr() override;

    /// The number of records. @param szName  not used.
    COvEvidence GetEvidence(const wchar_t* szName = nullptr) const override;

    /// Adds a record under the thread's id, with a duplicate of its handle; a record that is there already stays as it
    /// is. @param pThread  not owned; unregister it before it goes away.
    /// Raises E_FAIL when the handle cannot be duplicated; no record is added then.
    void Register(COvThread* pThread);

    /// Removes a record when there is one. @param nThreadId  0 means the calling thread.
    void Unregister(DWORD nThreadId);

private:
    struct CRecord
    {
        COvThread* pThread; // weak
        COvHandle hThread;
    };

    COvThreadMgr();

    mutable COvCriticalSection m_cs; // guards m_mapThreads
    std::map<DWORD, CRecord> m_mapThreads;
};
