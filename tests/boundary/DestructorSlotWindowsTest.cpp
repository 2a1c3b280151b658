// The destructors through their one slot, which takes a flag word and returns the object's address.
#include "ImportTable.h"
#include "LoadedLibrary.h"
#include "RawSlots.h"
#include "TestPlatform.h"

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
    const CScratchRegistry registry; // the adapter makes its key
    for (const bool bAdapter : { false, true })
        for (const unsigned nFlags : { 0u, 1u, 2u, 3u })
        {
            const CLoadedLibrary library; // afresh, as the factory keeps an adapter that is not handed back to it
            const CFastPauses pauses(library.GetModule());
            IAdapterFactory* const pFactory = library.MakeFactory();
            void* const pObject =
                bAdapter ? static_cast<void*>(pFactory->Initialise(nullptr, nullptr, nullptr, nullptr)) : pFactory;
            const unsigned nSlot = bAdapter ? unsigned{ SlotAdapterDestructor } : unsigned{ SlotFactoryDestructor };
            ReplaceImport(library.GetModule(), SystemFunction("msvcrt", "free"), reinterpret_cast<void*>(&RecordFree));
            s_pFreed = nullptr;
            EXPECT_EQ(pObject, (CallSlot<void*, unsigned>(pObject, nSlot, nFlags))) << nFlags;
            EXPECT_EQ((nFlags & 1u) != 0, s_pFreed == pObject) << bAdapter << nFlags;
        }
}
