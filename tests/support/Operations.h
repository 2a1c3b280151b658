// The thirteen operations of an adapter, described once, in the order of their slots.
#pragma once

#include "PatchAdapterApi.h"

/// What they are called with; each takes its own.
struct CArguments
{
    IStatusReceiver* pReceiver = nullptr;
    IStateObserver* pObserver = nullptr;
    IConfigurationReceiver* pConfiguration = nullptr;
    const char* szPolicy = nullptr;
    void* pValue = nullptr; ///< for those that look at no argument
};

struct COperation
{
    const char* szName;
    void (*pfnCall)(IAdapter&, const CArguments&);
};

#define OV_OPERATION(name, ...)                                                                                        \
    {                                                                                                                  \
#name, [](IAdapter & adapter, const CArguments& with) { static_cast<void>(with), adapter.name(__VA_ARGS__); }  \
    }
inline constexpr COperation OPERATIONS[] = {
    OV_OPERATION(GetStatus, with.pReceiver),
    OV_OPERATION(RegisterStateObserver, with.pObserver),
    OV_OPERATION(DeRegisterStateObserver, with.pObserver),
    OV_OPERATION(GetConfiguration, with.pConfiguration),
    OV_OPERATION(SetConfiguration, with.szPolicy),
    OV_OPERATION(RegisterEventObserver, with.pValue),
    OV_OPERATION(DeRegisterEventObserver, with.pValue),
    OV_OPERATION(RegisterConfigStateObserver, with.pValue),
    OV_OPERATION(DeRegisterConfigStateObserver, with.pValue),
    OV_OPERATION(DoAction, with.pValue, with.pValue),
    OV_OPERATION(RegisterActionOutcomeObserver, with.pValue),
    OV_OPERATION(DeRegisterActionOutcomeObserver, with.pValue),
    OV_OPERATION(SetFeature, with.pValue),
};
#undef OV_OPERATION

// Places in the list.
inline constexpr unsigned REGISTER = 1;
inline constexpr unsigned GET_CONFIGURATION = 3; ///< the one that lets its receiver's exception pass to the host
inline constexpr unsigned SET_CONFIGURATION = 4;
inline constexpr unsigned FIRST_UNIMPLEMENTED = 5;

inline void CallUnimplemented(IAdapter& adapter, void* pValue)
{
    CArguments with;
    with.pValue = pValue;
    for (unsigned n = FIRST_UNIMPLEMENTED; n < sizeof OPERATIONS / sizeof *OPERATIONS; ++n)
        OPERATIONS[n].pfnCall(adapter, with);
}
