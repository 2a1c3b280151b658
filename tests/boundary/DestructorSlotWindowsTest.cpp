// The factory's destructor through its one slot: it takes a flag word and returns the object's address.
#include "ImportTable.h"
#include "LoadedLibrary.h"
#include "RawSlots.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace
{

void* s_pFreed = nullptr; // the last block that the library freed

void __cdecl RecordFree(void* p)
{
    s_pFreed = p;
    std::free(p);
}

} // namespace

TEST(DestructorSlot, FreesOnlyWhenBit0IsSet)
{
    const CLoadedLibrary library;
    ReplaceImport(library.GetModule(), SystemFunction("msvcrt", "free"), reinterpret_cast<void*>(&RecordFree));
    for (const unsigned nFlags : { 0u, 1u, 2u, 3u })
    {
        void* const pFactory = library.MakeFactory();
        s_pFreed = nullptr;
        EXPECT_EQ(pFactory, (CallSlot<void*, unsigned>(pFactory, SlotFactoryDestructor, nFlags))) << nFlags;
        EXPECT_EQ((nFlags & 1u) != 0 ? pFactory : nullptr, s_pFreed) << nFlags;
    }
}
