#include "ovCore/OvStackTrace.h"

#include "FailingNew.h"
#include "TestPlatform.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <tuple>

namespace
{

const wchar_t s_szFile[] = L"..\\ovCore\\OvThread";

/// What the switch's key holds under one root: type, value and size; a size of 0 for a key without the value.
using Switch = std::tuple<DWORD, uint64_t, DWORD>;
const Switch s_on = { REG_DWORD, 1, 4 };
const Switch s_none = { 0, 0, 0xFFFFFFFF };

void Write(HKEY hRoot, const Switch& setting)
{
    const auto& [dwType, nValue, dwSize] = setting;
    HKEY hKey = nullptr;
    if (setting == s_none)
        return;
    ::RegCreateKeyExW(hRoot, L"SOFTWARE\\Trevok\\Trevok Compliance Agent", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                      &hKey, nullptr);
    if (dwSize != 0)
        ::RegSetValueExW(hKey, L"StackTraceEnabled", 0, dwType, reinterpret_cast<const BYTE*>(&nValue), dwSize);
    ::RegCloseKey(hKey);
}

/// A tracer as the settings of machine and user make it.
std::unique_ptr<COvStackTrace> MakeTracer(const Switch& machine = s_on, const Switch& user = s_none)
{
    const CScratchRegistry registry;
    Write(HKEY_LOCAL_MACHINE, machine);
    Write(HKEY_CURRENT_USER, user);
    EXPECT_FALSE(COvStackTrace::Get()->IsOn()); // the process's was made at load
    return std::make_unique<COvStackTrace>();
}

} // namespace

TEST(OvStackTrace, TheRegistrySwitchesIt)
{
    const std::tuple<Switch, Switch, bool, bool> rows[] = {
        { s_none, s_none, false, false },
        { s_on, s_none, true, true },
        { { REG_DWORD, 2, 4 }, s_none, true, false },
        { { REG_DWORD, 3, 4 }, s_none, false, false },
        { { REG_SZ, 1, 4 }, s_none, false, false },
        { { REG_QWORD, 1, 8 }, s_none, false, false },
        { { REG_DWORD, 1, 2 }, s_none, false, false },
        { s_none, s_on, true, true },
        { { 0, 0, 0 }, s_on, false, false }, // a machine key without the value hides the user's
    };
    for (const auto& [machine, user, bOn, bRecords] : rows)
    {
        const auto pTracer = MakeTracer(machine, user);
        LONG nDepth = 0;
        EXPECT_EQ(bOn, pTracer->IsOn()) << std::get<1>(machine);
        EXPECT_EQ(bRecords, pTracer->Push(L"f", s_szFile, 1, &nDepth)) << std::get<1>(machine);
        const COvStackTraceScope scope(L"g", s_szFile, 2, pTracer.get());
        EXPECT_EQ(bRecords ? L"\rf [OvThread:1] ^\rg [OvThread:2] ^\r" : L"\r", pTracer->Dump());
    }
}

TEST(OvStackTrace, ListsTheOpenScopesOutermostFirst)
{
    const auto pTracer = MakeTracer();
    const COvStackTraceScope outer(L"outer", s_szFile, 1, pTracer.get());
    const auto fail = [&] {
        const COvStackTraceScope inner(L"inner", L"OvThread", 2, pTracer.get());
        const COvStackTraceScope inactive(L"none", s_szFile, 3, nullptr);
        LONG nDepth = -1;
        EXPECT_TRUE(pTracer->Push(nullptr, nullptr, -1, &nDepth) && nDepth == 2); // left behind
        EXPECT_EQ(L"\router [OvThread:1] ^\rinner [OvThread:2] ^\runknown [unknown:-1] ^\r", pTracer->Dump());
        throw 1;
    };
    EXPECT_THROW(fail(), int);
    EXPECT_EQ(L"\router [OvThread:1] ^\r", pTracer->Dump());
    pTracer->Pop(-1);
    EXPECT_EQ(L"\r", pTracer->Dump());
}

TEST(OvStackTrace, EachThreadHasItsOwnStack)
{
    const auto pTracer = MakeTracer();
    const auto work = [&](const wchar_t* szName) {
        for (int i = 0; i < 2000; ++i)
        {
            const COvStackTraceScope scope(szName, s_szFile, 2, pTracer.get());
            EXPECT_EQ(std::wstring(L"\r") + szName + L" [OvThread:2] ^\r", pTracer->Dump());
        }
    };
    std::thread other(work, L"other");
    work(L"main");
    other.join();
}

TEST(OvStackTrace, WithoutMemoryAScopeIsInactiveAndTheLockFree)
{
    const auto pTracer = MakeTracer();
    bool bReached = true;
    for (unsigned nFail = 1; bReached; ++nFail)
    {
        const CFailingNew failing(nFail);
        const COvStackTraceScope scope(L"a name that is too long to be held inside a string", s_szFile, 1,
                                       pTracer.get());
        try
        {
            pTracer->Dump();
        }
        catch (const std::bad_alloc&)
        {
        }
        bReached = failing.Reached();
    }
    std::thread([&] { EXPECT_EQ(L"\r", pTracer->Dump()); }).join(); // a lock left held would stop this thread
}
