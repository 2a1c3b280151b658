// The host's side of the adapter's interfaces: what it is told, kept until the program asks.
#pragma once

#include "OvPlatform.h"
#include "PatchAdapterApi.h"

#include <deque>
#include <mutex>
#include <optional>
#include <string>

/// Keeps the notifications in the order in which they came. The adapter calls it on any of its threads.
class CStatusObserver final : public IStateObserver
{
public:
    CStatusObserver();
    ~CStatusObserver();

    CStatusObserver(const CStatusObserver&) = delete;
    CStatusObserver& operator=(const CStatusObserver&) = delete;

    void OnStateChange(int32_t value, const char* status) override;

    /// The oldest notification that was not taken yet.
    /// @param dwTimeout  how long to wait for one, in milliseconds.
    std::optional<std::string> Take(DWORD dwTimeout);

    /// How many that were not taken yet came on a thread.
    size_t CountOf(DWORD dwThreadId);

private:
    struct CNotification
    {
        DWORD dwThreadId;
        std::string status;
    };

    std::mutex m_mutex;
    std::deque<CNotification> m_queue; // guarded by m_mutex
    HANDLE m_hArrived;                 // manual-reset: signalled while the queue is not empty
};

/// Keeps the last answer to GetStatus.
class CStatusReceiver final : public IStatusReceiver
{
public:
    void OnStatus(const char* status) override { m_status = status; }

    /// Nothing when no status came.
    const std::optional<std::string>& GetStatus() const { return m_status; }

private:
    std::optional<std::string> m_status;
};
