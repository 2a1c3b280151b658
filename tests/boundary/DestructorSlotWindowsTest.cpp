// The factory's destructor through its one slot: it takes a flag word and returns the object's address.
#include "ImportTable.h"
#include "LoadedLibrary.h"
#include "RawSlots.h"

#include <gtest/gtest.h>

namespace
{

void* s_pFreed = nullptr; // the last block that the library freed
void(__cdecl* s_pFree)(void*) = nullptr;

void __cdecl RecordFree(void* p)
{
    s_pFreed = p;
    s_pFree(p);
}

} // namespace

TEST(DestructorSlot, FreesOnlyWhenBit0IsSet)
{
    const CLoadedLibrary library;
    s_pFree = reinterpret_cast<void(__cdecl*)(void*)>(
        PatchImport(library.GetModule(), "free", reinterpret_cast<void*>(&RecordFree)));
    ASSERT_NE(nullptr, s_pFree);

    for (const unsigned nFlags : { 0u, 1u, 2u, 3u })
    {
        void* const pFactory = library.MakeFactory();
        s_pFreed = nullptr;
        EXPECT_EQ(pFactory, (CallSlot<void*, unsigned>(pFactory, SlotFactoryDestructor, nFlags))) << nFlags;
        EXPECT_EQ((nFlags & 1u) != 0 ? pFactory : nullptr, s_pFreed) << nFlags;
    }
}
