// The system's own words, which differ between systems, for the texts that tests expect.
#pragma once

#include "OvPlatform.h"

#include <string>

/// The code as the adapter's trace shows it: "0x80004005 Unspecified error" where the system has that message for it,
/// "0x80004005" where it has none.
std::string ErrorCodeText(LONG lCode);
