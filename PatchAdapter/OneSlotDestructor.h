// The destructor as a host's compiler expects it in the tables of IAdapterFactory and IAdapter (see PatchAdapterApi.h).
#pragma once

#include "PatchAdapterApi.h"

#include <cstdint>

#if PATCHADAPTER_DESTRUCTOR_SLOT

/// Base of the final class Derived: fills the slot that Interface declares for its destructor.
template <class Derived, class Interface>
class COneSlotDestructor : public Interface
{
public:
    void* DestructorSlot(unsigned flags) override
    {
        const uintptr_t address = reinterpret_cast<uintptr_t>(this); // the pointer itself ends with the object
        if ((flags & 1u) != 0)
            delete static_cast<Derived*>(this);
        else
            static_cast<Derived*>(this)->~Derived();
        return reinterpret_cast<void*>(address);
    }

protected:
    ~COneSlotDestructor() = default;
};

/// Deletes an object through its virtual destructor. Null is allowed.
template <class Interface>
void DeleteThroughSlot(Interface* pObject)
{
    if (pObject != nullptr)
        pObject->DestructorSlot(1u);
}

#else

template <class Derived, class Interface>
using COneSlotDestructor = Interface;

/// Deletes an object through its virtual destructor. Null is allowed.
template <class Interface>
void DeleteThroughSlot(Interface* pObject)
{
    delete pObject;
}

#endif
