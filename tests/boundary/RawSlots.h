// The interfaces as a host of another compiler sees them: tables of functions, called by their place in the table.
#pragma once

/// Calls the operation in a slot of an object's table.
template <class Result, class... Arguments>
Result CallSlot(void* pObject, unsigned nSlot, Arguments... arguments)
{
    using Function = Result(OV_THISCALL*)(void*, Arguments...);
    void** const pTable = *static_cast<void***>(pObject);
    return reinterpret_cast<Function>(pTable[nSlot])(pObject, arguments...);
}

// Places in the factory's table, and in the adapter's.
enum : unsigned
{
    SlotInitialise,
    SlotUninitialise,
    SlotFactoryDestructor
};
enum : unsigned
{
    SlotGetStatus,
    SlotRegisterStateObserver,
    SlotDeRegisterStateObserver,
    SlotGetConfiguration,
    SlotSetConfiguration,
    SlotDoAction = 9,
    SlotAdapterDestructor = 13
};
