// The adapter's thread that watches the patch service come and go.
#pragma once

#include "ovCore/OvThread.h"
#include "PatchAdapter/PatchTrace.h"

class CPatchAdapter;

/// Watches the service's event and sends every registered observer a fresh status document each time the service is
/// seen to come up or to go away. It opens the event and never makes it.
///
/// The loop looks at the stop event at the start of each pass and can be inside a ten-second pause, so stopping it
/// takes up to about ten seconds. The first exception ends it for good; observers then hear of changes only when a
/// policy is applied. The adapter binds, starts and stops it and outlives it.
class CMonitorThread final : public COvThread
{
public:
    /// Raises E_FAIL when the stop event cannot be made.
    CMonitorThread();

    /// Binds the thread to the adapter and its trace. Once, before Start.
    void SetAdapter(CPatchAdapter* pAdapter);

    /// The body, in the multithreaded apartment. @return always 0.
    DWORD DoWork() override;

    /// Writes the exception to the adapter's trace, wrapped.
    void Error(const COvBaseException& e) override;

private:
    enum MonitorState : LONG
    {
        WaitingForService = 0, // until the event exists and is signalled
        WatchingService = 1    // until the event no longer exists
    };

    void RunLoop();
    bool WaitForServiceEvent();
    bool WatchServiceEvent();
    bool IsStopping() const;
    void SetServicePresent(bool bPresent);
    void NotifyObservers(LONG nValue);

    CPatchAdapter* m_pAdapter = nullptr; // not owned
    CPatchTrace* m_pTrace = nullptr;     // the adapter's, not owned
    bool m_bServicePresent = false;      // as last seen; the monitor's own thread alone uses it
};
