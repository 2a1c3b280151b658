#include "RevisionRecord.h"

#include "OvPlatform.h"
#include "OvUtf16.h"

#include <gtest/gtest.h>

namespace
{

const wchar_t s_szPath[] = L"SOFTWARE\\Trevok\\Trevok Patch Agent";
const wchar_t s_szName[] = L"PolicyRevId";

} // namespace

bool RevisionKeyExists()
{
    HKEY hKey = nullptr;
    const LONG lResult = ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, s_szPath, 0, KEY_READ | KEY_WOW64_64KEY, &hKey);
    return lResult == ERROR_SUCCESS && ::RegCloseKey(hKey) == ERROR_SUCCESS;
}

std::optional<std::wstring> StoredRevision()
{
    HKEY hKey = nullptr;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, s_szPath, 0, KEY_READ | KEY_WOW64_64KEY, &hKey) != ERROR_SUCCESS)
        return std::nullopt;
    BYTE data[1024] = {};
    DWORD dwSize = sizeof data;
    DWORD dwType = 0;
    const LONG lResult = ::RegQueryValueExW(hKey, s_szName, nullptr, &dwType, data, &dwSize);
    ::RegCloseKey(hKey);
    if (lResult != ERROR_SUCCESS)
        return std::nullopt;
    EXPECT_EQ(DWORD{ REG_SZ }, dwType);
    return OvUnpackUtf16(data, dwSize / 2).c_str();
}

void StoreRevision(const std::wstring& wzRevId, DWORD dwType)
{
    HKEY hKey = nullptr;
    ASSERT_EQ(ERROR_SUCCESS, ::RegCreateKeyExW(HKEY_LOCAL_MACHINE, s_szPath, 0, nullptr, 0,
                                               KEY_ALL_ACCESS | KEY_WOW64_64KEY, nullptr, &hKey, nullptr));
    std::vector<BYTE> data(2 * wzRevId.size() + 2);
    OvPackUtf16(wzRevId.c_str(), wzRevId.size() + 1, data.data());
    EXPECT_EQ(ERROR_SUCCESS, ::RegSetValueExW(hKey, s_szName, 0, dwType, data.data(), static_cast<DWORD>(data.size())));
    ::RegCloseKey(hKey);
}
