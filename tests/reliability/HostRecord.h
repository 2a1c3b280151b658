// What a host sees of the adapter, kept without allocating: it may be seen short of memory.
#pragma once

#include "Masking.h"
#include "OvPlatform.h"
#include "PatchAdapterApi.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdarg>
#include <mutex>
#include <set>
#include <string>
#include <string_view>

/// Texts of several threads, one behind the other.
class CTextRecord
{
public:
    CTextRecord() { m_texts.reserve(1 << 20); }

    void Add(const char* text, const char* more = "")
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_texts.append(text).append(more).append(1, '\0');
        m_changed.notify_all();
    }

    std::string All() const
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        return m_texts;
    }

    /// Waits until the last text holds the part. Ends after ten of the monitor's pauses, when it has failed before.
    void WaitFor(const std::string& part) const
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait_for(lock, std::chrono::milliseconds(100), [&] {
            const size_t nEnd = m_texts.empty() ? 0 : m_texts.size() - 1;
            const size_t nStart = nEnd == 0 ? 0 : m_texts.rfind('\0', nEnd - 1) + 1;
            return std::string_view(m_texts).substr(nStart).find(part) != std::string_view::npos;
        });
    }

    void Clear()
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_texts.clear();
    }

private:
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed;
    std::string m_texts; // guarded by m_mutex; each ended by a zero
};

// In the variadic function itself, where va_start belongs.
#define OV_RECORD_LINE(kind)                                                                                           \
    va_list arguments;                                                                                                 \
    va_start(arguments, format);                                                                                       \
    m_lines.Add(kind, va_arg(arguments, const char*));                                                                 \
    va_end(arguments)

/// The host's log and callbacks.
class CHostCallbacks final : public ILogSink, public IStateObserver, public IStatusReceiver
{
public:
    void LogError(const char* format, ...) override { OV_RECORD_LINE("0 "); }
    void LogWarning(const char* format, ...) override { OV_RECORD_LINE("1 "); }
    void LogInfo(const char* format, ...) override { OV_RECORD_LINE("2 "); }
    void LogDetail(const char* format, ...) override { OV_RECORD_LINE("3 "); }
    void LogTrace(const char* format, ...) override { OV_RECORD_LINE("4 "); }
    void OnStateChange(int32_t, const char* status) override { Keep(status); }
    void OnStatus(const char* status) override { Keep(status); }

    std::string Trace() const
    {
        std::string lines = m_lines.All();
        std::replace(lines.begin(), lines.end(), '\0', '\n');
        return lines;
    }

    /// The documents that came on the host's own thread, masked: the monitor's depend on the moment.
    std::set<std::string> Documents() const
    {
        std::set<std::string> documents;
        const std::string all = m_documents.All();
        for (size_t n = 0; n < all.size(); n = all.find('\0', n) + 1)
            documents.insert(Masked(all.c_str() + n));
        return documents;
    }

    void WaitFor(const std::string& part) const { m_all.WaitFor(part); }

    void Clear()
    {
        m_lines.Clear();
        m_documents.Clear();
        m_all.Clear();
    }

private:
    void Keep(const char* status)
    {
        if (::GetCurrentThreadId() == m_dwThreadId)
            m_documents.Add(status);
        m_all.Add(status);
    }

    const DWORD m_dwThreadId = ::GetCurrentThreadId();
    CTextRecord m_lines;
    CTextRecord m_documents;
    CTextRecord m_all;
};

#undef OV_RECORD_LINE
