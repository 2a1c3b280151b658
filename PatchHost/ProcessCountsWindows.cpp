#include "PatchHost/ProcessCounts.h"

#include "OvPlatform.h"

CProcessCounts CountProcess()
{
    CProcessCounts counts;
    const HANDLE hSnapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof(entry);
    for (BOOL bMore = ::Thread32First(hSnapshot, &entry); bMore; bMore = ::Thread32Next(hSnapshot, &entry))
        counts.nThreads += entry.th32OwnerProcessID == ::GetCurrentProcessId() ? 1 : 0;
    ::CloseHandle(hSnapshot);
    DWORD dwHandles = 0;
    ::GetProcessHandleCount(::GetCurrentProcess(), &dwHandles);
    counts.nHandles = dwHandles;
    return counts;
}
