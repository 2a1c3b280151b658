// The main job with each allocation of a host's thread failing in its turn: what is done is done right or reported.
#include "FailingAllocations.h"
#include "FaultyRun.h"
#include "MainJob.h"

#include <gtest/gtest.h>

namespace
{

/// A service whose event cannot be opened is one that does not run, whatever the reason.
bool ShowsNoService(const std::string& document)
{
    return document.find("serviceRunning=\"false\"") != std::string::npos;
}

bool HasErrorLine(const std::string& trace)
{
    return trace.find("\n0 ") != std::string::npos || trace.find("\n1 ") != std::string::npos;
}

} // namespace

TEST(EveryAllocationFails, OnceAndFromThenOn)
{
    const COutcome clean = RunMainJob({});
    for (const bool bOnwards : std::set<bool>{ false, CFailingAllocations::MayGoOn() })
        for (unsigned n = 1;; n += bOnwards ? SampleStep() : 1)
        {
            const COutcome outcome = RunMainJobShortOfMemory(n, bOnwards);
            if (outcome.failed.empty())
            {
                RecordProperty(bOnwards ? "onwards" : "once", static_cast<int>(n - 1));
                break;
            }
            SCOPED_TRACE("allocation " + std::to_string(n) + (bOnwards ? " and all behind it" : ""));
            EXPECT_FALSE(outcome.bEscaped);
            EXPECT_EQ("", outcome.leak);
            EXPECT_TRUE(outcome.wzRevId == OLD_REVISION || outcome.wzRevId == NEW_REVISION);
            const bool bReported = !outcome.bAdapter || HasErrorLine(outcome.trace);
            bool bWhole = outcome.documents == clean.documents;
            for (const std::string& document : outcome.documents)
            {
                EXPECT_TRUE(clean.documents.count(document) == 1 || bReported || ShowsNoService(document)) << document;
                bWhole = bWhole || ShowsNoService(document);
            }
            EXPECT_TRUE(bWhole || bReported || bOnwards) << outcome.trace;
        }
}
