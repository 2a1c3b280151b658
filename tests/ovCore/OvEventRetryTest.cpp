// How OpenWithWait spends its time: the opening and the pause are replaced at link time.
#include "ovCore/OvEvent.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace
{

struct CAttempt
{
    DWORD dwAccess;
    BOOL bInherit;
    std::wstring strName;
};

std::vector<CAttempt> s_attempts;
std::vector<DWORD> s_pauses;
size_t s_nFound = 0; // the attempt that finds the event; 0: none

} // namespace

extern "C"
{
    HANDLE __wrap_OpenEventW(DWORD dwAccess, BOOL bInherit, LPCWSTR szName)
    {
        s_attempts.push_back({ dwAccess, bInherit, szName });
        return s_attempts.size() == s_nFound ? ::CreateEventW(nullptr, TRUE, TRUE, nullptr) : nullptr;
    }

    void __wrap_Sleep(DWORD dwMilliseconds)
    {
        s_pauses.push_back(dwMilliseconds);
    }
}

namespace
{

/// The pauses of one opening; one attempt went before each, and one more when the event was found.
std::vector<DWORD> PausesOf(DWORD dwTotalMs, DWORD dwIntervalMs, size_t nFound = 0)
{
    s_attempts.clear();
    s_pauses.clear();
    s_nFound = nFound;
    const std::unique_ptr<COvEvent> pEvent(COvEvent::OpenWithWait(L"name", dwTotalMs, dwIntervalMs, 0x120000, true));
    EXPECT_EQ(nFound != 0, pEvent->Exists());
    EXPECT_EQ(nFound != 0, pEvent->Lock(0));
    EXPECT_EQ(s_attempts.size(), s_pauses.size() + (nFound != 0 ? 1 : 0));
    for (const CAttempt& attempt : s_attempts)
        EXPECT_TRUE(attempt.dwAccess == 0x120000 && attempt.bInherit == TRUE && attempt.strName == L"name");
    return s_pauses;
}

} // namespace

TEST(OvEventRetry, PausesAfterEachFailure)
{
    const struct
    {
        DWORD dwTotalMs;
        DWORD dwIntervalMs;
        std::vector<DWORD> pauses;
    } rows[] = {
        { 10000, 10000, { 10000 } },
        { 0, 500, { 0 } },
        { 25000, 10000, { 10000, 10000, 10000 } },
        { 5000, 10000, { 5000 } },
        { 5000, 0, { 0, 0 } },
        { 0, 0, { 0 } },
        { 30000, 10000, { 10000, 10000, 10000 } },
        { 1, 1, { 1 } },
        { 0xFFFFFFFF, 0x80000000, { 0x80000000, 0x80000000 } },
        { 0xFFFFFFFF, 0xFFFFFFFF, { 0xFFFFFFFF } },
        { 0xFFFFFFFF, 0xFFFFFFFE, { 0xFFFFFFFE, 0xFFFFFFFE } },
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.pauses, PausesOf(row.dwTotalMs, row.dwIntervalMs)) << row.dwTotalMs << " " << row.dwIntervalMs;
}

TEST(OvEventRetry, EndsWithTheEvent)
{
    EXPECT_EQ(std::vector<DWORD>(), PausesOf(25000, 10000, 1));
    EXPECT_EQ(std::vector<DWORD>({ 10000, 10000 }), PausesOf(25000, 10000, 3));
}
