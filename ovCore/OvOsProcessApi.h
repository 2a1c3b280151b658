// How the running processes are listed: one method a generation of the platform, behind one interface.
#pragma once

#include "ovCore/OvProcesses.h"
#include "OvPlatform.h"

#include <memory>

class COVOsVersion;

/// A method of listing processes. Read-only once it is initialised; then any thread may use it. Failures are raised as
/// COvException E_FAIL.
class COvOsProcessApi
{
public:
    COvOsProcessApi(const COvOsProcessApi&) = delete;
    COvOsProcessApi& operator=(const COvOsProcessApi&) = delete;
    virtual ~COvOsProcessApi() = default;

    /// Loads the platform's library and looks its functions up. Called once, before anything else.
    virtual void Initialize() = 0;

    /// Lists the processes that run now. One whose path cannot be read is named "System".
    virtual COvProcessCollection GetAllProcesses() const = 0;

    /// The process's one method, chosen for the running system and made ready at first use; kept until the library
    /// unloads. Any thread. After a failure the next call tries again.
    static COvOsProcessApi& GetApi();

    /// The method for a system; not initialised. Raises on a system without any.
    /// @param pEnablePrivilege  called on NT-based systems alone: whether the debug privilege could be enabled.
    static std::unique_ptr<COvOsProcessApi> MakeApi(const COVOsVersion& version, bool (*pEnablePrivilege)());

    /// Enables the privilege to open the processes of other users for this process.
    /// @return whether it has it now.
    static bool EnableDebugPrivilege();

protected:
    COvOsProcessApi() = default;
};
