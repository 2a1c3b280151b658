// A limit for a call that may not return.
#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

/// Ends the program with exit code 1 and a sentence unless the object is destroyed in time: a call into a library
/// cannot be called back, and an adapter with a call in it cannot be destroyed.
class CTimeLimit
{
public:
    /// @param nMs  milliseconds; 0 for no limit. @param call  what the sentence names.
    CTimeLimit(unsigned nMs, const std::string& call);
    ~CTimeLimit();

    CTimeLimit(const CTimeLimit&) = delete;
    CTimeLimit& operator=(const CTimeLimit&) = delete;

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_bDone = false; // guarded by m_mutex
    std::thread m_thread; // last: it uses the others
};
