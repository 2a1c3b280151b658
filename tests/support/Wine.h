// Whether the system is Wine, which differs from the platform's own in some texts and in a few answers of its DOM.
#pragma once

#include "OvPlatform.h"

inline bool IsWine()
{
    const HMODULE hModule = ::GetModuleHandleW(L"ntdll.dll");
    return hModule != nullptr && ::GetProcAddress(hModule, "wine_get_version") != nullptr;
}
