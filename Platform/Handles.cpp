#include "Platform/Handles.h"

#include "Platform/Kernel/Counters.h"
#include "Platform/Kernel/KernelObject.h"
#include "Platform/Kernel/LastError.h"
#include "Platform/Kernel/ThreadObject.h"
#include "Platform/Process/ProcessObject.h"
#include "Platform/Processes.h"
#include "Platform/Threads.h"

#include <utility>
#include <vector>

namespace OvPlatform
{

namespace
{

constexpr size_t HandleStep = 4;

/// All open handles; guarded by the kernel lock.
class CHandleTable
{
public:
    size_t Add(const CKernelObjectPtr& pObject, DWORD dwAccess)
    {
        if (m_nFirstFree == m_slots.size())
            m_slots.emplace_back().nNextFree = m_slots.size() + 1;
        CSlot& slot = m_slots[m_nFirstFree];
        const size_t nIndex = std::exchange(m_nFirstFree, slot.nNextFree);
        slot.entry = { pObject, dwAccess };
        pObject->AddHandle();
        ++HandleCounter();
        return nIndex;
    }

    /// The object, so that the caller lets it go when the lock is free.
    CKernelObjectPtr Remove(size_t nIndex)
    {
        CSlot& slot = m_slots[nIndex];
        const CKernelObjectPtr pObject = std::move(slot.entry.pObject);
        slot.nNextFree = std::exchange(m_nFirstFree, nIndex);
        pObject->RemoveHandle();
        --HandleCounter();
        return pObject;
    }

    const CHandleEntry* Find(size_t nIndex) const
    {
        return nIndex < m_slots.size() && m_slots[nIndex].entry.pObject ? &m_slots[nIndex].entry : nullptr;
    }

private:
    struct CSlot
    {
        CHandleEntry entry;
        size_t nNextFree; // index of the next free slot, or the size
    };

    std::vector<CSlot> m_slots;
    size_t m_nFirstFree = 0; // the slot freed last comes first, as on the platform
};

/// Never destroyed: threads may still run while the process ends.
CHandleTable& Table()
{
    static CHandleTable& s_table = *new CHandleTable;
    return s_table;
}

HANDLE HandleOf(size_t nIndex)
{
    return reinterpret_cast<HANDLE>((nIndex + 1) * HandleStep);
}

/// Past the table's end for what is no handle.
size_t IndexOf(HANDLE hObject)
{
    const auto nValue = reinterpret_cast<ULONG_PTR>(hObject);
    return nValue % HandleStep == 0 ? nValue / HandleStep - 1 : static_cast<size_t>(-1);
}

bool IsPseudoHandle(HANDLE hObject)
{
    return hObject == GetCurrentProcess() || hObject == GetCurrentThread();
}

bool IsCurrentProcess(HANDLE hProcess)
{
    return hProcess == GetCurrentProcess() || FindEntry(hProcess).pObject == CurrentProcessEntry().pObject;
}

} // namespace

std::mutex& KernelLock()
{
    static std::mutex s_lock;
    return s_lock;
}

DWORD CKernelObject::Grant(DWORD dwAsked) const
{
    const struct
    {
        DWORD dwGeneric;
        DWORD dwRights;
    } rows[] = { { GENERIC_READ, m_access.dwRead },
                 { GENERIC_WRITE, m_access.dwWrite },
                 { GENERIC_EXECUTE, m_access.dwExecute },
                 { GENERIC_ALL | MAXIMUM_ALLOWED, m_access.dwAll } };
    DWORD dwGranted = dwAsked & m_access.dwAll;
    for (const auto& row : rows)
        if ((dwAsked & row.dwGeneric) != 0)
            dwGranted |= row.dwRights;
    return dwGranted;
}

void CKernelObject::RemoveHandle()
{
    if (--m_nHandles == 0)
        OnLastHandleClosed();
}

HANDLE OpenHandleLocked(const CKernelObjectPtr& pObject, DWORD dwAccess)
{
    return HandleOf(Table().Add(pObject, pObject->Grant(dwAccess)));
}

HANDLE OpenHandle(const CKernelObjectPtr& pObject, DWORD dwAccess)
{
    const std::lock_guard<std::mutex> lock(KernelLock());
    return OpenHandleLocked(pObject, dwAccess);
}

const CHandleEntry* FindEntryLocked(HANDLE hObject)
{
    if (hObject == GetCurrentProcess())
        return &CurrentProcessEntry();
    if (hObject == GetCurrentThread())
        return &CurrentThreadEntry();
    return Table().Find(IndexOf(hObject));
}

CHandleEntry FindEntry(HANDLE hObject)
{
    const std::lock_guard<std::mutex> lock(KernelLock());
    const CHandleEntry* pEntry = FindEntryLocked(hObject);
    return pEntry ? *pEntry : CHandleEntry();
}

} // namespace OvPlatform

using namespace OvPlatform;

BOOL CloseHandle(HANDLE hObject)
{
    if (IsPseudoHandle(hObject))
        return TRUE;
    CKernelObjectPtr pObject; // let go after the lock
    const std::lock_guard<std::mutex> lock(KernelLock());
    if (!Table().Find(IndexOf(hObject)))
        return Fail(ERROR_INVALID_HANDLE, FALSE);
    pObject = Table().Remove(IndexOf(hObject));
    return TRUE;
}

BOOL DuplicateHandle(HANDLE hSourceProcess, HANDLE hSource, HANDLE hTargetProcess, PHANDLE phTarget, DWORD dwAccess,
                     BOOL, DWORD dwOptions)
{
    if (phTarget)
        *phTarget = nullptr;
    if (!IsCurrentProcess(hSourceProcess) || !IsCurrentProcess(hTargetProcess))
        return Fail(ERROR_INVALID_HANDLE, FALSE);
    return OrNoMemory(FALSE, [&] {
        const CHandleEntry source = FindEntry(hSource);
        if (!source.pObject)
            return Fail(ERROR_INVALID_HANDLE, FALSE);
        if (phTarget)
            *phTarget =
                OpenHandle(source.pObject, (dwOptions & DUPLICATE_SAME_ACCESS) != 0 ? source.dwAccess : dwAccess);
        if ((dwOptions & DUPLICATE_CLOSE_SOURCE) != 0)
            CloseHandle(hSource);
        return TRUE;
    });
}
