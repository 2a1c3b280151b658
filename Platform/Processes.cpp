#include "Platform/Processes.h"

#include "Platform/Handles.h"
#include "Platform/Kernel/LastError.h"
#include "Platform/Kernel/Waitable.h"
#include "Platform/Process/ProcessObject.h"

#include <unistd.h>

namespace OvPlatform
{

namespace
{

constexpr CAccessMap ProcessAccess = { READ_CONTROL | 0x0410, READ_CONTROL | 0x02EA,
                                       READ_CONTROL | SYNCHRONIZE | 0x1001, PROCESS_ALL_ACCESS };

/// This process: nobody in it sees it end.
class CCurrentProcess final : public CWaitable, public CProcessObject
{
public:
    CCurrentProcess() : CWaitable(ProcessAccess), CProcessObject(GetCurrentProcessId()) {}
    bool IsSignalled() const override { return false; }
};

/// Another process. Waiting for one is not provided.
class COtherProcess final : public CKernelObject, public CProcessObject
{
public:
    explicit COtherProcess(DWORD dwId) : CKernelObject(ProcessAccess), CProcessObject(dwId) {}
};

bool MayOpen(const CProcessFiles& files)
{
    CProcessStatus status;
    return geteuid() == 0 || (ReadStatus(files, status) && status.nUser == geteuid());
}

HANDLE OpenOther(DWORD dwAccess, DWORD dwProcessId)
{
    const auto pProcess = std::make_shared<COtherProcess>(dwProcessId);
    if (!pProcess->Files().Exist())
        return Fail<HANDLE>(ERROR_INVALID_PARAMETER, nullptr);
    if (!MayOpen(pProcess->Files()))
        return Fail<HANDLE>(ERROR_ACCESS_DENIED, nullptr);
    return OpenHandle(pProcess, dwAccess);
}

} // namespace

const CHandleEntry& CurrentProcessEntry()
{
    static const auto& s_entry = *new CHandleEntry{ std::make_shared<CCurrentProcess>(), PROCESS_ALL_ACCESS };
    return s_entry;
}

} // namespace OvPlatform

using namespace OvPlatform;

HANDLE GetCurrentProcess()
{
    return reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1));
}

DWORD GetCurrentProcessId()
{
    return static_cast<DWORD>(getpid());
}

HANDLE OpenProcess(DWORD dwAccess, BOOL, DWORD dwProcessId)
{
    return OrNoMemory<HANDLE>(nullptr, [&] {
        return dwProcessId == GetCurrentProcessId() ? OpenHandle(CurrentProcessEntry().pObject, dwAccess)
                                                    : OpenOther(dwAccess, dwProcessId);
    });
}
