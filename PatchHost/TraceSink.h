// The host's log: the adapter's lines on standard error, as far as they are wanted.
#pragma once

#include "OvPlatform.h"
#include "PatchAdapterApi.h"

#include <cstdarg>

/// Writes each line of the kinds up to a level to standard error, and notices when the monitor has first told of the
/// service: nothing else tells a host. Any thread may write.
class CTraceSink final : public ILogSink
{
public:
    /// @param nLevel  the last kind that is shown: 0 errors alone, 4 everything; -1 nothing.
    explicit CTraceSink(int nLevel);
    ~CTraceSink();

    CTraceSink(const CTraceSink&) = delete;
    CTraceSink& operator=(const CTraceSink&) = delete;

    /// Waits until the monitor has told the observers of a change, at most so many milliseconds. @return whether it
    /// has.
    bool AwaitMonitor(DWORD dwTimeout) const;

    void LogError(const char* format, ...) override;
    void LogWarning(const char* format, ...) override;
    void LogInfo(const char* format, ...) override;
    void LogDetail(const char* format, ...) override;
    void LogTrace(const char* format, ...) override;

private:
    void Write(int nKind, const char* format, va_list arguments);

    const int m_nLevel;
    const HANDLE m_hMonitorTold; // manual-reset
};
