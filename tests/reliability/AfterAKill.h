// What the next start of a host finds after it was killed while it applied a policy.
#pragma once

#include "MainJob.h"

#include <gtest/gtest.h>

/// Checks that the recorded revision is the old or the new one, and that the next apply works.
/// @return whether it was the old one.
inline bool ApplyAfterAKill(unsigned nStop)
{
    const auto wzRevId = StoredRevision();
    EXPECT_TRUE(wzRevId == OLD_REVISION || wzRevId == NEW_REVISION) << "stop " << nStop;

    CMainJob next;
    EXPECT_TRUE(next.Start()) << "stop " << nStop << "\n" << next.Trace();
    next.Apply();
    next.Stop();
    EXPECT_TRUE(StoredRevision() == NEW_REVISION) << "stop " << nStop << "\n" << next.Trace();
    return wzRevId == OLD_REVISION;
}
