// The base of every worker thread.
#pragma once

#include "ovCore/OvCriticalSection.h"
#include "ovCore/OvEvent.h"
#include "ovCore/OvException.h"
#include "ovCore/OvObject.h"
#include "OvHandleT.h"

#include <bitset>
#include <memory>
#include <string>

/// Options and state of a thread, by bit number.
enum
{
    FLG_RUNNING = 0,      ///< state: set from RunAsync until the body has ended, clear in a synchronous run
    FLG_COM_STA = 1,      ///< the worker lives in a single-threaded COM apartment
    FLG_COM_MTA = 2,      ///< the worker lives in the multithreaded COM apartment; wins over FLG_COM_STA
    FLG_DEL_ON_STOP = 3,  ///< the object deletes itself on its own thread when an asynchronous body has ended
    FLG_CLOSE_HANDLE = 4, ///< RunAsync closes the thread's handle at once; Start clears this bit
    FLG_MANAGED = 5,      ///< the asynchronous body is in COvThreadMgr's registry while it runs
    FLG_COUNT = 6
};

/// The record of one started thread.
struct COvThreadInfo
{
    COvEvent* pStopEvent = nullptr; // weak: the thread object's stop event
    COvHandle hThread;
    DWORD nThreadId = 0;
};

/// Runs a worker's body on a thread of its own, or on the caller's. The base owns the thread, its stop event, its COM
/// apartment and the catching of everything that the body throws, machine faults included. The order of the virtual
/// operations is fixed.
///
/// Threads: one owner calls Start, Stop, WaitForComplete and CleanUp, from one thread at a time; the flags may be used
/// from any thread. The stop event is never reset, so a second Start after a Stop finds it signalled. Nothing here ends
/// a thread by force.
class COvThread : public COvObject
{
public:
    /// @param szDesc            the thread's description, for evidence; may be null.
    /// @param bCreateStopEvent  true makes the stop event, which Start(true) requires.
    COvThread(const wchar_t* szDesc, bool bCreateStopEvent);
    COvThread(const COvThread&) = delete;
    COvThread& operator=(const COvThread&) = delete;

    /// Closes the thread's handle and writes the destruction line to the debugger. Does not stop or wait for a thread
    /// that still runs: stop it before.
    ~COvThread() override;

    /// The description and, once started, the thread's id and handle. @param szName  not used.
    COvEvidence GetEvidence(const wchar_t* szName = nullptr) const override;

    /// Called on the worker thread before DoWork. What it throws reaches Error, and DoWork is left out.
    virtual void BeforeWork() {}

    /// The thread's body. It watches the stop event itself. @return the thread's exit code.
    virtual DWORD DoWork() = 0;

    /// Called on the worker thread after DoWork has returned; not after an exception.
    virtual void AfterWork() {}

    /// Called on the worker thread with every exception that escaped from the body. What it throws itself is dropped in
    /// an asynchronous run and reaches the caller of a synchronous one.
    virtual void Error(const COvBaseException& e) = 0;

    /// Sets an option (FLG_...). To be called before the thread starts; bits above 5 are ignored.
    void SetFlag(unsigned nBit);

    /// Whether an option is set; false for bits above 5.
    bool TestFlag(unsigned nBit) const;

    /// Whether an asynchronous body was started and has not ended.
    bool IsRunning() const;

    /// Runs the body: on a new thread, or with bAsync false on the calling thread to its end.
    /// @return the id of the thread that runs or ran the body.
    /// Raises E_FAIL when it was started before without a WaitForComplete or CleanUp, when an asynchronous run has no
    /// stop event, and when no thread could be made; in the last case the object counts as started until CleanUp.
    /// With FLG_DEL_ON_STOP the object may be gone when an asynchronous Start returns.
    DWORD Start(bool bAsync);

    /// Signals the stop event of a started thread and, when bWait, waits as WaitForComplete does. Does nothing on an
    /// object that is not started.
    void Stop(bool bWait, bool bPumpMessages);

    /// Waits for a started thread without a time limit and cleans up.
    /// @param bPumpMessages  true dispatches the calling thread's window messages meanwhile.
    /// Raises E_FAIL with FLG_DEL_ON_STOP.
    void WaitForComplete(bool bPumpMessages);

    /// Closes the thread's handle and forgets the thread; a thread that runs goes on.
    void CleanUp();

    /// The id of the started thread, or of the calling one when none is started.
    DWORD GetThreadId() const;

    /// A duplicate of the started thread's handle, or the calling thread's pseudo-handle when none is started.
    COvHandle GetThreadHandle() const;

    /// Runs the body on the calling thread: no apartment, no registry, no deletion. Null raises E_FAIL. An exception
    /// that Error throws leaves through here.
    static void RunSync(COvThread* pThdCls);

    /// Runs the body on a new thread.
    /// @param pThreadId  receives its id; may be null.
    /// @return its handle, which the caller closes, or INVALID_HANDLE_VALUE with FLG_CLOSE_HANDLE.
    /// Raises E_FAIL for a null object or when no thread could be made; the object then still counts as running.
    static HANDLE RunAsync(COvThread* pThdCls, DWORD* pThreadId);

    /// The thread's entry point. @param pThdCls  the COvThread.  @return the exit code.
    static unsigned __stdcall ThreadProc(void* pThdCls);

private:
    mutable COvCriticalSection m_cs; // guards m_Flags

protected:
    std::wstring m_szDesc;

private:
    std::bitset<FLG_COUNT> m_Flags;

protected:
    std::unique_ptr<COvEvent> m_pStopEvent;
    std::unique_ptr<COvThreadInfo> m_pThread;   // null before Start and after CleanUp
    std::unique_ptr<COvException> m_pLastError; // a copy of what Error was last called with

private:
    /// What one run of the body has found out on its way.
    struct CRun
    {
        bool bAsync = false;
        bool bInApartment = false;
        DWORD dwExitCode = 0;
    };

    static void HandleError(COvThread* pThdCls, const COvException& e);

    void ClearFlag(unsigned nBit);
    DWORD StartAsync();
    void WaitUntilStarted();
    void Run(CRun& run);
    void EndRun(const CRun& run);
    void WriteDestructionLine() const noexcept;

    const std::shared_ptr<COvCriticalSection> m_pStarting; // held by Start until it has stored the thread
};
