// A worker whose body is a function object.
#pragma once

#include "ovCore/OvSehExceptionHandler.h"
#include "ovCore/OvThread.h"

#include <functional>
#include <mutex>
#include <string>
#include <vector>

/// Keeps what was called on it, and on which thread.
class CTestWorker : public COvThread
{
public:
    using Work = std::function<DWORD(CTestWorker&)>;

    explicit CTestWorker(Work work, const wchar_t* szDesc = L"worker", bool bStopEvent = true)
        : COvThread(szDesc, bStopEvent), m_work(std::move(work))
    {
    }

    void BeforeWork() override { Called("before"); }
    DWORD DoWork() override
    {
        Called("work");
        return m_work(*this);
    }
    void AfterWork() override { Called("after"); }
    void Error(const COvBaseException& e) override
    {
        Called("error");
        m_strError = e.GetEvidence(nullptr);
        m_hrError = e.GetCode();
        m_strErrorFile = e.GetFile();
        if (m_onError)
            m_onError();
    }

    void RunToItsEnd()
    {
        Start(true);
        WaitForComplete(false);
    }
    bool WaitForStop(DWORD dwTimeoutMs = INFINITE) { return m_pStopEvent->Lock(dwTimeoutMs); }
    HANDLE OwnHandle() const { return m_pThread ? m_pThread->hThread.Get() : nullptr; }
    const COvException* LastError() const { return m_pLastError.get(); }

    std::string m_strCalls;  // "before work after "
    DWORD m_dwCalledOn = 0;  // the thread of the last call
    std::string m_strFailAt; // the call that runs m_fail
    std::function<void()> m_fail;
    std::function<void()> m_onError; // runs in Error
    std::wstring m_strError;
    std::wstring m_strErrorFile;
    HRESULT m_hrError = S_OK;

private:
    void Called(const char* szWhat)
    {
        {
            const std::lock_guard<std::mutex> guard(m_mutex); // a worker that was started twice has two threads
            m_strCalls += std::string(szWhat) + " ";
            m_dwCalledOn = ::GetCurrentThreadId();
        }
        if (m_strFailAt == szWhat)
            m_fail();
    }

    Work m_work;
    std::mutex m_mutex;
};

/// The evidence with which a fault of this code reaches a worker's Error.
inline std::wstring EvidenceOf(DWORD dwCode)
{
    EXCEPTION_RECORD record = {};
    record.ExceptionCode = dwCode;
    EXCEPTION_POINTERS pointers = { &record, nullptr };
    try
    {
        SEHtoExceptionTranslation(dwCode, &pointers);
    }
    catch (const COvException& e)
    {
        return e.GetEvidence(nullptr);
    }
}
