// What must be back where it was when a test ends.
#pragma once

#include <string>

/// How many kernel handles and registry keys, COM objects and BSTRs are open now, in words, and how many apartments
/// were not left by threads that have ended. Always the same where the platform does not count (see
/// ResourceCountsWindows.cpp).
std::string CountResources();
