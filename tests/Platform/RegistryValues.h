// Whole values, written and read as a program would that opens its key each time.
#pragma once

#include "OvPlatform.h"

#include <gtest/gtest.h>
#include <vector>

using CBytes = std::vector<BYTE>;

constexpr wchar_t s_szKey[] = L"SOFTWARE\\OvFileTest";

inline LSTATUS Write(const wchar_t* szName, const CBytes& data, const wchar_t* szKey = s_szKey, DWORD dwOptions = 0)
{
    HKEY hKey = nullptr;
    LSTATUS lResult =
        RegCreateKeyExW(HKEY_LOCAL_MACHINE, szKey, 0, nullptr, dwOptions, KEY_ALL_ACCESS, nullptr, &hKey, nullptr);
    if (lResult != ERROR_SUCCESS)
        return lResult;
    lResult = RegSetValueExW(hKey, szName, 0, REG_BINARY, data.data(), static_cast<DWORD>(data.size()));
    EXPECT_EQ(ERROR_SUCCESS, RegCloseKey(hKey));
    return lResult;
}

/// @param data  its size is the room for the value; then it is the value, empty after a failure.
inline LSTATUS Read(const wchar_t* szName, CBytes& data, const wchar_t* szKey = s_szKey)
{
    HKEY hKey = nullptr;
    auto cb = static_cast<DWORD>(data.size());
    LSTATUS lResult = RegOpenKeyExW(HKEY_LOCAL_MACHINE, szKey, 0, KEY_READ, &hKey);
    if (lResult == ERROR_SUCCESS)
    {
        lResult = RegQueryValueExW(hKey, szName, nullptr, nullptr, data.data(), &cb);
        EXPECT_EQ(ERROR_SUCCESS, RegCloseKey(hKey));
    }
    data.resize(lResult == ERROR_SUCCESS ? cb : 0);
    return lResult;
}
