// An ordered record that several threads may write and a test may wait on.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

template <class T>
class CRecorder
{
public:
    void Add(const T& entry)
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_entries.push_back(entry);
        m_changed.notify_all();
    }

    void Clear()
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_entries.clear();
    }

    std::vector<T> All() const
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        return m_entries;
    }

    /// Blocks until the predicate holds for the entries, at most half a minute of real time.
    /// @return whether it holds.
    template <class Predicate>
    bool WaitFor(Predicate predicate) const
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::seconds(30), [&] { return predicate(m_entries); });
    }

private:
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed;
    std::vector<T> m_entries; // guarded by m_mutex
};
