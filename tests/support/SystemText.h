// The system's own words, which differ between systems, for the texts that tests expect.
#pragma once

#include "OvPlatform.h"

#include <string>

/// Whether the system is Wine, which differs from the platform's own in some texts and in a few answers of its DOM.
bool IsWine();

/// The code as the adapter's trace shows it: "0x80004005 Unspecified error" where the system has that message for it,
/// "0x80004005" where it has none.
std::string ErrorCodeText(LONG lCode);
