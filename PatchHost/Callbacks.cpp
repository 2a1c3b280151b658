#include "PatchHost/Callbacks.h"

#include <algorithm>

CStatusObserver::CStatusObserver() : m_hArrived(::CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}

CStatusObserver::~CStatusObserver()
{
    ::CloseHandle(m_hArrived);
}

void CStatusObserver::OnStateChange(int32_t, const char* status)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_queue.push_back({ ::GetCurrentThreadId(), status });
    ::SetEvent(m_hArrived);
}

std::optional<std::string> CStatusObserver::Take(DWORD dwTimeout)
{
    if (::WaitForSingleObject(m_hArrived, dwTimeout) != WAIT_OBJECT_0)
        return std::nullopt;
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::optional<std::string> status(std::move(m_queue.front().status));
    m_queue.pop_front();
    if (m_queue.empty())
        ::ResetEvent(m_hArrived);
    return status;
}

size_t CStatusObserver::CountOf(DWORD dwThreadId)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return static_cast<size_t>(std::count_if(
        m_queue.begin(), m_queue.end(), [dwThreadId](const CNotification& n) { return n.dwThreadId == dwThreadId; }));
}
