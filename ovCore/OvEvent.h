// Kernel events.
#pragma once

#include "ovCore/OvSyncObject.h"

/// Owns one kernel event. Nothing here raises: a creation or an opening that failed shows as a null handle, for which
/// Exists() and Lock() are false. One thread may set it while others wait.
class COvEvent : public COvSyncObject
{
public:
    /// Creates the event, or opens the one that has the name already.
    /// @param szName  null for an unnamed event.
    /// @param psa     null for the default security and no inheritance.
    COvEvent(bool bInitialState, bool bManualReset, const wchar_t* szName, LPSECURITY_ATTRIBUTES psa);

    /// Takes a handle over. @param szName  not used.  @param h  owned from here on; may be null.
    COvEvent(const wchar_t* szName, HANDLE h);

    ~COvEvent() override;

    using COvSyncObject::Unlock;

    /// An event is not released by its waiter: does nothing and returns false.
    bool Unlock(DWORD dwTimeout) override;

    /// Signals the event. @return false when there is no handle or it may not be set.
    bool SetEvent();

    /// For an opened event, that it was found; for a created one, that it existed before.
    bool Exists() const { return m_hObject != nullptr && m_bExisted; }

    /// Opens the named event, trying again while there is time.
    /// @param dwTotalMs     time to spend, in milliseconds; at least one attempt is always made.
    /// @param dwIntervalMs  pause in milliseconds, cut to dwTotalMs; it follows every failed attempt, the last one too,
    ///                      so 25 s in steps of 10 s can take 30 s.
    /// @return a new event that the caller deletes, never null; Exists() says whether one was found.
    /// Blocks the calling thread. A missing event raises nothing; only std::bad_alloc can leave.
    static COvEvent* OpenWithWait(const wchar_t* szName, DWORD dwTotalMs, DWORD dwIntervalMs, DWORD dwDesiredAccess,
                                  bool bInheritHandle);

    /// As OpenWithWait, with the event in the caller's own memory.
    static COvEvent Open(const wchar_t* szName, DWORD dwTotalMs, DWORD dwIntervalMs, DWORD dwDesiredAccess,
                         bool bInheritHandle);

private:
    bool m_bExisted;
};
