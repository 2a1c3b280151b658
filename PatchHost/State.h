// Where the adapter's recorded revision goes while this program drives it.
#pragma once

#include <string>

/// Keeps what the adapter records apart from the machine's own record. To be called before the library is loaded.
/// @param folder  UTF-8; made when it does not exist. Empty: the machine's own record.
/// @throw std::exception when the folder cannot be used, or this platform cannot keep records apart.
void UseStateFolder(const std::string& folder);
