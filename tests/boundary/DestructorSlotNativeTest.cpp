// The factory's destructor through its table, where it takes the two slots that the platform's compilers give it.
#include "LoadedLibrary.h"
#include "RawSlots.h"

#include <gtest/gtest.h>

TEST(DestructorSlot, TheSecondSlotDeletes) // a sanitizer finds a factory that stays
{
    const CLoadedLibrary library;
    IAdapterFactory* const pFactory = library.MakeFactory();
    CallSlot<void>(pFactory, SlotFactoryDestructor + 1);
}
