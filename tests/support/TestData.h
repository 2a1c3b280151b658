// The files that tests read.
#pragma once

#include <cstdlib>
#include <string>

/// The folder in the sources, or the self-test's where that runs.
inline std::string TestDataFolder(const char* szInSources)
{
    const char* const szOfSelfTest = std::getenv("OV_TEST_DATA");
    return szOfSelfTest != nullptr ? szOfSelfTest : szInSources;
}

/// Whether this is the self-test on somebody's machine, whose own keys are not to be touched.
inline bool IsSelfTest()
{
    return std::getenv("OV_SELFTEST") != nullptr;
}
