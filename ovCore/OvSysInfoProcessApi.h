// Listing processes through the system's own list (NT-based systems before Vista, without the debug privilege).
#pragma once

#include "ovCore/OvDynamicLib.h"
#include "ovCore/OvHeapBlock.h"
#include "ovCore/OvOsProcessApi.h"

class COvSysInfoProcessApi : public COvOsProcessApi
{
public:
    void Initialize() override;

    /// Lists names without paths; a process without a name is named "Idle".
    COvProcessCollection GetAllProcesses() const override;

private:
    using ZwQuerySystemInformationFunction = LONG WINAPI(ULONG, PVOID, ULONG, ULONG*);

    COvHeapBlock QueryProcesses() const;

    COvDynamicLib m_lib;
    ZwQuerySystemInformationFunction* m_pZwQuerySystemInformation = nullptr;
};
