// The main job with each call of the platform failing in its turn.
#include "FaultyRun.h"
#include "MainJob.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace
{

/// How the trace tells of a failed call when the job was not done whole: one of the texts stands in an error or warning
/// line. Those that are silent: a call that the service's presence is read from, a message's words.
const std::multimap<std::string, std::string> s_told = {
    { "CoCreateGuid", "Method: CoCreateGuid" },
    { "CoCreateInstance", "Unable to connect to the Patch API" },
    { "CoCreateInstance", "Method: CreateInstance" },
    { "CoInitializeEx", "Method: CoInitialize" },
    { "CreateEventW", "Unable to create the stop event" },
    { "GetFileVersionInfoSizeW", "Unable to determine version of binary" },
    { "GetFileVersionInfoW", "Method: GetFileVersionInfo" },
    { "GetModuleFileNameW", "Unable to determine version of binary" },
    { "GetProcAddress", "Method: GetProcAddress" },
    { "GetProcAddress", "Unable to determine version of binary" },
    { "LoadLibraryExW", "Method: LoadLibraryEx" },
    { "LoadLibraryExW", "Unable to determine version of binary" },
    { "MultiByteToWideChar", "iBufferSize <= 0" },
    { "MultiByteToWideChar", "MultiByteToWideChar" },
    { "RegCreateKeyExW", "Method: ::RegCreateKeyEx" },
    { "RegOpenKeyExW", "Method: ::RegOpenKeyEx" },
    { "RegQueryValueExW", "Method: ::RegQueryValueEx" },
    { "RegSetValueExW", "Method: ::RegSetValueEx" },
    { "SysAllocStringLen", "An unknown exception was encountered" },
    { "SysAllocStringLen", "Exception occurred applying policy settings" },
    { "VariantChangeType", "Info Msg: VariantChangeType" },
    { "VerQueryValueW", "Unable to determine version of binary" },
    { "WideCharToMultiByte", "WideCharToMultiByte" },
    { "WideCharToMultiByte", "Method: GetProcAddress" },
    { "_beginthreadex", "Method: _beginthreadex" },
};

const std::set<std::string> s_silent = { "OpenEventW", "WaitForMultipleObjects", "WaitForSingleObject" };

bool IsTold(const COutcome& outcome)
{
    if (outcome.failed == "WideCharToMultiByte" && outcome.documents.count("") != 0)
        return true; // empty when the conversion fails after it has told the size
    const auto [first, last] = s_told.equal_range(outcome.failed);
    return s_silent.count(outcome.failed) != 0 || std::any_of(first, last, [&](const auto& row) {
               return outcome.trace.find(row.second) != std::string::npos;
           });
}

bool IsWhole(const COutcome& outcome, const COutcome& clean)
{
    return outcome.bAdapter && outcome.wzRevId == clean.wzRevId &&
           std::includes(outcome.documents.begin(), outcome.documents.end(), clean.documents.begin(),
                         clean.documents.end());
}

/// What holds whichever call fails.
void ExpectNothingLost(const COutcome& outcome, const std::string& place)
{
    SCOPED_TRACE(place + ", failed: " + outcome.failed.substr(0, 200));
    EXPECT_FALSE(outcome.bEscaped);
    EXPECT_EQ("", outcome.leak);
    EXPECT_TRUE(outcome.wzRevId == OLD_REVISION || outcome.wzRevId == NEW_REVISION);
}

} // namespace

TEST(EveryPlatformCallFails, OnceOnAThreadOfTheHost)
{
    const COutcome clean = RunMainJob({});
    ASSERT_TRUE(clean.bAdapter && clean.wzRevId == NEW_REVISION);
    for (unsigned n = 1; n <= clean.nCalls; ++n)
    {
        const COutcome outcome = RunMainJob({ n });
        ExpectNothingLost(outcome, "call " + std::to_string(n));
        EXPECT_TRUE(IsWhole(outcome, clean) || IsTold(outcome)) << n << ": " << outcome.failed << "\n" << outcome.trace;
    }
}

TEST(EveryPlatformCallFails, FromThenOnOnAThreadOfTheHost)
{
    const unsigned nCalls = RunMainJob({}).nCalls;
    for (unsigned n = 1; n <= nCalls; ++n)
        ExpectNothingLost(RunMainJob({ n, CCallFailure::ONWARDS }), "from call " + std::to_string(n));
}

TEST(EveryPlatformCallFails, OnTheMonitorsThread)
{
    constexpr unsigned nMost = 12; // its polling repeats the same calls without end
    for (const std::string& function : WatchedFunctions())
        for (const unsigned nCount : { 1u, CCallFailure::ONWARDS })
            for (unsigned n = 1; n <= nMost; ++n)
            {
                if (function == "WaitForSingleObject" && nCount != 1)
                    break; // the thread would not see its stop event any more
                const COutcome outcome = RunMainJob({ n, nCount, function, true }, true);
                ExpectNothingLost(outcome, function + " " + std::to_string(n));
                if (outcome.failed.empty())
                    break;
            }
}

TEST(EveryPlatformCallFails, TwiceInOneApply)
{
    CRepeatedApply apply;
    const auto isOldOrNew = [] { return StoredRevision() == OLD_REVISION || StoredRevision() == NEW_REVISION; };
    const unsigned nCalls = apply.Apply({});
    for (unsigned nFirst = 1; nFirst <= nCalls; ++nFirst)
        for (unsigned nSecond = nFirst + 1; apply.Apply({ nFirst, 1, {}, false, nSecond }) >= nSecond;
             nSecond += SampleStep())
            ASSERT_TRUE(isOldOrNew() && !apply.HasEscaped()) << nFirst << " and " << nSecond;
    apply.Apply({});
    EXPECT_EQ(NEW_REVISION, StoredRevision());
}
