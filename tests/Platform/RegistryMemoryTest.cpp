// The registry when memory runs out at each place once, in the stand-in or in the database below it.
#include "FailingNew.h"
#include "OvPlatform.h"
#include "Platform/Control.h"

#include "RegistryValues.h"

#include <gtest/gtest.h>

#include <functional>
#include <sqlite3.h>

namespace
{

sqlite3_mem_methods s_methods;     // SQLite's own
thread_local unsigned t_nFail = 0; // the database's allocation that fails, counted down; 0 for none

bool FailsNow()
{
    return t_nFail != 0 && --t_nFail == 0;
}

void* Allocate(int nSize)
{
    return FailsNow() ? nullptr : s_methods.xMalloc(nSize);
}

void* Reallocate(void* p, int nSize)
{
    return FailsNow() ? nullptr : s_methods.xRealloc(p, nSize);
}

/// Puts the failing allocator below the database, which must not have been used before.
bool HookDatabase()
{
    sqlite3_config(SQLITE_CONFIG_GETMALLOC, &s_methods);
    sqlite3_mem_methods hooked = s_methods;
    hooked.xMalloc = &Allocate;
    hooked.xRealloc = &Reallocate;
    return sqlite3_config(SQLITE_CONFIG_MALLOC, &hooked) == SQLITE_OK;
}

const bool s_bHooked = HookDatabase();

const CBytes one = { 1 };
const CBytes two = { 2 };

/// Runs the work with its n-th allocation failing. @return whether it came that far.
using CFailing = std::function<bool(unsigned nFail, const std::function<void()>& work)>;

bool WithFailingNew(unsigned nFail, const std::function<void()>& work)
{
    const CFailingNew failing(nFail);
    work();
    return failing.Reached();
}

bool WithFailingDatabase(unsigned nFail, const std::function<void()>& work)
{
    t_nFail = nFail;
    work();
    const bool bReached = t_nFail == 0;
    t_nFail = 0;
    return bReached;
}

/// Walks the allocations of the work: each of the first hundred, then a hundredth further at a time.
/// @param run  does the work with the n-th failing. @return by it whether the work came that far.
void Walk(const std::function<bool(unsigned nFail)>& run)
{
    constexpr unsigned First = 100;
    constexpr unsigned Many = 100000;
    unsigned nFail = 1;
    while (nFail < Many && run(nFail))
        nFail += 1 + nFail / First;
    EXPECT_LT(5u, nFail); // it did fail somewhere
    EXPECT_GT(Many, nFail);
}

/// Each run starts from an empty registry when bFresh, else from one that has the value 1.
void WalkWrites(const CFailing& failing, bool bFresh)
{
    Walk([&](unsigned nFail) {
        OvPlatform::SetRegistryInMemory();
        EXPECT_EQ(ERROR_SUCCESS, bFresh ? ERROR_SUCCESS : Write(L"v", one));
        LSTATUS lResult = ERROR_SUCCESS;
        const bool bReached = failing(nFail, [&] { lResult = Write(L"v", two); });
        CBytes value(1);
        const LSTATUS lRead = Read(L"v", value);
        const bool bDone = lResult == ERROR_SUCCESS;
        EXPECT_TRUE(bDone || lResult == ERROR_OUTOFMEMORY) << lResult << " at " << nFail;
        EXPECT_EQ(bFresh && !bDone ? ERROR_FILE_NOT_FOUND : ERROR_SUCCESS, lRead) << nFail;
        EXPECT_EQ(bDone ? two : bFresh ? CBytes() : one, value) << nFail;
        return bReached;
    });
}

void WalkReads(const CFailing& failing)
{
    OvPlatform::SetRegistryInMemory();
    EXPECT_EQ(ERROR_SUCCESS, Write(L"v", one));
    Walk([&](unsigned nFail) {
        CBytes value(1);
        LSTATUS lResult = ERROR_SUCCESS;
        const bool bReached = failing(nFail, [&] { lResult = Read(L"v", value); });
        EXPECT_TRUE(lResult == ERROR_SUCCESS ? value == one : lResult == ERROR_OUTOFMEMORY)
            << lResult << " at " << nFail;
        return bReached;
    });
}

} // namespace

TEST(RegistryWithoutMemory, WritesOldOrNewAndReadsOrSaysSo)
{
    ASSERT_TRUE(s_bHooked);
    for (const CFailing& failing : { CFailing(&WithFailingNew), CFailing(&WithFailingDatabase) })
    {
        WalkWrites(failing, false);
        WalkWrites(failing, true);
        WalkReads(failing);
    }
}
