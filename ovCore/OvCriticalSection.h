// Locks within the process.
#pragma once

#include "ovCore/OvSyncObject.h"

/// A re-entrant lock between the threads of this process. Its handle stays null. Use it through COvSingleLock.
class COvCriticalSection : public COvSyncObject
{
public:
    COvCriticalSection();
    ~COvCriticalSection() override;

    /// Enters; a thread that is inside already enters again. @param dwTimeout  ignored: waits as long as it takes.
    /// @return always true.
    bool Lock(DWORD) override
    {
        ::EnterCriticalSection(&m_cs);
        return true;
    }

    using COvSyncObject::Unlock;

    /// Leaves once. Only the thread that entered may call it. @return always true.
    bool Unlock(DWORD) override
    {
        ::LeaveCriticalSection(&m_cs);
        return true;
    }

private:
    CRITICAL_SECTION m_cs;
};
