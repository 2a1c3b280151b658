// How OpenWithWait spends its time: the opening and the pause are replaced at link time.
#include "ovCore/OvEvent.h"

#include <gtest/gtest.h>

#include <memory>
#include <tuple>
#include <vector>

static unsigned s_nAttempts = 0;
static unsigned s_nFound = 0; // the attempt that finds the event; 0: none
static std::vector<DWORD> s_pauses;

extern "C"
{
    HANDLE __wrap_OpenEventW(DWORD dwAccess, BOOL bInherit, LPCWSTR szName)
    {
        EXPECT_TRUE(dwAccess == 0x120000 && bInherit == TRUE && szName == std::wstring(L"name"));
        return ++s_nAttempts == s_nFound ? ::CreateEventW(nullptr, TRUE, TRUE, nullptr) : nullptr;
    }

    void __wrap_Sleep(DWORD dwMilliseconds)
    {
        s_pauses.push_back(dwMilliseconds);
        EXPECT_EQ(s_nAttempts, s_pauses.size());
    }
}

TEST(OvEventRetry, PausesAfterEachFailureAndEndsWithTheEvent)
{
    using Pauses = std::vector<DWORD>;
    const std::tuple<DWORD, DWORD, unsigned, Pauses> rows[] = {
        { 10000, 10000, 0, { 10000 } },
        { 0, 500, 0, { 0 } },
        { 25000, 10000, 0, { 10000, 10000, 10000 } },
        { 25000, 10000, 1, {} },
        { 25000, 10000, 3, { 10000, 10000 } },
        { 5000, 10000, 0, { 5000 } },
        { 5000, 0, 0, { 0, 0 } },
        { 0, 0, 0, { 0 } },
        { 0xFFFFFFFF, 0xFFFFFFFE, 0, { 0xFFFFFFFE, 0xFFFFFFFE } },
    };
    for (const auto& [dwTotalMs, dwIntervalMs, nFound, pauses] : rows)
    {
        s_nAttempts = 0;
        s_nFound = nFound;
        s_pauses.clear();
        const std::unique_ptr<COvEvent> pEvent(
            COvEvent::OpenWithWait(L"name", dwTotalMs, dwIntervalMs, 0x120000, true));
        EXPECT_EQ(nFound != 0, pEvent->Exists() && pEvent->Lock(0));
        EXPECT_EQ(pauses, s_pauses) << dwTotalMs << " " << dwIntervalMs;
        EXPECT_EQ(pauses.size() + (nFound != 0 ? 1 : 0), s_nAttempts);
    }
}
