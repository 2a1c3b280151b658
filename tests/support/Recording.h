// A host that keeps what it is told: its log, its observers and receivers.
#pragma once

#include "OvPlatform.h"
#include "PatchAdapterApi.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

/// A trace line, without the prefix that the format adds, or a document.
struct CTold
{
    DWORD dwThreadId;
    std::string what; ///< the line's kind, "observer 1", "receiver" or "configuration"
    std::string text;
};

/// An ordered record that several threads may write. Adding to it allocates nothing, up to a megabyte.
class CHostRecord
{
public:
    /// Called on the telling thread after each entry has been recorded; may throw.
    using Hook = std::function<void()>;

    explicit CHostRecord(Hook hook) : m_hook(std::move(hook)) { m_entries.reserve(1 << 20); }

    void Add(std::string_view what, std::string_view text);
    void Clear();
    std::vector<CTold> All() const;
    size_t Count() const { return All().size(); }
    size_t CountOf(const std::string& what) const;
    std::string Last() const;                        ///< the last text; "<none>" when there is none
    bool WaitForText(const std::string& part) const; ///< at most half a minute

    /// Waits until the last text holds the part. @return whether it does.
    bool WaitForLast(const std::string& part, unsigned nMs) const;

    /// The entries of one thread, or of every other one, in their order: "what text", one a row. Not masked.
    std::string OfThread(DWORD dwThreadId = ::GetCurrentThreadId()) const;
    std::string OfOtherThreads(DWORD dwThreadId = ::GetCurrentThreadId()) const;
    std::string OfAllThreads() const;

    /// Runs the work on a clean record. @return the calling thread's transcript of it, masked (see Masking.h).
    std::string TranscriptOf(const std::function<void()>& work);

protected:
    ~CHostRecord() = default;

private:
    template <class Predicate>
    std::string Transcript(Predicate&& isWanted) const;

    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed;
    std::string m_entries; // guarded by m_mutex; of each the thread's id and the two texts' lengths, then the texts
    size_t m_nLast = 0;    // guarded by m_mutex; where the last one's text begins
    Hook m_hook;
};

/// A line that does not come as ("PatchAdapter: %s", text) is recorded as the format.
class CRecordingSink final : public ILogSink, public CHostRecord
{
public:
    explicit CRecordingSink(Hook hook = {}) : CHostRecord(std::move(hook)) {}
    void LogError(const char* format, ...) override;
    void LogWarning(const char* format, ...) override;
    void LogInfo(const char* format, ...) override;
    void LogDetail(const char* format, ...) override;
    void LogTrace(const char* format, ...) override;
};

class CListener final : public IStateObserver, public IStatusReceiver, public IConfigurationReceiver, public CHostRecord
{
public:
    explicit CListener(Hook hook = {}) : CHostRecord(std::move(hook)) {}
    void OnStateChange(int32_t value, const char* status) override
    {
        Add(value == 1 ? "observer 1" : "observer of another value", status);
    }
    void OnStatus(const char* status) override { Add("receiver", status); }
    void OnConfiguration(const char* configuration) override { Add("configuration", configuration); }
};
