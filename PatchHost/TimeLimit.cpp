#include "PatchHost/TimeLimit.h"

#include "PatchHost/Options.h"
#include "PatchHost/Output.h"

#include <chrono>
#include <cstdlib>

CTimeLimit::CTimeLimit(unsigned nMs, const std::string& call)
{
    if (nMs == 0)
        return;
    m_thread = std::thread([this, nMs, call] {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (m_changed.wait_for(lock, std::chrono::milliseconds(nMs), [this] { return m_bDone; }))
            return;
        Note(call + " has not returned after " + std::to_string(nMs) + " ms; the program ends without it");
        std::_Exit(ExitFailed);
    });
}

CTimeLimit::~CTimeLimit()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_bDone = true;
    }
    m_changed.notify_one();
    if (m_thread.joinable())
        m_thread.join();
}
