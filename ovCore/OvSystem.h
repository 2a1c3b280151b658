// System helpers.
#pragma once

#include "OvPlatform.h"

#include <string>

/// Static operations; any thread.
class COvSystem
{
public:
    COvSystem() = delete;

    /// The process's current directory. Raises COvException E_FAIL when it can't be told or has 1024 or more
    /// characters.
    static std::wstring GetCurrentDirectoryW();
};
