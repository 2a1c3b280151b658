#include "Processes.h"

#include "Handles.h"
#include "ProcessObject.h"
#include "Waitable.h"

#include <unistd.h>

namespace OvPlatform
{

namespace
{

constexpr DWORD ProcessAllAccess = STANDARD_RIGHTS_REQUIRED | SYNCHRONIZE | 0xFFFF;
constexpr CAccessMap ProcessAccess = { READ_CONTROL | 0x0410, READ_CONTROL | 0x02EA,
                                       READ_CONTROL | SYNCHRONIZE | 0x1001, ProcessAllAccess };

/// This process: nobody in it sees it end.
class CCurrentProcess final : public CWaitable
{
public:
    CCurrentProcess() : CWaitable(ProcessAccess) {}
    bool IsSignalled() const override { return false; }
};

} // namespace

const CHandleEntry& CurrentProcessEntry()
{
    static const auto& s_entry = *new CHandleEntry{ std::make_shared<CCurrentProcess>(), ProcessAllAccess };
    return s_entry;
}

} // namespace OvPlatform

HANDLE GetCurrentProcess()
{
    return reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1));
}

DWORD GetCurrentProcessId()
{
    return static_cast<DWORD>(getpid());
}
