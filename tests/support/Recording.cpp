#include "Recording.h"

#include "Masking.h"

#include <algorithm>
#include <chrono>
#include <cstdarg>
#include <cstring>

namespace
{

struct CEntry
{
    DWORD dwThreadId;
    size_t nWhat;
    size_t nText;
};

} // namespace

void CHostRecord::Add(std::string_view what, std::string_view text)
{
    {
        const CEntry entry{ ::GetCurrentThreadId(), what.size(), text.size() };
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_entries.append(reinterpret_cast<const char*>(&entry), sizeof entry).append(what);
        m_nLast = m_entries.size();
        m_entries.append(text);
        m_changed.notify_all();
    }
    if (m_hook)
        m_hook();
}

void CHostRecord::Clear()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_entries.clear();
    m_nLast = 0;
}

std::vector<CTold> CHostRecord::All() const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    std::vector<CTold> all;
    for (size_t n = 0; n < m_entries.size();)
    {
        CEntry entry = {};
        std::memcpy(&entry, &m_entries[n], sizeof entry);
        n += sizeof entry;
        all.push_back(
            { entry.dwThreadId, m_entries.substr(n, entry.nWhat), m_entries.substr(n + entry.nWhat, entry.nText) });
        n += entry.nWhat + entry.nText;
    }
    return all;
}

size_t CHostRecord::CountOf(const std::string& what) const
{
    const std::vector<CTold> all = All();
    return static_cast<size_t>(
        std::count_if(all.begin(), all.end(), [&](const CTold& told) { return told.what == what; }));
}

std::string CHostRecord::Last() const
{
    const std::vector<CTold> all = All();
    return all.empty() ? "<none>" : all.back().text;
}

bool CHostRecord::WaitForText(const std::string& part) const
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_changed.wait_for(lock, std::chrono::seconds(30),
                              [&] { return m_entries.find(part) != std::string::npos; });
}

bool CHostRecord::WaitForLast(const std::string& part, unsigned nMs) const
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_changed.wait_for(lock, std::chrono::milliseconds(nMs), [&] {
        return std::string_view(m_entries).substr(m_nLast).find(part) != std::string_view::npos;
    });
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

std::string CHostRecord::OfAllThreads() const
{
    return Transcript([](DWORD) { return true; });
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
        Add(kind, bExpected ? va_arg(arguments, const char*) : format);                                                \
        va_end(arguments);                                                                                             \
    }

RECORD_KIND(LogError, "0")
RECORD_KIND(LogWarning, "1")
RECORD_KIND(LogInfo, "2")
RECORD_KIND(LogDetail, "3")
RECORD_KIND(LogTrace, "4")
