#include "ovCore/OvStackTrace.h"

#include "FailingNew.h"
#include "ScratchRegistry.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

namespace
{

const wchar_t s_szFile[] = L"..\\ovCore\\OvThread";
const DWORD s_dwNoKey = 0xFFFFFFFF;

/// What the switch's key holds under one root.
struct CSwitch
{
    DWORD dwType;
    uint64_t nValue;
    DWORD dwSize; ///< 0: a key without the value; s_dwNoKey: no key
};

void Write(HKEY hRoot, const CSwitch& setting)
{
    HKEY hKey = nullptr;
    if (setting.dwSize == s_dwNoKey)
        return;
    ASSERT_EQ(ERROR_SUCCESS, ::RegCreateKeyExW(hRoot, L"SOFTWARE\\Trevok\\Trevok Compliance Agent", 0, nullptr, 0,
                                               KEY_ALL_ACCESS, nullptr, &hKey, nullptr));
    if (setting.dwSize != 0)
        ::RegSetValueExW(hKey, L"StackTraceEnabled", 0, setting.dwType, reinterpret_cast<const BYTE*>(&setting.nValue),
                         setting.dwSize);
    ::RegCloseKey(hKey);
}

constexpr CSwitch s_on = { REG_DWORD, 1, 4 };
constexpr CSwitch s_none = { 0, 0, s_dwNoKey };

/// A tracer as the settings of machine and user make it.
std::unique_ptr<COvStackTrace> MakeTracer(const CSwitch& machine = s_on, const CSwitch& user = s_none)
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
    const struct
    {
        CSwitch machine;
        CSwitch user;
        bool bOn;
        bool bRecords;
    } rows[] = {
        { s_none, s_none, false, false },
        { s_on, s_none, true, true },
        { { REG_DWORD, 2, 4 }, s_none, true, false },
        { { REG_DWORD, 3, 4 }, s_none, false, false },
        { { REG_DWORD, 0x101, 4 }, s_none, false, false },
        { { REG_SZ, '1', 4 }, s_none, false, false },
        { { REG_QWORD, 1, 8 }, s_none, false, false },
        { { REG_BINARY, 1, 4 }, s_none, false, false },
        { { REG_DWORD, 1, 2 }, s_none, false, false },
        { s_none, s_on, true, true },
        { { 0, 0, 0 }, s_on, false, false }, // a machine key without the value hides the user's
    };
    for (const auto& row : rows)
    {
        const auto pTracer = MakeTracer(row.machine, row.user);
        LONG nDepth = 77;
        EXPECT_EQ(row.bOn, pTracer->IsOn()) << &row - rows;
        EXPECT_EQ(row.bRecords, pTracer->Push(L"f", s_szFile, 1, &nDepth)) << &row - rows;
        EXPECT_EQ(row.bRecords ? 0 : 77, nDepth) << &row - rows;
        const COvStackTraceScope scope(L"g", s_szFile, 2, pTracer.get());
        EXPECT_EQ(row.bRecords ? L"\rf [OvThread:1] ^\rg [OvThread:2] ^\r" : L"\r", pTracer->Dump()) << &row - rows;
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
        EXPECT_TRUE(pTracer->Push(nullptr, nullptr, -1, &nDepth)); // left behind
        EXPECT_EQ(2, nDepth);
        EXPECT_EQ(L"\router [OvThread:1] ^\rinner [OvThread:2] ^\runknown [unknown:-1] ^\r", pTracer->Dump());
        throw 1;
    };
    EXPECT_THROW(fail(), int);
    pTracer->Pop(5);
    EXPECT_EQ(L"\router [OvThread:1] ^\r", pTracer->Dump());
    pTracer->Pop(-1);
    EXPECT_EQ(L"\r", pTracer->Dump());
}

TEST(OvStackTrace, EachThreadHasItsOwnStack)
{
    const auto pTracer = MakeTracer();
    const COvStackTraceScope scope(L"main", s_szFile, 1, pTracer.get());
    const auto work = [&](const wchar_t* szName) {
        const std::wstring expected = L"\r" + std::wstring(szName) + L" [OvThread:2] ^\r";
        for (int i = 0; i < 2000; ++i)
        {
            const COvStackTraceScope inner(szName, s_szFile, 2, pTracer.get());
            EXPECT_EQ(expected, pTracer->Dump());
        }
    };
    std::thread a(work, L"a");
    std::thread b(work, L"b");
    a.join();
    b.join();
    EXPECT_EQ(L"\rmain [OvThread:1] ^\r", pTracer->Dump());
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
