// What the self-test writes.
#pragma once

#include "Row.h"
#include "SystemFacts.h"

/// "passed", "failed" or "passed, with N rows skipped". No row at all is a failure.
std::string Verdict(const CRows& rows);

/// Writes summary.txt and report.json into the folder "report" of the current one. @return false when it cannot.
bool WriteReport(const CFacts& facts, const CRows& rows);
