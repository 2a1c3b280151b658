// The stack tracer: which operations of the core library are open, thread by thread.
#pragma once

#include "OvPlatform.h"

#include <atomic>
#include <deque>
#include <map>
#include <string>

/// Records the open stack-trace scopes of each thread when the registry switches it on, for the "Stack Dump" items.
///
/// The value "StackTraceEnabled" (REG_DWORD) of "SOFTWARE\Trevok\Trevok Compliance Agent" under HKEY_LOCAL_MACHINE, or
/// under HKEY_CURRENT_USER when the first key does not open, sets the mode: 1 records every thread, 2 only threads that
/// have a stack already, anything else nothing. It is read when a tracer is constructed, and that is once a process:
/// Get() is called while the library loads. A test that wants another mode constructs a tracer of its own.
///
/// Every operation may be called from any thread; each sees only the calling thread's stack.
class COvStackTrace
{
public:
    /// Reads the mode from the registry; every failure leaves the tracer off.
    COvStackTrace() noexcept;
    ~COvStackTrace();
    COvStackTrace(const COvStackTrace&) = delete;
    COvStackTrace& operator=(const COvStackTrace&) = delete;

    /// The process's tracer, never null; gone at the process's end, after which no scope may be opened.
    static COvStackTrace* Get() noexcept
    {
        COvStackTrace* const pTracer = s_pTracer.load(std::memory_order_acquire);
        return pTracer != nullptr ? pTracer : Make();
    }

    bool IsOn() const noexcept { return m_nMode != 0; }

    /// Records a frame for the calling thread.
    /// @param szFunction, szFile  literals, kept as pointers; null is shown as "unknown".
    /// @param pDepth  receives the number of frames that were there before; unchanged when false is returned.
    /// @return whether a frame was recorded: false when off, without memory, or in mode 2 for a thread without a stack.
    bool Push(const wchar_t* szFunction, const wchar_t* szFile, LONG nLine, LONG* pDepth) noexcept;

    /// Removes the calling thread's frames above the first nDepth; a negative depth counts as 0.
    void Pop(LONG nDepth) noexcept;

    /// The calling thread's frames, outermost first: a break mark (CR), then "name [file:line] ^" and a break mark
    /// for each. A copy of the caller's own. Raises nothing but a failed allocation.
    std::wstring Dump();

private:
    struct CFrame
    {
        const wchar_t* m_szFunction;
        const wchar_t* m_szFile;
        LONG m_nLine;
    };
    using CFrameStack = std::deque<CFrame>;

    CFrameStack* FindOrMakeStack();
    static COvStackTrace* Make() noexcept;

    static std::atomic<COvStackTrace*> s_pTracer; // null until the first call of Get()

    CRITICAL_SECTION m_cs;                    // guards the map and the last dump
    std::map<DWORD, CFrameStack> m_mapStacks; // by thread id; entries stay
    std::wstring m_strLastDump;
    DWORD m_nMode = 0; // fixed once constructed, read without the lock
};

/// A scope of an operation of the core library; opened with OV_SCOPE.
/// Costs one look at the mode when the tracer is off. Never fails.
class COvStackTraceScope
{
public:
    /// @param szFunction  the operation's qualified name, a literal. @param szFile  the source's fixed path, a literal.
    /// @param pTracer     may be null: the scope is inactive.
    COvStackTraceScope(const wchar_t* szFunction, const wchar_t* szFile, LONG nLine, COvStackTrace* pTracer) noexcept
    {
        LONG nDepth = 0; // not the member: the address of that would keep it in memory while the tracer is off
        if (pTracer == nullptr || !pTracer->IsOn() || !pTracer->Push(szFunction, szFile, nLine, &nDepth))
            return;
        m_nDepth = nDepth;
        m_pTracer = pTracer;
    }

    /// Removes the scope's frame and any frame above it that an exception left behind.
    ~COvStackTraceScope()
    {
        if (m_pTracer != nullptr)
            m_pTracer->Pop(m_nDepth);
    }

    COvStackTraceScope(const COvStackTraceScope&) = delete;
    COvStackTraceScope& operator=(const COvStackTraceScope&) = delete;

private:
    LONG m_nDepth = 0;                  // the thread's frames before this scope's own
    COvStackTrace* m_pTracer = nullptr; // null while inactive
};

/// Opens the scope of an operation, to the end of the block: the first statement of every operation.
/// @param szFunction  the operation's qualified name, a literal. The source is the file's or the class's s_szSource.
#define OV_SCOPE(szFunction) OV_SCOPE_IN(s_szSource, szFunction)

/// As OV_SCOPE, where the source has another name. @param szFile  the source's fixed path, a literal.
#define OV_SCOPE_IN(szFile, szFunction)                                                                                \
    const COvStackTraceScope ovScope(szFunction, szFile, __LINE__, COvStackTrace::Get())
