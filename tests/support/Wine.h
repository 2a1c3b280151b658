// Whether the system is Wine, which differs from the platform's own in some texts and in a few answers of its DOM.
#pragma once

#include "OvPlatform.h"
#include "TestData.h"

#include <cstdio>

inline bool IsWine()
{
    const HMODULE hModule = ::GetModuleHandleW(L"ntdll.dll");
    return hModule != nullptr && ::GetProcAddress(hModule, "wine_get_version") != nullptr;
}

/// Whether a test takes Wine's branch. The self-test's report on Windows names the tests that took the other one.
/// @param szWindows  what Windows does, and why we know.
inline bool WineDiffers(const char* szWindows)
{
    if (IsWine())
        return true;
    if (IsSelfTest())
        std::printf("[ WINDOWS  ] %s\n", szWindows);
    return false;
}
