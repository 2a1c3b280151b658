// A host's log that keeps what it is told.
#pragma once

#include "OvPlatform.h"
#include "PatchAdapterApi.h"
#include "Recorder.h"

#include <functional>
#include <string>

/// One trace line: the text as the adapter passed it, without the prefix that the format adds.
struct CTraceLine
{
    DWORD dwThreadId;
    int nKind;
    std::string text;
};

/// The lines as "kind text", one a row, each row ended by a line feed.
std::string ToTranscript(const std::vector<CTraceLine>& lines);

/// Records every line with its thread and kind. A line that does not come as ("PatchAdapter: %s", text) is recorded
/// with the text "unexpected format" and the format behind it.
class CRecordingSink final : public ILogSink
{
public:
    /// Called on the tracing thread after each line has been recorded; may throw.
    using Hook = std::function<void(const CTraceLine&)>;

    explicit CRecordingSink(Hook hook = {});

    void LogError(const char* format, ...) override;
    void LogWarning(const char* format, ...) override;
    void LogInfo(const char* format, ...) override;
    void LogDetail(const char* format, ...) override;
    void LogTrace(const char* format, ...) override;

    std::vector<CTraceLine> Lines() const { return m_lines.All(); }
    void Clear() { m_lines.Clear(); }

    /// The transcript of one thread, or of every other thread, in the order in which the lines came. Not masked.
    std::string OfThread(DWORD dwThreadId = ::GetCurrentThreadId()) const;
    std::string OfOtherThreads(DWORD dwThreadId = ::GetCurrentThreadId()) const;

    /// Runs the work on a clean record. @return the calling thread's transcript of it, masked (see Masking.h).
    template <class Work>
    std::string TranscriptOf(Work&& work)
    {
        Clear();
        work();
        return MaskedOfThisThread();
    }

    /// Blocks until nTimes lines contain the part, at most half a minute. @return whether they came.
    bool WaitForLines(const std::string& part, unsigned nTimes = 1) const;

private:
    void Record(int nKind, const char* format, va_list arguments);
    std::string MaskedOfThisThread() const;

    CRecorder<CTraceLine> m_lines;
    Hook m_hook;
};
