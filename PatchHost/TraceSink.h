// The host's log: the adapter's lines on standard error, as far as they are wanted, and what they tell.
#pragma once

#include "OvPlatform.h"
#include "PatchAdapterApi.h"

#include <cstdarg>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

/// A line of the library's trace.
struct CTraceLine
{
    PatchTraceKind kind;
    DWORD dwThreadId;
    std::string text; ///< UTF-8, without the library's name in front
};

/// The name of a kind of line.
const char* KindName(PatchTraceKind kind);

/// Writes each line of the kinds up to a level to standard error, and notices when the monitor has first told of the
/// service: nothing else tells a host. Any thread may write.
class CTraceSink final : public ILogSink
{
public:
    using Listener = std::function<void(const CTraceLine&)>;

    /// @param nLevel  the last kind that is shown; -1: none.
    explicit CTraceSink(int nLevel);
    ~CTraceSink();

    CTraceSink(const CTraceSink&) = delete;
    CTraceSink& operator=(const CTraceSink&) = delete;

    /// Hands every line to the listener too, one at a time, on the thread that writes it. Empty: to none.
    void SetListener(Listener listener);

    /// Waits until the monitor has told the observers of a change, at most so many milliseconds. @return whether it
    /// has.
    bool AwaitMonitor(DWORD dwTimeout) const;

    /// When the monitor last began to count its ten seconds, in milliseconds since the system started; 0 for never.
    ULONGLONG GetMonitorTick() const;

    void LogError(const char* format, ...) override;
    void LogWarning(const char* format, ...) override;
    void LogInfo(const char* format, ...) override;
    void LogDetail(const char* format, ...) override;
    void LogTrace(const char* format, ...) override;

private:
    void Write(PatchTraceKind kind, const char* format, va_list arguments);
    void Notice(const std::string& text);

    const int m_nLevel;
    const HANDLE m_hMonitorTold; // manual-reset
    mutable std::mutex m_mutex;  // guards what follows
    Listener m_listener;
    ULONGLONG m_nMonitorTick = 0;
};

/// Collects the calling thread's lines while it lives.
class CCallTrace
{
public:
    explicit CCallTrace(CTraceSink& sink);
    ~CCallTrace();

    CCallTrace(const CCallTrace&) = delete;
    CCallTrace& operator=(const CCallTrace&) = delete;

    const std::vector<CTraceLine>& GetLines() const { return m_lines; }

private:
    CTraceSink& m_sink;
    std::vector<CTraceLine> m_lines;
};
