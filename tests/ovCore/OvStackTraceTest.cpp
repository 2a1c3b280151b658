#include "ovCore/OvStackTrace.h"

#include "FailingNew.h"
#include "ScratchRegistry.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <stdexcept>
#include <thread>

namespace
{

const wchar_t s_szFile[] = L"..\\ovCore\\OvThread";
const wchar_t s_szKey[] = L"SOFTWARE\\Trevok\\Trevok Compliance Agent";

struct CSwitch
{
    DWORD dwType;
    uint64_t nValue;
    DWORD dwSize; ///< 0: a key without the value
};

void Write(HKEY hRoot, const CSwitch& setting)
{
    HKEY hKey = nullptr;
    ASSERT_EQ(ERROR_SUCCESS, ::RegCreateKeyExW(hRoot, s_szKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &hKey, nullptr));
    if (setting.dwSize != 0)
    {
        EXPECT_EQ(ERROR_SUCCESS, ::RegSetValueExW(hKey, L"StackTraceEnabled", 0, setting.dwType,
                                                  reinterpret_cast<const BYTE*>(&setting.nValue), setting.dwSize));
    }
    ::RegCloseKey(hKey);
}

constexpr CSwitch s_on = { REG_DWORD, 1, 4 };

/// A tracer as the setting makes it, whatever the machine's own is.
std::unique_ptr<COvStackTrace> MakeTracer(const CSwitch& setting = s_on)
{
    const CScratchRegistry registry;
    Write(HKEY_LOCAL_MACHINE, setting);
    return std::make_unique<COvStackTrace>();
}

} // namespace

TEST(OvStackTrace, TheRegistrySwitchesIt)
{
    using OptSwitch = std::optional<CSwitch>;
    const CSwitch noValue = { 0, 0, 0 };
    const struct
    {
        const char* szWhat;
        OptSwitch machine;
        OptSwitch user;
        bool bOn;
    } rows[] = {
        { "no key", {}, {}, false },
        { "machine 1", s_on, {}, true },
        { "machine 2", CSwitch{ REG_DWORD, 2, 4 }, {}, true },
        { "machine 0", CSwitch{ REG_DWORD, 0, 4 }, {}, false },
        { "machine 3", CSwitch{ REG_DWORD, 3, 4 }, {}, false },
        { "machine 0x101", CSwitch{ REG_DWORD, 0x101, 4 }, {}, false },
        { "a text", CSwitch{ REG_SZ, '1', 4 }, {}, false },
        { "eight bytes", CSwitch{ REG_QWORD, 1, 8 }, {}, false },
        { "binary", CSwitch{ REG_BINARY, 1, 4 }, {}, false },
        { "two bytes", CSwitch{ REG_DWORD, 1, 2 }, {}, false },
        { "user 1", {}, s_on, true },
        { "user 3", {}, CSwitch{ REG_DWORD, 3, 4 }, false },
        { "machine key without value hides user", noValue, s_on, false },
        { "machine 0 hides user", CSwitch{ REG_DWORD, 0, 4 }, s_on, false },
    };
    for (const auto& row : rows)
    {
        const CScratchRegistry registry;
        if (row.machine)
            Write(HKEY_LOCAL_MACHINE, *row.machine);
        if (row.user)
            Write(HKEY_CURRENT_USER, *row.user);
        EXPECT_EQ(row.bOn, COvStackTrace().IsOn()) << row.szWhat;
    }
}

TEST(OvStackTrace, TheProcesssTracerIsMadeAtLoadAndReadsOnce)
{
    const CScratchRegistry registry;
    Write(HKEY_LOCAL_MACHINE, s_on); // too late: the instance was there before main
    EXPECT_FALSE(COvStackTrace::Get()->IsOn());
    EXPECT_EQ(COvStackTrace::Get(), COvStackTrace::Get());
}

TEST(OvStackTrace, ListsTheOpenScopesOutermostFirst)
{
    const auto pTracer = MakeTracer();
    EXPECT_EQ(L"\r", pTracer->Dump());
    const COvStackTraceScope outer(L"COvThread::Start", s_szFile, 93, pTracer.get());
    {
        const COvStackTraceScope inner(L"COvThread::RunAsync", L"OvThread", 60, pTracer.get());
        const COvStackTraceScope unnamed(nullptr, nullptr, -1, pTracer.get());
        EXPECT_EQ(L"\rCOvThread::Start [OvThread:93] ^\rCOvThread::RunAsync [OvThread:60] ^\runknown [unknown:-1] ^\r",
                  pTracer->Dump());
    }
    EXPECT_EQ(L"\rCOvThread::Start [OvThread:93] ^\r", pTracer->Dump());
}

TEST(OvStackTrace, AScopeTakesTheFramesAboveItAlong)
{
    const auto pTracer = MakeTracer();
    const COvStackTraceScope outer(L"outer", s_szFile, 1, pTracer.get());
    LONG nDepth = -1;
    try
    {
        const COvStackTraceScope inner(L"inner", s_szFile, 2, pTracer.get());
        EXPECT_TRUE(pTracer->Push(L"left behind", s_szFile, 3, &nDepth));
        EXPECT_EQ(2, nDepth);
        throw std::runtime_error("");
    }
    catch (const std::exception&)
    {
        EXPECT_EQ(L"\router [OvThread:1] ^\r", pTracer->Dump());
    }
    pTracer->Pop(5);
    EXPECT_EQ(L"\router [OvThread:1] ^\r", pTracer->Dump());
    pTracer->Pop(-1);
    EXPECT_EQ(L"\r", pTracer->Dump());
}

TEST(OvStackTrace, NothingIsRecordedWhenItShouldNotBe)
{
    for (const DWORD dwMode : { 0, 2 })
    {
        const auto pTracer = MakeTracer({ REG_DWORD, dwMode, 4 });
        LONG nDepth = 77;
        EXPECT_EQ(dwMode != 0, pTracer->IsOn());
        EXPECT_FALSE(pTracer->Push(L"f", s_szFile, 1, &nDepth));
        EXPECT_EQ(77, nDepth);
        const COvStackTraceScope scope(L"f", s_szFile, 1, pTracer.get());
        EXPECT_EQ(L"\r", pTracer->Dump());
        pTracer->Pop(0);
    }
    const COvStackTraceScope none(L"f", s_szFile, 1, nullptr);
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
            if (pTracer->Dump() != expected)
                ADD_FAILURE() << i;
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
    {
        const CFailingNew failing(1);
        const COvStackTraceScope scope(L"f", s_szFile, 1, pTracer.get());
        EXPECT_TRUE(failing.Reached());
    }
    bool bReached = true;
    for (unsigned nFail = 1; bReached; ++nFail)
    {
        const COvStackTraceScope scope(L"a name that is too long to be held inside a string", s_szFile, 1,
                                       pTracer.get());
        const CFailingNew failing(nFail);
        try
        {
            pTracer->Dump();
        }
        catch (const std::bad_alloc&)
        {
            EXPECT_TRUE(failing.Reached());
        }
        bReached = failing.Reached();
    }
    std::thread([&] { EXPECT_EQ(L"\r", pTracer->Dump()); }).join(); // a lock left held would stop this thread
    EXPECT_EQ(L"\r", pTracer->Dump());
}
