#include "Recording.h"

#include "Masking.h"

#include <algorithm>
#include <chrono>
#include <cstdarg>
#include <cstring>

void CHostRecord::Add(const std::string& what, const std::string& text)
{
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_entries.push_back({ ::GetCurrentThreadId(), what, text });
        m_changed.notify_all();
    }
    if (m_hook)
        m_hook();
}

void CHostRecord::Clear()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_entries.clear();
}

std::vector<CTold> CHostRecord::All() const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_entries;
}

size_t CHostRecord::CountOf(const std::string& what) const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return static_cast<size_t>(
        std::count_if(m_entries.begin(), m_entries.end(), [&](const CTold& told) { return told.what == what; }));
}

std::string CHostRecord::Last() const
{
    const std::vector<CTold> all = All();
    return all.empty() ? "<none>" : all.back().text;
}

bool CHostRecord::WaitForText(const std::string& part) const
{
    const auto contains = [&](const CTold& told) { return told.text.find(part) != std::string::npos; };
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_changed.wait_for(lock, std::chrono::seconds(30),
                              [&] { return std::any_of(m_entries.begin(), m_entries.end(), contains); });
}

template <class Predicate>
std::string CHostRecord::Transcript(Predicate&& isWanted) const
{
    std::string transcript;
    for (const CTold& told : All())
        if (isWanted(told.dwThreadId))
            transcript += told.what + " " + told.text + "\n";
    return transcript;
}

std::string CHostRecord::OfThread(DWORD dwThreadId) const
{
    return Transcript([&](DWORD dwId) { return dwId == dwThreadId; });
}

std::string CHostRecord::OfOtherThreads(DWORD dwThreadId) const
{
    return Transcript([&](DWORD dwId) { return dwId != dwThreadId; });
}

std::string CHostRecord::TranscriptOf(const std::function<void()>& work)
{
    Clear();
    work();
    return Masked(OfThread());
}

// va_start belongs in the variadic function itself, and va_end has nothing to do on either target when a hook throws.
#define RECORD_KIND(operation, kind)                                                                                   \
    void CRecordingSink::operation(const char* format, ...)                                                            \
    {                                                                                                                  \
        va_list arguments;                                                                                             \
        va_start(arguments, format);                                                                                   \
        const bool bExpected = std::strcmp(format, "PatchAdapter: %s") == 0;                                           \
        Add(kind, bExpected ? va_arg(arguments, const char*) : std::string("unexpected format ") + format);            \
        va_end(arguments);                                                                                             \
    }

RECORD_KIND(LogError, "0")
RECORD_KIND(LogWarning, "1")
RECORD_KIND(LogInfo, "2")
RECORD_KIND(LogDetail, "3")
RECORD_KIND(LogTrace, "4")
